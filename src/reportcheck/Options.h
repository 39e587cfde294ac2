// Every option of reportcheck, each declared once; a command takes those
// its table entry lists (Commands.h).
#pragma once

#include "reportcheck/CommandLine.h"

inline constexpr Option kJsonOption{"--json", "", "the same as one JSON document"};

// diff: kinds of change left out (reader/ReportDiff.h, ParseIgnoredKinds).
inline constexpr Option kIgnoreOption{"--ignore", "KINDS",
                                      "leave out changes of these kinds, comma-separated: times (of directory\n"
                                      "                  entries), free-space (C volume free and user)"};

// Every command takes these; they are answered before the command runs.
inline constexpr Option kHelpOption{"--help", "", "this text (also -h)"};
inline constexpr Option kVersionOption{"--version", "", "the version of reportcheck"};

// The findings rules (findings, collect --db, rules).
inline constexpr Option kRulesOption{"--rules", "DIR", "add the rules of DIR/*.sql, or replace built-in ones"};
inline constexpr Option kTimeLimitOption{"--time-limit", "SECONDS", "stop a rule after that long (10)"};
inline constexpr Option kMinSeverityOption{"--min-severity", "LEVEL", "leave out findings below LEVEL (info, warning, error)"};
inline constexpr Option kDbOption{"--db", "FILE", "the report tables and findings into the SQLite file FILE"};
// redact.
inline constexpr Option kMapOption{"--map", "FILE", "pseudonyms of earlier runs from FILE, and this run's added to it"};
inline constexpr Option kKeywordOption{"--keyword", "WORD", "replace WORD too, wherever it stands (again for more)"};
inline constexpr Option kMarkdownOption{"--markdown", "", "every rule with its reasoning and query, as docs/rules.md"};

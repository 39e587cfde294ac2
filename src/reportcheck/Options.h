// Every option of reportcheck, each declared once; a command takes those
// its table entry lists (Commands.h).
#pragma once

#include "reportcheck/CommandLine.h"

inline constexpr Option kJsonOption{"--json", "", "the same as one JSON document"};

// Every command takes these; they are answered before the command runs.
inline constexpr Option kHelpOption{"--help", "", "this text (also -h)"};
inline constexpr Option kVersionOption{"--version", "", "the version of reportcheck"};

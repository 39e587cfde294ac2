// Text from a report or a file name, made safe to show to a person: the one
// place where every human-readable output of reportcheck (integrity lines,
// diff's text, messages on standard error, findings) escapes what a terminal
// would obey instead of show.
#pragma once

#include <string>
#include <string_view>

namespace report_model {

// `text` (UTF-8, or bytes that should be) with every control character in a
// visible escaped form, the same everywhere:
//   C0 controls and DEL (U+0000..U+001F, U+007F)  \x1b  \x07  \x00  \x7f  \x09
//   C1 controls (U+0080..U+009F)                   \u0085  \u009b
//   a byte that is not part of valid UTF-8         \xff  \xc3
// Tab and line breaks are escaped too: inside a value they could pass for
// the output's own indentation or lines. Everything else (printable text,
// accents, other scripts, the backslash of a Windows path) is kept as it is;
// the JSON outputs give the exact text.
// Tabs::Keep leaves tabs as they are in a whole line of a report quoted as
// it stands (findings' evidence), where they are the report's own columns.
enum class Tabs { Escape, Keep };
std::string ForTerminal(std::string_view text, Tabs tabs = Tabs::Escape);

// Whether `text` is valid UTF-8 (no surrogate, no overlong form).
bool IsWellFormedUtf8(std::string_view text);

// Appends ForTerminal(text) to `out`.
void AppendForTerminal(std::string& out, std::string_view text, Tabs tabs = Tabs::Escape);

}  // namespace report_model

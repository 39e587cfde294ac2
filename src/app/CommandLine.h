// The program's command line: tokens, options and the usage text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// The longest token accepted, not counting the double quotes it drops.
inline constexpr std::size_t kMaxCommandLineToken = 1022;

struct CommandLine {
    bool help = false;     // "/?", "/h", "/H", "/help" or the same with "-"
    bool invalid = false;  // an unknown option or an over-long token
    std::vector<std::wstring> arguments;  // tokens that are not options
};

// Cuts the text after the program's path into tokens (ASCII spaces outside
// double quotes separate them; each quote toggles the quoted state and is
// dropped) and sorts them into options and arguments.
CommandLine ParseCommandLine(std::wstring_view text);

// The usage box's text in the chosen language.
std::wstring UsageText(bool english, std::wstring_view programName);

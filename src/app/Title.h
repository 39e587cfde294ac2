// The main window's title.
#pragma once

#include <string>
#include <string_view>

// caption, " [Administrator]" when elevated (French: " [Administrateur]"),
// " ", the version, " (64 bits)".
std::wstring ComposeMainTitle(std::wstring_view caption, bool elevated, bool english,
                              std::wstring_view version);

// The tooltip handler copies at most this many characters of a control's text.
inline constexpr std::size_t kMaxTooltipChars = 79;
std::wstring TooltipTextFor(std::wstring_view controlText);

// The Network section's body: a block of lines per network adapter.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Replaces `output` with the 8-bit text of the adapter listing (or its
// failure lines). The text is never cut, whatever its length.
void ListNetworkAdapters(std::string& output);

// The failure lines for an error code of GetAdaptersAddresses, with the
// first character of the system's text for it.
std::string DescribeAdaptersFailure(std::uint32_t error);

// Wide text in 8-bit text as the C runtime's current locale writes it, one
// character at a time. A character that the locale's code page cannot
// represent (or a surrogate pair) becomes one "?", so a name is never cut.
std::string NarrowInCurrentLocale(std::wstring_view text);

// The Network section's body: a block of lines per network adapter.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

// Replaces `output` with the 8-bit text of the adapter listing (or its
// failure lines). The text is never cut, whatever its length.
void ListNetworkAdapters(std::string& output);

// GetAdaptersAddresses as the listing calls it (every family, prefixes
// included): fills `buffer`, an IP_ADAPTER_ADDRESSES list of `size` bytes,
// or sets `size` to what it needs; returns the Windows error code.
using AdaptersQuery = std::function<std::uint32_t(void* buffer, unsigned long& size)>;
// The same listing from another source of adapters, so that tests can list
// a machine of their choosing.
void ListNetworkAdapters(std::string& output, const AdaptersQuery& query);

// The failure lines for an error code of GetAdaptersAddresses, with the
// first character of the system's text for it.
std::string DescribeAdaptersFailure(std::uint32_t error);

// Wide text in 8-bit text as the C runtime's current locale writes it, one
// character at a time. A character that the locale's code page cannot
// represent (or a surrogate pair) becomes one "?", so a name is never cut.
std::string NarrowInCurrentLocale(std::wstring_view text);

// The checksum that closes every saved report, and the trailer line that
// carries it. Shared by the tool and by the report checker.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// A four-lane exclusive-or fold of the low byte of every UTF-16 code unit,
// seeded with 0x01020304. It detects accidental damage, nothing more.
std::uint32_t ComputeReportChecksum(std::u16string_view text);

// The same over the text's bytes as a file holds them, little-endian UTF-16:
// the low byte of each unit is its first, so the checker need not decode.
std::uint32_t ComputeReportChecksumOfBytes(std::string_view utf16le);

// "\n--- \n" followed by the checksum as eight lower-case hex digits and "\n".
std::u16string FormatReportTrailer(std::uint32_t checksum);

// The checksum as the trailer shows it: eight lower-case hex digits,
// "01024145".
std::string ChecksumText(std::uint32_t checksum);

// The complete bytes of a report file: byte-order mark FF FE, the body as
// little-endian UTF-16, then the trailer.
std::string BuildReportFileBytes(std::u16string_view body);

#if defined(_WIN32)
// On Windows wchar_t is a UTF-16 code unit.
inline std::u16string_view AsUtf16(std::wstring_view text) {
    static_assert(sizeof(wchar_t) == sizeof(char16_t));
    return {reinterpret_cast<const char16_t*>(text.data()), text.size()};
}
#endif

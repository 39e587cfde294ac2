// The checksum that closes every saved report, and the trailer line that
// carries it. Shared by the tool and by the report checker.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

inline constexpr std::uint32_t kReportChecksumSeed = 0x01020304;

// A four-lane exclusive-or fold of the low byte of every UTF-16 code unit,
// seeded with 0x01020304. It detects accidental damage, nothing more.
std::uint32_t ComputeReportChecksum(std::u16string_view text);

// The same fold made as the text goes by, piece after piece: after the last
// piece it holds ComputeReportChecksum of the pieces joined.
class ReportChecksumFold {
public:
    void Add(std::u16string_view units);
    // One unit, for a text made a unit at a time (format/TransitDamage.cpp).
    void AddUnit(char16_t unit) { value_ ^= (unit & 0xFFu) << (8 * (position_++ % 4)); }
    std::uint32_t Value() const { return value_; }

private:
    std::uint32_t value_ = kReportChecksumSeed;
    std::size_t position_ = 0;  // of the next unit, counted from the text's start
};

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

// The same bytes made as the body arrives, so that a large report need never
// be held whole: Begin's byte-order mark, then each piece of the body, then
// End's trailer with the checksum of every piece, each appended to `out`.
class ReportFileEncoder {
public:
    void Begin(std::string& out) const;
    void AddBody(std::u16string_view units, std::string& out);
    void End(std::string& out) const;

private:
    ReportChecksumFold checksum_;
};

#if defined(_WIN32)
// On Windows wchar_t is a UTF-16 code unit.
inline std::u16string_view AsUtf16(std::wstring_view text) {
    static_assert(sizeof(wchar_t) == sizeof(char16_t));
    return {reinterpret_cast<const char16_t*>(text.data()), text.size()};
}
#endif

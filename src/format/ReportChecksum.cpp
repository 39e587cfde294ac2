#include "format/ReportChecksum.h"

#include "format/NumberText.h"

namespace {

// Sized once and filled in place: a byte-by-byte push_back made saving a
// large report five times slower than writing its bytes.
void AppendUtf16LE(std::string& bytes, std::u16string_view text) {
    const std::size_t start = bytes.size();
    bytes.resize(start + 2 * text.size());
    char* out = bytes.data() + start;
    for (char16_t unit : text) {
        *out++ = static_cast<char>(unit & 0xFF);
        *out++ = static_cast<char>((unit >> 8) & 0xFF);
    }
}
}  // namespace

std::uint32_t ComputeReportChecksum(std::u16string_view text) {
    ReportChecksumFold fold;
    fold.Add(text);
    return fold.Value();
}

void ReportChecksumFold::Add(std::u16string_view units) {
    for (char16_t unit : units) AddUnit(unit);
}

// Four units at a time, one to each lane.
std::uint32_t ComputeReportChecksumOfBytes(std::string_view utf16le) {
    const auto low = [&](std::size_t unit) -> std::uint32_t { return static_cast<unsigned char>(utf16le[2 * unit]); };
    const std::size_t units = utf16le.size() / 2;
    std::uint32_t value = kReportChecksumSeed;
    std::size_t i = 0;
    for (; i + 4 <= units; i += 4) value ^= low(i) | low(i + 1) << 8 | low(i + 2) << 16 | low(i + 3) << 24;
    for (; i < units; ++i) value ^= low(i) << (8 * (i % 4));
    return value;
}

std::string ChecksumText(std::uint32_t checksum) { return numtext::Hex<char>(checksum, 8, false); }

std::u16string FormatReportTrailer(std::uint32_t checksum) {
    return u"\n--- \n" + numtext::Hex<char16_t>(checksum, 8, false) + u"\n";
}

std::string BuildReportFileBytes(std::u16string_view body) {
    std::string bytes;
    bytes.reserve(2 + 2 * body.size() + 30);
    ReportFileEncoder encoder;
    encoder.Begin(bytes);
    encoder.AddBody(body, bytes);
    encoder.End(bytes);
    return bytes;
}

void ReportFileEncoder::Begin(std::string& out) const {
    out.push_back(static_cast<char>(0xFF));
    out.push_back(static_cast<char>(0xFE));
}

void ReportFileEncoder::AddBody(std::u16string_view units, std::string& out) {
    AppendUtf16LE(out, units);
    checksum_.Add(units);
}

void ReportFileEncoder::End(std::string& out) const { AppendUtf16LE(out, FormatReportTrailer(checksum_.Value())); }

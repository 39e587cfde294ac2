#include "format/ReportVerdict.h"

#include <optional>

#include "format/ReportChecksum.h"

namespace {
constexpr std::size_t kByteOrderMarkBytes = 2;
constexpr std::size_t kTrailerUnits = 15;  // "\n--- \n" + 8 digits + "\n"
constexpr std::size_t kTrailerBytes = 2 * kTrailerUnits;

}  // namespace

// Sized once and filled in place: a report's body can be tens of megabytes.
std::u16string DecodeUtf16LE(std::string_view bytes) {
    std::u16string text(bytes.size() / 2, u'\0');
    char16_t* units = text.data();
    for (std::size_t i = 0; i < text.size(); ++i)
        units[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                         static_cast<unsigned char>(bytes[2 * i + 1]) << 8);
    return text;
}

namespace {
int HexDigitValue(char16_t c) {
    if (c >= u'0' && c <= u'9') return c - u'0';
    if (c >= u'a' && c <= u'f') return c - u'a' + 10;
    if (c >= u'A' && c <= u'F') return c - u'A' + 10;
    return -1;
}

// A trailer counts only when it is exactly what the tool writes for its own
// digits: capital digits or carriage returns mean an editor has rewritten the
// file, and then the body's line breaks cannot be trusted either.
std::optional<std::uint32_t> ParseTrailer(std::u16string_view trailer) {
    if (trailer.size() != kTrailerUnits) return std::nullopt;
    std::uint32_t value = 0;
    for (char16_t c : trailer.substr(6, 8)) {
        const int digit = HexDigitValue(c);
        if (digit < 0) return std::nullopt;
        value = value << 4 | static_cast<std::uint32_t>(digit);
    }
    if (FormatReportTrailer(value) != trailer) return std::nullopt;
    return value;
}

ReportVerdict NotAReport(NotAReportReason reason) {
    ReportVerdict verdict;
    verdict.state = ReportState::NotAReport;
    verdict.reason = reason;
    return verdict;
}

const char* ReasonText(NotAReportReason reason) {
    switch (reason) {
        case NotAReportReason::Empty: return "empty file";
        case NotAReportReason::NoByteOrderMark: return "no UTF-16 byte-order mark";
        case NotAReportReason::OddLength: return "odd number of bytes";
        case NotAReportReason::NoTrailer: return "no checksum trailer at the end";
        case NotAReportReason::None: break;
    }
    return "unknown reason";
}
}  // namespace

ReportVerdict CheckReportBytes(std::string_view bytes) {
    if (bytes.empty()) return NotAReport(NotAReportReason::Empty);
    if (bytes.size() < kByteOrderMarkBytes || static_cast<unsigned char>(bytes[0]) != 0xFF ||
        static_cast<unsigned char>(bytes[1]) != 0xFE)
        return NotAReport(NotAReportReason::NoByteOrderMark);
    if (bytes.size() % 2 != 0) return NotAReport(NotAReportReason::OddLength);
    if (bytes.size() < kByteOrderMarkBytes + kTrailerBytes) return NotAReport(NotAReportReason::NoTrailer);

    const std::size_t bodyBytes = bytes.size() - kByteOrderMarkBytes - kTrailerBytes;
    const auto stored = ParseTrailer(DecodeUtf16LE(bytes.substr(kByteOrderMarkBytes + bodyBytes)));
    if (!stored) return NotAReport(NotAReportReason::NoTrailer);

    ReportVerdict verdict;
    verdict.stored = *stored;
    verdict.computed = ComputeReportChecksumOfBytes(bytes.substr(kByteOrderMarkBytes, bodyBytes));
    verdict.state = verdict.stored == verdict.computed ? ReportState::Intact : ReportState::Altered;
    return verdict;
}

std::string DescribeReportVerdict(const ReportVerdict& verdict) {
    switch (verdict.state) {
        case ReportState::Intact: return "intact (checksum " + ChecksumText(verdict.computed) + ")";
        case ReportState::Altered:
            return "altered (trailer says " + ChecksumText(verdict.stored) + ", body gives " +
                   ChecksumText(verdict.computed) + ")";
        case ReportState::NotAReport: break;
    }
    return std::string("not a report (") + ReasonText(verdict.reason) + ")";
}

std::string_view ReportBodyBytesOf(std::string_view bytes) {
    if (bytes.size() < kByteOrderMarkBytes + kTrailerBytes) return {};
    return bytes.substr(kByteOrderMarkBytes, bytes.size() - kByteOrderMarkBytes - kTrailerBytes);
}

std::u16string ReportBodyOf(std::string_view bytes) {
    return DecodeUtf16LE(ReportBodyBytesOf(bytes));
}

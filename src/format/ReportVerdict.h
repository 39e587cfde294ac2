// Whether a file's bytes are a saved report that arrived whole: the reading
// side of the format that BuildReportFileBytes writes. It lives beside the
// checksum so that the report checker and the tool's own tests judge a file
// by the same rules.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

enum class ReportState {
    Intact,      // the trailer's checksum is the body's
    Altered,     // a well-formed report whose body no longer gives its checksum
    NotAReport,  // no byte-order mark, or no trailer of exactly the written form
};

// Why a file is not a report, in the order the checks are made.
enum class NotAReportReason {
    None,             // the file is a report (intact or altered)
    Empty,            // zero bytes
    NoByteOrderMark,  // does not start with FF FE (ANSI, UTF-8, big-endian...)
    OddLength,        // UTF-16 comes in pairs of bytes: cut short, or something else
    NoTrailer,        // the last 30 bytes are not "\n--- \n%08lx\n" in UTF-16LE
};

struct ReportVerdict {
    ReportState state = ReportState::NotAReport;
    NotAReportReason reason = NotAReportReason::None;
    std::uint32_t stored = 0;    // the checksum the trailer states (Intact, Altered)
    std::uint32_t computed = 0;  // the checksum of the body (Intact, Altered)
};

ReportVerdict CheckReportBytes(std::string_view bytes);

// The verdict as the checker prints it after the file name:
//   "intact (checksum 01024145)"
//   "altered (trailer says 01024145, body gives 01024045)"
//   "not a report (no UTF-16 byte-order mark)"
std::string DescribeReportVerdict(const ReportVerdict& verdict);

// The body of a report's bytes, between the byte-order mark and the trailer,
// decoded; meaningful when CheckReportBytes found a report (Intact or
// Altered), empty when the bytes are too short to hold one.
std::u16string ReportBodyOf(std::string_view bytes);
// The same still as UTF-16LE bytes, for a reader that decodes it in pieces.
std::string_view ReportBodyBytesOf(std::string_view bytes);

// UTF-16LE bytes as text (an odd last byte left out).
std::u16string DecodeUtf16LE(std::string_view bytes);

#include "format/ReportVerdict.h"

#include <gtest/gtest.h>

#include "format/ReportChecksum.h"

using namespace std::string_view_literals;

namespace {
std::string Utf16LE(std::u16string_view text) {
    std::string bytes;
    for (char16_t unit : text) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
        bytes.push_back(static_cast<char>(unit >> 8));
    }
    return bytes;
}

// A file with the right byte-order mark and whatever follows it.
std::string WithBom(std::u16string_view rest) {
    return "\xFF\xFE" + Utf16LE(rest);
}

const std::u16string kRealisticBody =
    u"Orvane Diagnostics report, 21/11/2026 13:57:01\n"
    u"\nHost:\n\tComputer: PC-\u00c9TAGE-2\n\tUser: Fran\u00e7oise\n"
    u"\nNetwork:\n* Intel(R) Ethernet \u2013 LAN\n\tMAC: 00-1A-2B-3C-4D-5E\n";

ReportState StateOf(std::string_view bytes) {
    return CheckReportBytes(bytes).state;
}

NotAReportReason ReasonOf(std::string_view bytes) {
    return CheckReportBytes(bytes).reason;
}
}  // namespace

TEST(ReportVerdict, SavedReportsAreIntact) {
    for (std::u16string_view body : {std::u16string_view(u""), std::u16string_view(u"AB"),
                                     std::u16string_view(kRealisticBody)}) {
        const ReportVerdict verdict = CheckReportBytes(BuildReportFileBytes(body));
        EXPECT_EQ(verdict.state, ReportState::Intact);
        EXPECT_EQ(verdict.reason, NotAReportReason::None);
        EXPECT_EQ(verdict.stored, ComputeReportChecksum(body));
        EXPECT_EQ(verdict.computed, verdict.stored);
    }
}

TEST(ReportVerdict, EmptyReportIsThirtyTwoBytesAndIntact) {
    const ReportVerdict verdict = CheckReportBytes(WithBom(u"\n--- \n01020304\n"));
    EXPECT_EQ(verdict.state, ReportState::Intact);
    EXPECT_EQ(verdict.stored, 0x01020304u);
}

TEST(ReportVerdict, ChangedBodyIsAlteredWithBothChecksums) {
    std::string bytes = BuildReportFileBytes(u"AB");
    bytes[4] = 'C';  // "AB" becomes "AC"
    const ReportVerdict verdict = CheckReportBytes(bytes);
    EXPECT_EQ(verdict.state, ReportState::Altered);
    EXPECT_EQ(verdict.reason, NotAReportReason::None);
    EXPECT_EQ(verdict.stored, 0x01024145u);
    EXPECT_EQ(verdict.computed, 0x01024045u);
}

TEST(ReportVerdict, ChangedTrailerDigitIsAltered) {
    const ReportVerdict verdict = CheckReportBytes(WithBom(u"AB\n--- \n01024146\n"));
    EXPECT_EQ(verdict.state, ReportState::Altered);
    EXPECT_EQ(verdict.stored, 0x01024146u);
    EXPECT_EQ(verdict.computed, 0x01024145u);
}

TEST(ReportVerdict, BodyWithLineBreaksConvertedToCrLfIsAltered) {
    std::u16string crlf;
    for (char16_t c : kRealisticBody) {
        if (c == u'\n') crlf += u'\r';
        crlf += c;
    }
    const std::string bytes = WithBom(crlf + FormatReportTrailer(ComputeReportChecksum(kRealisticBody)));
    EXPECT_EQ(StateOf(bytes), ReportState::Altered);
}

TEST(ReportVerdict, DeletedLineIsAltered) {
    std::u16string shorter = kRealisticBody;
    shorter.erase(shorter.find(u"\tUser"), 17);  // "\tUser: Fran\u00e7oise\n"
    const std::string bytes = WithBom(shorter + FormatReportTrailer(ComputeReportChecksum(kRealisticBody)));
    EXPECT_EQ(StateOf(bytes), ReportState::Altered);
}

// The checksum guards against accidents, not against every change: these two
// go unnoticed by design, and the checker must not claim otherwise.
TEST(ReportVerdict, ChangesTheChecksumCannotSeeStayIntact) {
    std::string highByte = BuildReportFileBytes(u"\u20ac");
    highByte[3] = 0x21;  // U+20AC becomes U+21AC: same low byte
    EXPECT_EQ(StateOf(highByte), ReportState::Intact);

    const std::u16string swapped = u"EBCDA";  // units 0 and 4 share a lane
    EXPECT_EQ(StateOf(WithBom(swapped + FormatReportTrailer(ComputeReportChecksum(u"ABCDE")))),
              ReportState::Intact);
}

TEST(ReportVerdict, OnlyTheLastTrailerCounts) {
    const std::u16string body = u"quoted:\n--- \n00000000\nmore text";
    const ReportVerdict verdict = CheckReportBytes(BuildReportFileBytes(body));
    EXPECT_EQ(verdict.state, ReportState::Intact);
    EXPECT_EQ(verdict.stored, ComputeReportChecksum(body));
}

TEST(ReportVerdict, TwoReportsEndToEndAreAlteredNotIntact) {
    // The second report's byte-order mark and the first trailer become body.
    const std::string bytes = BuildReportFileBytes(u"first") + BuildReportFileBytes(u"second");
    const ReportVerdict verdict = CheckReportBytes(bytes);
    EXPECT_EQ(verdict.state, ReportState::Altered);
    EXPECT_EQ(verdict.stored, ComputeReportChecksum(u"second"));
}

TEST(ReportVerdict, EmptyFile) {
    EXPECT_EQ(StateOf(""), ReportState::NotAReport);
    EXPECT_EQ(ReasonOf(""), NotAReportReason::Empty);
}

TEST(ReportVerdict, SingleByteHasNoByteOrderMark) {
    EXPECT_EQ(ReasonOf(std::string(1, '\xFF')), NotAReportReason::NoByteOrderMark);
    EXPECT_EQ(ReasonOf("A"), NotAReportReason::NoByteOrderMark);
    EXPECT_EQ(ReasonOf(std::string(1, '\0')), NotAReportReason::NoByteOrderMark);
}

TEST(ReportVerdict, TextInOtherEncodingsHasNoByteOrderMark) {
    const std::string ansi = "Host:\n\tUser: Fran\xE7oise\n\n--- \n01020304\n";
    EXPECT_EQ(ReasonOf(ansi), NotAReportReason::NoByteOrderMark);
    const std::string utf8WithBom = "\xEF\xBB\xBFHost:\n\tUser: Fran\xC3\xA7oise\n";
    EXPECT_EQ(ReasonOf(utf8WithBom), NotAReportReason::NoByteOrderMark);
    // A report's bytes without the mark in front.
    EXPECT_EQ(ReasonOf(BuildReportFileBytes(u"AB").substr(2)), NotAReportReason::NoByteOrderMark);
}

TEST(ReportVerdict, BigEndianUtf16IsNotAReport) {
    std::string bytes = "\xFE\xFF";
    for (char16_t unit : std::u16string(u"AB\n--- \n01024145\n")) {
        bytes.push_back(static_cast<char>(unit >> 8));
        bytes.push_back(static_cast<char>(unit & 0xFF));
    }
    EXPECT_EQ(ReasonOf(bytes), NotAReportReason::NoByteOrderMark);
}

TEST(ReportVerdict, OddLengthAfterTheMark) {
    EXPECT_EQ(ReasonOf("\xFF\xFE" "A"), NotAReportReason::OddLength);
    EXPECT_EQ(ReasonOf(BuildReportFileBytes(u"AB") + "x"), NotAReportReason::OddLength);
}

TEST(ReportVerdict, TooShortForATrailer) {
    EXPECT_EQ(ReasonOf("\xFF\xFE"), NotAReportReason::NoTrailer);
    EXPECT_EQ(ReasonOf(WithBom(u"\n--- \n0102030\n")), NotAReportReason::NoTrailer);  // 30 bytes
}

TEST(ReportVerdict, EveryCutOfAReportIsNotAReport) {
    const std::string whole = BuildReportFileBytes(kRealisticBody);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        SCOPED_TRACE(size);
        EXPECT_EQ(StateOf(whole.substr(0, size)), ReportState::NotAReport);
    }
}

TEST(ReportVerdict, TrailerMustHaveExactlyTheWrittenForm) {
    const std::u16string body = u"AB";
    const auto reason = [&](std::u16string_view trailer) { return ReasonOf(WithBom(body + std::u16string(trailer))); };
    EXPECT_EQ(reason(u"\n--- \n0102414F\n"), NotAReportReason::NoTrailer);    // capital digit
    EXPECT_EQ(reason(u"\n--- \nDEADBEEF\n"), NotAReportReason::NoTrailer);    // all capitals
    EXPECT_EQ(reason(u"\r\n--- \r\n01024145\r\n"), NotAReportReason::NoTrailer);  // CRLF
    EXPECT_EQ(reason(u"\n--- \n01024145\r\n"), NotAReportReason::NoTrailer);  // CR before the last LF
    EXPECT_EQ(reason(u"\n--- \n01024145"), NotAReportReason::NoTrailer);      // last LF missing
    EXPECT_EQ(reason(u"\n---\n01024145\n"), NotAReportReason::NoTrailer);     // space missing
    EXPECT_EQ(reason(u"\n-- -\n01024145\n"), NotAReportReason::NoTrailer);
    EXPECT_EQ(reason(u"\n--- \n1024145\n"), NotAReportReason::NoTrailer);     // seven digits
    EXPECT_EQ(reason(u"\n--- \n0x024145\n"), NotAReportReason::NoTrailer);
    EXPECT_EQ(reason(u"\n--- \n 1024145\n"), NotAReportReason::NoTrailer);
    EXPECT_EQ(reason(u"\n--- \n01024145\n\n"), NotAReportReason::NoTrailer);  // blank line after
    EXPECT_EQ(reason(u"\n--- \n01024145\n\0"sv), NotAReportReason::NoTrailer);  // terminating zero
    EXPECT_EQ(reason(u"\n--- \n01024145\nPS"), NotAReportReason::NoTrailer);  // text appended
    EXPECT_EQ(reason(u"\n--- \n01024145\n"), NotAReportReason::None);
}

TEST(ReportVerdict, TrailerCharactersMustHaveAZeroHighByte) {
    // U+0130 has the low byte of '0': the trailer was not written by the tool.
    std::string bytes = BuildReportFileBytes(u"AB");
    bytes[bytes.size() - 17] = 0x01;  // high byte of the first digit
    EXPECT_EQ(ReasonOf(bytes), NotAReportReason::NoTrailer);
}

TEST(ReportVerdict, Descriptions) {
    EXPECT_EQ(DescribeReportVerdict(CheckReportBytes(BuildReportFileBytes(u"AB"))), "intact (checksum 01024145)");
    EXPECT_EQ(DescribeReportVerdict(CheckReportBytes(WithBom(u"AC\n--- \n01024145\n"))),
              "altered (trailer says 01024145, body gives 01024045)");
    EXPECT_EQ(DescribeReportVerdict(CheckReportBytes("")), "not a report (empty file)");
    EXPECT_EQ(DescribeReportVerdict(CheckReportBytes("plain text\n")), "not a report (no UTF-16 byte-order mark)");
    EXPECT_EQ(DescribeReportVerdict(CheckReportBytes("\xFF\xFE" "A")), "not a report (odd number of bytes)");
    EXPECT_EQ(DescribeReportVerdict(CheckReportBytes("\xFF\xFE")), "not a report (no checksum trailer at the end)");
}

TEST(ReportVerdict, DescriptionsKeepLeadingZerosAndSmallLetters) {
    const ReportVerdict verdict = CheckReportBytes(WithBom(u"\n--- \n0badf00d\n"));
    EXPECT_EQ(verdict.state, ReportState::Altered);
    EXPECT_EQ(DescribeReportVerdict(verdict), "altered (trailer says 0badf00d, body gives 01020304)");
}

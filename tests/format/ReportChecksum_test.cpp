#include "format/ReportChecksum.h"

#include <gtest/gtest.h>

namespace {
std::string Bytes(std::initializer_list<unsigned> values) {
    std::string s;
    for (unsigned v : values) s.push_back(static_cast<char>(v));
    return s;
}
}  // namespace

TEST(ReportChecksum, EmptyTextIsTheSeed) {
    EXPECT_EQ(ComputeReportChecksum(u""), 0x01020304u);
}

TEST(ReportChecksum, LanesFoldInOrder) {
    EXPECT_EQ(ComputeReportChecksum(u"AB"), 0x01024145u);
    EXPECT_EQ(ComputeReportChecksum(u"ABCD"), 0x45414145u);
    EXPECT_EQ(ComputeReportChecksum(u"ABCDE"), 0x45414100u);
}

TEST(ReportChecksum, OnlyTheLowByteOfACodeUnitCounts) {
    EXPECT_EQ(ComputeReportChecksum(u"\u00e9"), 0x010203edu);
    EXPECT_EQ(ComputeReportChecksum(u"\u20ac"), 0x010203a8u);
    EXPECT_EQ(ComputeReportChecksum(u"\u0141"), ComputeReportChecksum(u"A"));
}

TEST(ReportChecksum, FromTheBytesAsFromTheText) {
    const std::u16string text = u"Orvane \u00e9t\u00e9 \u20ac\r\n\t0123456789";
    for (std::size_t size = 0; size <= text.size(); ++size) {
        const std::u16string part = text.substr(0, size);
        EXPECT_EQ(ComputeReportChecksumOfBytes(BuildReportFileBytes(part).substr(2, 2 * size)),
                  ComputeReportChecksum(part))
            << size;
    }
}

TEST(ReportChecksum, TrailerHasEightLowerCaseDigits) {
    EXPECT_EQ(FormatReportTrailer(0x01020304), u"\n--- \n01020304\n");
    EXPECT_EQ(FormatReportTrailer(0xDEADBEEF), u"\n--- \ndeadbeef\n");
    EXPECT_EQ(FormatReportTrailer(0), u"\n--- \n00000000\n");
}

TEST(ReportFile, EmptyBodyGivesThirtyTwoBytes) {
    const std::string expected = Bytes({0xFF, 0xFE, 0x0A, 0, 0x2D, 0, 0x2D, 0, 0x2D, 0, 0x20, 0, 0x0A, 0,
                                        0x30, 0, 0x31, 0, 0x30, 0, 0x32, 0, 0x30, 0, 0x33, 0, 0x30, 0, 0x34, 0,
                                        0x0A, 0});
    EXPECT_EQ(BuildReportFileBytes(u""), expected);
    EXPECT_EQ(expected.size(), 32u);
}

TEST(ReportFile, TwoCapitalsGiveTheDocumentedBytes) {
    const std::string expected = Bytes({0xFF, 0xFE, 0x41, 0, 0x42, 0, 0x0A, 0, 0x2D, 0, 0x2D, 0, 0x2D, 0, 0x20, 0,
                                        0x0A, 0, 0x30, 0, 0x31, 0, 0x30, 0, 0x32, 0, 0x34, 0, 0x31, 0, 0x34, 0,
                                        0x35, 0, 0x0A, 0});
    EXPECT_EQ(BuildReportFileBytes(u"AB"), expected);
}

TEST(ReportFile, SizeIsThirtyTwoPlusTwiceTheCodeUnits) {
    const std::u16string body(1000, u'\u20ac');
    const std::string bytes = BuildReportFileBytes(body);
    ASSERT_EQ(bytes.size(), 32u + 2 * 1000);
    EXPECT_EQ(static_cast<unsigned char>(bytes[2]), 0xACu);
    EXPECT_EQ(static_cast<unsigned char>(bytes[3]), 0x20u);
}

TEST(ReportChecksum, FoldOfPiecesIsTheChecksumOfTheWhole) {
    const std::u16string text = u"Orvane \u00e9t\u00e9 \u20ac\r\n\t0123456789";
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
        ReportChecksumFold fold;
        fold.Add(std::u16string_view(text).substr(0, cut));
        fold.Add(std::u16string_view(text).substr(cut));
        EXPECT_EQ(fold.Value(), ComputeReportChecksum(text)) << cut;
    }
    EXPECT_EQ(ReportChecksumFold().Value(), 0x01020304u);
}

// What the checksum cannot see, as README says: each lane keeps only the
// exclusive-or of the low bytes that fall in it.
namespace {
constexpr char16_t kHeader[] =
    u"Orvane Software system report on 21/11/2026 14:20:21\n\n* Current directory (C:\\Suite):\n";
std::u16string Body(std::u16string_view lines) { return kHeader + std::u16string(lines); }
}  // namespace

TEST(ReportChecksumMisses, EightIdenticalCharactersDropped) {
    // Eight of the ten blanks of a size field: two of each in every lane.
    const std::u16string whole =
        Body(u"\t00000020          1\t21/11/2026  14:20:21\t21/11/2026  14:20:21\tnotes.txt\t\n");
    const std::u16string short8 =
        Body(u"\t00000020  1\t21/11/2026  14:20:21\t21/11/2026  14:20:21\tnotes.txt\t\n");
    ASSERT_EQ(whole.size(), short8.size() + 8);
    EXPECT_EQ(ComputeReportChecksum(whole), 0x0b463c15u);
    EXPECT_EQ(ComputeReportChecksum(short8), 0x0b463c15u);
}

TEST(ReportChecksumMisses, TwoLinesSwappedAtOffsetsEqualModuloFour) {
    constexpr char16_t kTool[] =
        u"\t00000020       4753\t21/11/2026  14:20:21\t21/11/2026  14:20:21\ttool.dll\t9.3.1.1042\n";
    constexpr char16_t kCore[] =
        u"\t00000020       4753\t21/11/2026  14:20:21\t21/11/2026  14:20:21\tcore.dll\t9.3.1.1041\n";
    // 83 + 73 characters between the two lines' starts: a multiple of four.
    constexpr char16_t kBetween[] = u"\t00000020         12\t21/11/2026  14:20:21\t21/11/2026  14:20:21\tdata.bin\t\n";
    const std::u16string before = Body(std::u16string(kTool) + kBetween + kCore);
    const std::u16string swapped = Body(std::u16string(kCore) + kBetween + kTool);
    ASSERT_NE(before, swapped);
    EXPECT_EQ(ComputeReportChecksum(before), 0x053f7c5eu);
    EXPECT_EQ(ComputeReportChecksum(swapped), 0x053f7c5eu);
    // Side by side the same two lines start 83 apart, and the swap shows.
    EXPECT_EQ(ComputeReportChecksum(Body(std::u16string(kTool) + kCore)), 0x0c2e2e6du);
    EXPECT_EQ(ComputeReportChecksum(Body(std::u16string(kCore) + kTool)), 0x1b303973u);
}

TEST(ReportFileEncoder, PiecesGiveTheBytesOfTheWholeBody) {
    const std::u16string body = u"Orvane\r\n\t\u00e9\u20ac 0123456789\r\n";
    for (std::size_t cut = 0; cut <= body.size(); ++cut) {
        ReportFileEncoder encoder;
        std::string bytes;
        encoder.Begin(bytes);
        encoder.AddBody(std::u16string_view(body).substr(0, cut), bytes);
        encoder.AddBody(std::u16string_view(body).substr(cut), bytes);
        encoder.End(bytes);
        EXPECT_EQ(bytes, BuildReportFileBytes(body)) << cut;
    }
}

TEST(ReportFileEncoder, NoBodyGivesTheEmptyReport) {
    ReportFileEncoder encoder;
    std::string bytes;
    encoder.Begin(bytes);
    encoder.End(bytes);
    EXPECT_EQ(bytes, Bytes({0xFF, 0xFE, 0x0A, 0, 0x2D, 0, 0x2D, 0, 0x2D, 0, 0x20, 0, 0x0A, 0, 0x30, 0, 0x31, 0,
                            0x30, 0, 0x32, 0, 0x30, 0, 0x33, 0, 0x30, 0, 0x34, 0, 0x0A, 0}));
}

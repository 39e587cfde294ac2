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

// Transit damage named, and undone only when the checksum proves it.
#include <gtest/gtest.h>

#include <string>

#include "format/ReportChecksum.h"
#include "format/ReportVerdict.h"
#include "format/TransitDamage.h"
#include "TransitDamageFixtures.h"

using namespace transit_fixtures;

TEST(TransitDamage, AnIntactReportHasNone) {
    const TransitDiagnosis d = DiagnoseTransitDamage(BuildReportFileBytes(kBody));
    EXPECT_EQ(d.damage, "");
    EXPECT_FALSE(d.restored);
}

TEST(TransitDamage, ReEncodedAsUtf8WithOrWithoutItsMarkIsUndone) {
    const std::string original = BuildReportFileBytes(kBody);
    const std::string utf8 = Utf8Of(TextOf(original));
    for (const std::string& mailed : {utf8, "\xEF\xBB\xBF" + utf8}) {
        const TransitDiagnosis d = DiagnoseTransitDamage(mailed);
        EXPECT_EQ(d.damage, "re-encoded as UTF-8");
        EXPECT_EQ(d.undone, "re-encoded as UTF-8");
        ASSERT_TRUE(d.restored);
        EXPECT_EQ(*d.restored, original);
    }
}

TEST(TransitDamage, ReEncodedAsLatin1OrBigEndianIsUndone) {
    const std::string original = BuildReportFileBytes(kBody);
    const TransitDiagnosis fromLatin1 = DiagnoseTransitDamage(AsLatin1(original));
    EXPECT_EQ(fromLatin1.damage, "re-encoded as Latin-1 (or another single-byte encoding)");
    ASSERT_TRUE(fromLatin1.restored);
    EXPECT_EQ(*fromLatin1.restored, original);
    const TransitDiagnosis fromBigEndian = DiagnoseTransitDamage(AsBigEndianUtf16(original));
    EXPECT_EQ(fromBigEndian.damage, "re-encoded as big-endian UTF-16");
    ASSERT_TRUE(fromBigEndian.restored);
    EXPECT_EQ(*fromBigEndian.restored, original);
}

TEST(TransitDamage, LineBreaksConvertedEitherWayAreUndone) {
    const std::string original = BuildReportFileBytes(kBody);
    const TransitDiagnosis fromLf = DiagnoseTransitDamage(WithLfLineBreaks(original));
    EXPECT_EQ(fromLf.damage, "line breaks converted from CR LF to LF");
    ASSERT_TRUE(fromLf.restored);
    EXPECT_EQ(*fromLf.restored, original);

    const TransitDiagnosis fromCrLf = DiagnoseTransitDamage(AsUtf8WithCrLfLineBreaks(original));
    EXPECT_EQ(fromCrLf.damage, "re-encoded as UTF-8, line breaks converted from LF to CR LF");
    ASSERT_TRUE(fromCrLf.restored);
    EXPECT_EQ(*fromCrLf.restored, original);
}

TEST(TransitDamage, TruncatedOrReplacedIsNamedButNeverRestored) {
    const std::string original = BuildReportFileBytes(kBody);
    const TransitDiagnosis cut = DiagnoseTransitDamage(original.substr(0, 90));
    EXPECT_EQ(cut.damage, "truncated after 90 bytes");
    EXPECT_EQ(DiagnoseTransitDamage("plain notes, no report\n").damage, "");
    EXPECT_FALSE(cut.restored);
    const TransitDiagnosis replaced = DiagnoseTransitDamage(AsUtf8WithReplacedCharacters(original));
    EXPECT_FALSE(replaced.restored);
    EXPECT_EQ(replaced.damage, "re-encoded as UTF-8, 2 characters replaced by U+FFFD");
}

TEST(TransitDamage, OneReplacedCharacterIsSaidInTheSingular) {
    std::string once = AsUtf8WithReplacedCharacters(BuildReportFileBytes(kBody));
    const std::size_t extra = once.rfind("\xEF\xBF\xBD");  // the one before the trailer
    once.erase(extra, 3);
    EXPECT_EQ(DiagnoseTransitDamage(once).damage, "re-encoded as UTF-8, 1 character replaced by U+FFFD");
}

TEST(TransitDamage, AnEditIsNeverRepairedByAChecksum) {
    std::string edited = BuildReportFileBytes(kBody);
    edited[10] = 'X';
    const TransitDiagnosis d = DiagnoseTransitDamage(edited);
    EXPECT_FALSE(d.restored);
    EXPECT_EQ(d.damage, "");
}

TEST(TransitDamage, WithoutTheRestoredCopyTheDiagnosisIsTheSame) {
    const std::string original = BuildReportFileBytes(kBody);
    for (const std::string& damaged : {Utf8Of(TextOf(original)), AsLatin1(original), AsBigEndianUtf16(original),
                                       WithLfLineBreaks(original), AsUtf8WithCrLfLineBreaks(original)}) {
        const TransitDiagnosis told = DiagnoseTransitDamage(damaged, Restore::No);
        const TransitDiagnosis restored = DiagnoseTransitDamage(damaged);
        EXPECT_EQ(told.damage, restored.damage);
        EXPECT_EQ(told.undone, restored.damage);
        EXPECT_TRUE(told.restorable);
        EXPECT_TRUE(restored.restorable);
        EXPECT_FALSE(told.restored);
    }
    const TransitDiagnosis replaced = DiagnoseTransitDamage(AsUtf8WithReplacedCharacters(original), Restore::No);
    EXPECT_EQ(replaced.damage, "re-encoded as UTF-8, 2 characters replaced by U+FFFD");
    EXPECT_FALSE(replaced.restorable);
}

// A conversion that put a CR before every LF, even one that had its CR: the
// CR CR LF it made is undone left to right, giving the CR LF back.
TEST(TransitDamage, ACarriageReturnAddedBeforeACrLfIsUndone) {
    const std::u16string lfTrailerBody = u"Orvane Software system report on 23/11/2026 19:50:05\r\nx\ny\r\n";
    const std::string original = BuildReportFileBytes(lfTrailerBody);
    std::u16string converted;
    for (char16_t c : TextOf(original)) converted += c == u'\n' ? std::u16string(u"\r\n") : std::u16string(1, c);
    ASSERT_NE(converted.find(u"\r\r\n"), std::u16string::npos);
    const TransitDiagnosis d = DiagnoseTransitDamage(Utf16LittleEndian(converted));
    EXPECT_EQ(d.damage, "line breaks converted from LF to CR LF");
    ASSERT_TRUE(d.restored);
    EXPECT_EQ(*d.restored, original);
}

// The end a truncated trailer had is counted from the last trailer's start,
// also when the body's own last line looks like one.
TEST(TransitDamage, TruncationCountsFromTheLastTrailerStart) {
    const std::string original = BuildReportFileBytes(kBody + u"\n--- \n");
    const std::string cut = original.substr(0, original.size() - 4);
    EXPECT_EQ(DiagnoseTransitDamage(cut).damage, "truncated after " + std::to_string(cut.size()) + " of " +
                                                     std::to_string(original.size()) + " bytes");
}

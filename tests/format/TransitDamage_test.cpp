// Transit damage named, and undone only when the checksum proves it.
#include <gtest/gtest.h>

#include <string>

#include "format/ReportChecksum.h"
#include "format/ReportVerdict.h"
#include "format/TransitDamage.h"

namespace {

const std::u16string kBody = u"Orvane Software system report on 23/11/2026 19:50:05\r\n\r\nProgram:\r\nin C:\\Outils \u00e9t\u00e9\r\n";

std::string Utf8Of(std::u16string_view text) {
    std::string out;
    for (char16_t c : text) {
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | c >> 6);
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {  // no surrogates in the test's texts
            out += static_cast<char>(0xE0 | c >> 12);
            out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

std::u16string Without(std::u16string text, std::u16string_view what) {
    for (std::size_t at; (at = text.find(what)) != std::u16string::npos;) text.erase(at, what.size());
    return text;
}

std::u16string TextOf(const std::string& reportBytes) {
    std::u16string text;
    for (std::size_t i = 2; i + 1 < reportBytes.size(); i += 2)
        text += static_cast<char16_t>(static_cast<unsigned char>(reportBytes[i]) |
                                      static_cast<unsigned char>(reportBytes[i + 1]) << 8);
    return text;
}

}  // namespace

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
    std::string latin1, bigEndian = "\xFE\xFF";
    for (char16_t c : TextOf(original)) {
        latin1 += static_cast<char>(c);
        bigEndian += static_cast<char>(c >> 8);
        bigEndian += static_cast<char>(c & 0xFF);
    }
    const TransitDiagnosis fromLatin1 = DiagnoseTransitDamage(latin1);
    EXPECT_EQ(fromLatin1.damage, "re-encoded as Latin-1 (or another single-byte encoding)");
    ASSERT_TRUE(fromLatin1.restored);
    EXPECT_EQ(*fromLatin1.restored, original);
    const TransitDiagnosis fromBigEndian = DiagnoseTransitDamage(bigEndian);
    EXPECT_EQ(fromBigEndian.damage, "re-encoded as big-endian UTF-16");
    ASSERT_TRUE(fromBigEndian.restored);
    EXPECT_EQ(*fromBigEndian.restored, original);
}

TEST(TransitDamage, LineBreaksConvertedEitherWayAreUndone) {
    const std::string original = BuildReportFileBytes(kBody);
    std::string toLf = "\xFF\xFE";
    for (char16_t c : Without(TextOf(original), u"\r")) {
        toLf += static_cast<char>(c & 0xFF);
        toLf += static_cast<char>(c >> 8);
    }
    const TransitDiagnosis fromLf = DiagnoseTransitDamage(toLf);
    EXPECT_EQ(fromLf.damage, "line breaks converted from CR LF to LF");
    ASSERT_TRUE(fromLf.restored);
    EXPECT_EQ(*fromLf.restored, original);

    std::string toCrLf;  // every LF made CR LF, the trailer's too, and sent as UTF-8
    for (char16_t c : TextOf(original)) toCrLf += c == u'\n' && !toCrLf.empty() && toCrLf.back() != '\r' ? "\r\n" : Utf8Of(std::u16string(1, c));
    const TransitDiagnosis fromCrLf = DiagnoseTransitDamage(toCrLf);
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
    std::u16string text = TextOf(original);
    text.replace(text.find(u'\u00e9'), 1, u"\uFFFD");
    const TransitDiagnosis replaced = DiagnoseTransitDamage(Utf8Of(text.substr(0, text.find(u"\n--- "))) + "\xEF\xBF\xBD" +
                                                            Utf8Of(text.substr(text.find(u"\n--- "))));
    EXPECT_FALSE(replaced.restored);
    EXPECT_EQ(replaced.damage, "re-encoded as UTF-8, 2 characters replaced by U+FFFD");
}

TEST(TransitDamage, AnEditIsNeverRepairedByAChecksum) {
    std::string edited = BuildReportFileBytes(kBody);
    edited[10] = 'X';
    const TransitDiagnosis d = DiagnoseTransitDamage(edited);
    EXPECT_FALSE(d.restored);
    EXPECT_EQ(d.damage, "");
}

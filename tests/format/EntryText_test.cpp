#include "format/EntryText.h"

#include <gtest/gtest.h>

TEST(EntryHead, AttributesInEightLowerCaseDigitsAndSizeInTenPlaces) {
    EXPECT_EQ(FormatEntryHead(0x20, 1234), L"00000020       1234\t");
    EXPECT_EQ(FormatEntryHead(0x10, 0), L"00000010          0\t");
    EXPECT_EQ(FormatEntryHead(0xA00C2F, 7), L"00a00c2f          7\t");
    EXPECT_EQ(FormatEntryHead(0xFFFFFFFF, 2147483647), L"ffffffff 2147483647\t");
}

TEST(EntryHead, ThreeBillionBytesShowNegativeAndOverflowTheField) {
    // 3,000,000,000 bytes: the low 32 bits read as signed, eleven characters.
    EXPECT_EQ(FormatEntryHead(0x20, 3000000000u), L"00000020 -1294967296\t");
    EXPECT_EQ(FormatEntryHead(0x20, 0x80000000u), L"00000020 -2147483648\t");
    EXPECT_EQ(FormatEntryHead(0x20, 0xFFFFFFFFu), L"00000020         -1\t");
}

TEST(EntryHead, NarrowTextAppendedIsTheSame) {
    std::string line = "\t";
    AppendEntryHead(line, 0xA00C2F, 0x80000000u);
    AppendEntryHead(line, 0, 0);
    EXPECT_EQ(line, "\t00a00c2f -2147483648\t00000000          0\t");
}

TEST(EntryHead, FourGibPlusOneShowsOneRightAligned) {
    // 4,294,967,297 bytes: only the low 32 bits (1) are passed and shown.
    EXPECT_EQ(FormatEntryHead(0x20, static_cast<std::uint32_t>(4294967297ull)), L"00000020          1\t");
}

TEST(CalendarTime, DayFirstTwoBlanksTwentyFourHourClock) {
    EXPECT_EQ(FormatCalendarTime({7, 3, 2021, 14, 5, 9}), L"07/03/2021  14:05:09");
    EXPECT_EQ(FormatCalendarTime({31, 12, 1999, 23, 59, 59}), L"31/12/1999  23:59:59");
    EXPECT_EQ(FormatCalendarTime({1, 1, 1601, 0, 0, 0}), L"01/01/1601  00:00:00");
    EXPECT_EQ(FormatCalendarTime({1, 1, 999, 0, 0, 0}), L"01/01/0999  00:00:00");
}

TEST(Version, BlanksRemovedAndCommasBecomeFullStops) {
    EXPECT_EQ(NormaliseVersion(L"1, 4, 0, 12"), L"1.4.0.12");
    EXPECT_EQ(NormaliseVersion(L"3, 2, 1, 0"), L"3.2.1.0");
    EXPECT_EQ(NormaliseVersion(L" 9 . 3 "), L"9.3");
    EXPECT_EQ(NormaliseVersion(L"2.0 beta,1"), L"2.0beta.1");
    EXPECT_EQ(NormaliseVersion(L"a\tb"), L"a\tb");  // only U+0020 is a blank here
    EXPECT_EQ(NormaliseVersion(L""), L"");
}

TEST(AccessLetters, AllowNeedsEveryBitOfAPosition) {
    EXPECT_EQ(FormatAccessLetters(AceKind::Allow, 0x1F01FF), L"RWX");
    EXPECT_EQ(FormatAccessLetters(AceKind::Allow, 0x01), L"   ");  // FILE_READ_DATA alone
    EXPECT_EQ(FormatAccessLetters(AceKind::Allow, 0x81), L"R  ");
    EXPECT_EQ(FormatAccessLetters(AceKind::Allow, 0x21), L"  X");
    EXPECT_EQ(FormatAccessLetters(AceKind::Allow, 0x116), L" W ");
    EXPECT_EQ(FormatAccessLetters(AceKind::Allow, 0x16), L"   ");
    EXPECT_EQ(FormatAccessLetters(AceKind::Allow, 0x10000000), L"   ");  // GENERIC_ALL is not mapped
}

TEST(AccessLetters, DenyNeedsAnyBitOfAPosition) {
    EXPECT_EQ(FormatAccessLetters(AceKind::Deny, 0x01), L"R X");
    EXPECT_EQ(FormatAccessLetters(AceKind::Deny, 0x80), L"R  ");
    EXPECT_EQ(FormatAccessLetters(AceKind::Deny, 0x20), L"  X");
    EXPECT_EQ(FormatAccessLetters(AceKind::Deny, 0x100), L" W ");
    EXPECT_EQ(FormatAccessLetters(AceKind::Deny, 0x10000000), L"   ");
}

TEST(AccessLetters, OtherKindsShowNothing) {
    EXPECT_EQ(FormatAccessLetters(AceKind::Other, 0x1F01FF), L"");
}

TEST(AccessEntry, DomainBackslashNameAndLetters) {
    EXPECT_EQ(FormatAccessEntry(AceKind::Allow, AccountName{L"BUILTIN", L"Administrators"}, 0x1F01FF),
              L" Allow BUILTIN\\Administrators [RWX];");
    EXPECT_EQ(FormatAccessEntry(AceKind::Deny, AccountName{L"", L"Everyone"}, 0x120116), L" Deny Everyone [ W ];");
}

TEST(AccessEntry, OtherKindShowsTheAccountWithEmptyBrackets) {
    EXPECT_EQ(FormatAccessEntry(AceKind::Other, AccountName{L"BUILTIN", L"Users"}, 0x1F01FF),
              L" Unknown Right BUILTIN\\Users [];");
}

TEST(AccessEntry, FailedLookUpLeavesOnlyASemicolon) {
    EXPECT_EQ(FormatAccessEntry(AceKind::Allow, std::nullopt, 0x1F01FF), L" Allow ;");
    EXPECT_EQ(FormatAccessEntry(AceKind::Other, std::nullopt, 0), L" Unknown Right ;");
}

TEST(AccessEntry, EmptyNameAfterDomainKeepsTheBackslash) {
    EXPECT_EQ(FormatAccessEntry(AceKind::Allow, AccountName{L"HOST", L""}, 0x81), L" Allow HOST\\ [R  ];");
    EXPECT_EQ(FormatAccessEntry(AceKind::Allow, AccountName{L"", L""}, 0x81), L" Allow  [R  ];");
}

TEST(ApiFailure, CodeInSignedDecimal) {
    EXPECT_EQ(FormatApiFailure(L"GetFileSecurity", 5), L" failed GetFileSecurity (5)");
    EXPECT_EQ(FormatApiFailure(L"GetSecurityDescriptorDacl", 0), L" failed GetSecurityDescriptorDacl (0)");
    EXPECT_EQ(FormatApiFailure(L"GetFileSecurity", 0x80070005u), L" failed GetFileSecurity (-2147024891)");
}

TEST(Excerpt, ControlBytesBecomeQuestionMarks) {
    EXPECT_EQ(CleanExcerpt("abc\r\n"), "abc??");
    EXPECT_EQ(CleanExcerpt("a\tb\x1f" "c"), "a?b?c");
    EXPECT_EQ(CleanExcerpt(" ~"), " ~");
    EXPECT_EQ(CleanExcerpt(""), "");
}

TEST(Excerpt, BytesFromOneHundredTwentyEightUpAreKept) {
    EXPECT_EQ(CleanExcerpt("caf\xe9 \x80\xff\n"), "caf\xe9 \x80\xff?");
}

TEST(ContentPart, ExcerptStandsOnItsOwnLineBetweenQuotes) {
    EXPECT_EQ(FormatContentPart(L"abc??"), L"\n\t\t\t\tContent:\"abc??\"");
    EXPECT_EQ(FormatContentPart(L""), L"\n\t\t\t\tContent:\"\"");
    EXPECT_EQ(FormatContentPart(kUnableToOpen), L"\n\t\t\t\tContent:\"!!!unable to open file!!!\"");
}

TEST(DotEntries, OnlyDotAndDotDot) {
    EXPECT_TRUE(IsDotEntry(L"."));
    EXPECT_TRUE(IsDotEntry(L".."));
    EXPECT_FALSE(IsDotEntry(L"..."));
    EXPECT_FALSE(IsDotEntry(L".git"));
    EXPECT_FALSE(IsDotEntry(L""));
}

TEST(AccessListTexts, HeadingAndNullList) {
    EXPECT_EQ(kAccessListHeading, L" ACL:");
    EXPECT_EQ(kNullAccessList, L" NULL (Allow All)");
    EXPECT_EQ(kUnreadableAccessEntry, L";");
}

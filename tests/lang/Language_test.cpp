#include "lang/Language.h"

#include <gtest/gtest.h>

TEST(Language, LocaleNameIsCutAtTheFirstUnderscore) {
    EXPECT_EQ(LanguagePartOfLocaleName("French_France.1252"), L"French");
    EXPECT_EQ(LanguagePartOfLocaleName("English_United States.1252"), L"English");
    EXPECT_EQ(LanguagePartOfLocaleName("French_Canada_x.1252"), L"French");
    EXPECT_EQ(LanguagePartOfLocaleName("C"), L"");
    EXPECT_EQ(LanguagePartOfLocaleName(""), L"");
    EXPECT_EQ(LanguagePartOfLocaleName("_France"), L"");
}

TEST(Language, FrenchInAnyCaseGivesFrench) {
    for (const wchar_t* choice : {L"FRENCH", L"french", L"French", L"fReNcH"}) EXPECT_FALSE(IsEnglishChoice(choice)) << choice;
}

TEST(Language, EverythingElseGivesEnglish) {
    for (const wchar_t* choice : {L"", L"FRENC", L"FRENCH ", L" french", L"Fran\u00e7ais", L"German", L"English",
                                  L"FR", L"fr_FR", L"FRENCH\tx"})
        EXPECT_TRUE(IsEnglishChoice(choice)) << choice;
}

TEST(Language, OnlyAsciiLettersAreCapitalised) {
    // A dotless or accented look-alike never becomes the plain word.
    EXPECT_TRUE(IsEnglishChoice(L"FR\u00c9NCH"));
    EXPECT_TRUE(IsEnglishChoice(L"fr\u0435nch"));  // Cyrillic small ie
}

TEST(Language, BilingualPicksFrenchWhenNotEnglish) {
    constexpr Bilingual text{L"Oui", L"Yes"};
    EXPECT_STREQ(text.Pick(true), L"Yes");
    EXPECT_STREQ(text.Pick(false), L"Oui");
}

#include "app/Title.h"

#include <gtest/gtest.h>

TEST(MainTitle, NotElevated) {
    EXPECT_EQ(ComposeMainTitle(L"Orvane Diagnostics", false, true, L"9.3.1.1042"),
              L"Orvane Diagnostics 9.3.1.1042 (64 bits)");
    EXPECT_EQ(ComposeMainTitle(L"Diagnostics Orvane", false, false, L"9.3.1.1042"),
              L"Diagnostics Orvane 9.3.1.1042 (64 bits)");
}

TEST(MainTitle, ElevatedMarkStandsBeforeTheVersion) {
    EXPECT_EQ(ComposeMainTitle(L"Orvane Diagnostics", true, true, L"9.3.1.1042"),
              L"Orvane Diagnostics [Administrator] 9.3.1.1042 (64 bits)");
    EXPECT_EQ(ComposeMainTitle(L"Diagnostics Orvane", true, false, L"9.3.1.1042"),
              L"Diagnostics Orvane [Administrateur] 9.3.1.1042 (64 bits)");
}

TEST(MainTitle, EmptyVersionKeepsTheBlank) {
    EXPECT_EQ(ComposeMainTitle(L"X", false, true, L""), L"X  (64 bits)");
}

TEST(Tooltip, AtMostSeventyNineCharacters) {
    EXPECT_EQ(TooltipTextFor(L"System report"), L"System report");
    const std::wstring longText(100, L'a');
    EXPECT_EQ(TooltipTextFor(longText), std::wstring(79, L'a'));
    EXPECT_EQ(TooltipTextFor(L""), L"");
}

#include "format/ViewText.h"

#include <gtest/gtest.h>

TEST(ViewText, LineFeedsBecomeCrLf) {
    EXPECT_EQ(AsViewText(L"\nProgram:\n\tname: PC1\n"), L"\r\nProgram:\r\n\tname: PC1\r\n");
}

TEST(ViewText, CrLfAndLoneCrAreOneBreakEach) {
    EXPECT_EQ(AsViewText(L"a\nb\r\nc\rd"), L"a\r\nb\r\nc\r\nd");
    EXPECT_EQ(AsViewText(L"\r\r\n\n"), L"\r\n\r\n\r\n");
}

TEST(ViewText, TextWithoutBreaksIsUnchanged) {
    EXPECT_EQ(AsViewText(L""), L"");
    EXPECT_EQ(AsViewText(L"\t\u00e9\u20ac"), L"\t\u00e9\u20ac");
}

#include "reader/TerminalText.h"

#include <gtest/gtest.h>

#include <string>

using report_model::ForTerminal;

TEST(TerminalText, PrintableTextIsKept) {
    EXPECT_EQ(ForTerminal("C:\\Program Files\\Orvane\\tool.dll 9.3 \xC3\xA9t\xC3\xA9 \xE2\x86\x92 \xF0\x9F\x98\x80"),
              "C:\\Program Files\\Orvane\\tool.dll 9.3 \xC3\xA9t\xC3\xA9 \xE2\x86\x92 \xF0\x9F\x98\x80");
    EXPECT_EQ(ForTerminal(""), "");
}

TEST(TerminalText, EscapeSequencesBellAndTitleAreShownNotObeyed) {
    EXPECT_EQ(ForTerminal("evil\x1b[2J\x1b[H\x1b[32mALL GOOD\x1b[0m\x07.txt"),
              "evil\\x1b[2J\\x1b[H\\x1b[32mALL GOOD\\x1b[0m\\x07.txt");
    EXPECT_EQ(ForTerminal("\x1b]0;owned\x07"), "\\x1b]0;owned\\x07");
}

TEST(TerminalText, EveryC0ControlAndDelAreEscaped) {
    EXPECT_EQ(ForTerminal(std::string("a\0b", 3)), "a\\x00b");
    EXPECT_EQ(ForTerminal("tab\there\nline\rcr\x7f"), "tab\\x09here\\x0aline\\x0dcr\\x7f");
    for (int c = 0; c < 0x20; ++c) EXPECT_EQ(ForTerminal(std::string(1, static_cast<char>(c))).substr(0, 2), "\\x");
}

TEST(TerminalText, C1ControlsAreEscapedAsCharacters) {
    EXPECT_EQ(ForTerminal("next\xC2\x85line csi\xC2\x9B" "2J osc\xC2\x9D"), "next\\u0085line csi\\u009b2J osc\\u009d");
    EXPECT_EQ(ForTerminal("\xC2\xA0nbsp \xC2\xA9"), "\xC2\xA0nbsp \xC2\xA9");  // U+00A0 and after are text
}

TEST(TerminalText, BytesOfNoValidUtf8AreEscapedOneByOne) {
    EXPECT_EQ(ForTerminal("caf\xE9.txt"), "caf\\xe9.txt");          // Latin-1 name
    EXPECT_EQ(ForTerminal("\xC3"), "\\xc3");                        // cut sequence
    EXPECT_EQ(ForTerminal("\xC0\xAF"), "\\xc0\\xaf");               // overlong slash
    EXPECT_EQ(ForTerminal("\xED\xA0\x80"), "\\xed\\xa0\\x80");      // a surrogate
    EXPECT_EQ(ForTerminal("\xF4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");  // past U+10FFFF
    EXPECT_EQ(ForTerminal("\x9b"), "\\x9b");                        // a C1 byte on its own
}

TEST(TerminalText, TabsKeptOnlyWhereAskedForAWholeReportLine) {
    EXPECT_EQ(ForTerminal("\t00000020\t4753\tRunner.dll\x1b[0m", report_model::Tabs::Keep),
              "\t00000020\t4753\tRunner.dll\\x1b[0m");
    EXPECT_EQ(ForTerminal("\tx\n", report_model::Tabs::Keep), "\tx\\x0a");
}

TEST(TerminalText, WellFormedUtf8IsTold) {
    EXPECT_TRUE(report_model::IsWellFormedUtf8("caf\xC3\xA9 \xF0\x9F\x98\x80"));
    EXPECT_TRUE(report_model::IsWellFormedUtf8(""));
    EXPECT_FALSE(report_model::IsWellFormedUtf8("caf\xE9"));
    EXPECT_FALSE(report_model::IsWellFormedUtf8("\xED\xA0\x80"));
}

#include "app/CommandLine.h"

#include <gtest/gtest.h>

namespace {
CommandLine Parse(std::wstring_view text) { return ParseCommandLine(text); }
}  // namespace

TEST(CommandLine, EmptyLineHasNothing) {
    const CommandLine c = Parse(L"");
    EXPECT_FALSE(c.help);
    EXPECT_FALSE(c.invalid);
    EXPECT_TRUE(c.arguments.empty());
}

TEST(CommandLine, HelpSpellings) {
    for (const wchar_t* text : {L"/help", L"-help", L"/h", L"/H", L"-h", L"-H", L"/?", L"-?"}) {
        const CommandLine c = Parse(text);
        EXPECT_TRUE(c.help) << text;
        EXPECT_FALSE(c.invalid) << text;
    }
}

TEST(CommandLine, HelpIsCaseSensitive) {
    for (const wchar_t* text : {L"/Help", L"/HELP", L"-hElp", L"/hh", L"/", L"-"}) {
        const CommandLine c = Parse(text);
        EXPECT_TRUE(c.invalid) << text;
        EXPECT_FALSE(c.help) << text;
    }
}

TEST(CommandLine, UnknownOptionAfterHelpIsInvalid) {
    const CommandLine c = Parse(L"/h /x");
    EXPECT_TRUE(c.help);
    EXPECT_TRUE(c.invalid);
}

TEST(CommandLine, RunsOfSpacesMakeNoEmptyTokens) {
    const CommandLine c = Parse(L"   a    b  ");
    ASSERT_EQ(c.arguments.size(), 2u);
    EXPECT_EQ(c.arguments[0], L"a");
    EXPECT_EQ(c.arguments[1], L"b");
}

TEST(CommandLine, TabsDoNotSeparate) {
    const CommandLine c = Parse(L"a\tb");
    ASSERT_EQ(c.arguments.size(), 1u);
    EXPECT_EQ(c.arguments[0], L"a\tb");
}

TEST(CommandLine, QuotesToggleAndAreDropped) {
    const CommandLine c = Parse(L"\"C:\\My Files\\r.txt\" x\"y z\"w \"/h\"");
    ASSERT_EQ(c.arguments.size(), 2u);
    EXPECT_EQ(c.arguments[0], L"C:\\My Files\\r.txt");
    EXPECT_EQ(c.arguments[1], L"xy zw");
    EXPECT_TRUE(c.help);
}

TEST(CommandLine, UnbalancedQuoteRunsToTheEnd) {
    const CommandLine c = Parse(L"\"a b");
    ASSERT_EQ(c.arguments.size(), 1u);
    EXPECT_EQ(c.arguments[0], L"a b");
}

TEST(CommandLine, QuotedOptionWithSpaceIsUnknown) {
    EXPECT_TRUE(Parse(L"\"/h \"").invalid);
}

TEST(CommandLine, TokenOf1022CharactersIsAccepted) {
    const std::wstring token(1022, L'x');
    const CommandLine c = Parse(token + L" /h");
    EXPECT_FALSE(c.invalid);
    EXPECT_TRUE(c.help);
    ASSERT_EQ(c.arguments.size(), 1u);
    EXPECT_EQ(c.arguments[0], token);
}

TEST(CommandLine, TokenOf1023CharactersIsInvalid) {
    EXPECT_TRUE(Parse(std::wstring(1023, L'x')).invalid);
    EXPECT_TRUE(Parse(L"/" + std::wstring(1022, L'h')).invalid);
}

TEST(CommandLine, DroppedQuotesDoNotCountTowardsTheLimit) {
    const std::wstring token = L"\"" + std::wstring(1022, L'x');
    EXPECT_FALSE(Parse(token).invalid);
    EXPECT_FALSE(Parse(L"\"x\"" + std::wstring(1021, L'x') + L" next").invalid);
}

TEST(CommandLine, AQuoteAfter1022CharactersIsInvalid) {
    EXPECT_TRUE(Parse(std::wstring(1022, L'x') + L"\"").invalid);
}

TEST(CommandLine, ASpaceInsideQuotesAfter1022CharactersIsInvalid) {
    EXPECT_TRUE(Parse(L"\"" + std::wstring(1022, L'x') + L" \"").invalid);
}

TEST(CommandLine, NonAsciiTokensAreKept) {
    const CommandLine c = Parse(L"rapport-\u00e9t\u00e9.txt");
    ASSERT_EQ(c.arguments.size(), 1u);
    EXPECT_EQ(c.arguments[0], L"rapport-\u00e9t\u00e9.txt");
}

TEST(UsageText, NamesTheProgramTheHelpOptionAndTheReportFile) {
    const std::wstring en = UsageText(true, L"OrvaneDiagnostics.exe");
    const std::wstring fr = UsageText(false, L"OrvaneDiagnostics.exe");
    EXPECT_EQ(en.rfind(L"Usage: OrvaneDiagnostics.exe [/?] [report-file]\n", 0), 0u);
    EXPECT_EQ(fr.rfind(L"Utilisation : OrvaneDiagnostics.exe [/?] [fichier-rapport]\n", 0), 0u);
    EXPECT_NE(en.find(L"/?, /h or /help"), std::wstring::npos);
    EXPECT_NE(fr.find(L"/?, /h ou /help"), std::wstring::npos);
    EXPECT_NE(en.find(L"\nreport-file\tWrites the system report to this file"), std::wstring::npos);
    EXPECT_NE(fr.find(L"\nfichier-rapport\t\u00c9crit le rapport syst\u00e8me dans ce fichier"), std::wstring::npos);
}

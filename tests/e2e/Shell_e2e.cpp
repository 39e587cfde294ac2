// The application shell as a user meets it: language, title, command line,
// system menu commands, keyboard and closing.
#include <gtest/gtest.h>

#include "e2e/Driver.h"
#include "support/Wine.h"

using namespace e2e;

namespace {

constexpr wchar_t kEnglishUsage[] =
    L"Usage: OrvaneDiagnostics.exe [/?] [report-file]\n\n"
    L"/?, /h or /help\tShows this help and ends.\n"
    L"report-file\tWrites the system report to this file, without any window, and ends.\n\n"
    L"Options may also begin with \"-\".\n"
    L"Without parameters the main window opens; its System report button shows the report of this computer.\n\n"
    L"Exit status: 0 done, 2 invalid parameters, 3 report file cannot be written.";
constexpr wchar_t kFrenchUsage[] =
    L"Utilisation : OrvaneDiagnostics.exe [/?] [fichier-rapport]\n\n"
    L"/?, /h ou /help\tAffiche cette aide et termine.\n"
    L"fichier-rapport\t\u00c9crit le rapport syst\u00e8me dans ce fichier, sans aucune fen\u00eatre, et termine.\n\n"
    L"Les options peuvent aussi commencer par \"-\".\n"
    L"Sans param\u00e8tre, la fen\u00eatre principale s'ouvre ; son bouton Rapport syst\u00e8me affiche le rapport de "
    L"cet ordinateur.\n\n"
    L"Code de sortie : 0 termin\u00e9, 2 param\u00e8tres invalides, 3 fichier rapport impossible \u00e0 \u00e9crire.";
constexpr wchar_t kEnglishTitle[] = L"Orvane Diagnostics [Administrator] 9.3.1.1042 (64 bits)";
constexpr wchar_t kFrenchTitle[] = L"Diagnostics Orvane [Administrateur] 9.3.1.1042 (64 bits)";

// Under Wine a child takes its locale from the Unix environment of the test
// process, so the suites run under LC_ALL=en_US.UTF-8 (Shell) and
// LC_ALL=fr_FR.UTF-8 (FrenchUser); see tests/CMakeLists.txt.
LaunchOptions WithArguments(std::wstring arguments = {}) {
    LaunchOptions options;
    options.arguments = std::move(arguments);
    return options;
}
LaunchOptions English(std::wstring arguments = {}) { return WithArguments(std::move(arguments)); }
LaunchOptions French(std::wstring arguments = {}) { return WithArguments(std::move(arguments)); }

class Shell : public testing::Test {
protected:
    void SetUp() override {
        SKIP_IF_FRENCH_USER();
        DeleteSettings();
    }
    void TearDown() override { DeleteSettings(); }

    // The program shows `text` in a box with that icon and only an OK button;
    // pressing it closes the box.
    static void ExpectBoxAndPressOk(Program& program, const std::wstring& text, IconKind icon) {
        HWND box = program.WaitForMessageBox();
        ASSERT_NE(box, nullptr);
        const MessageBoxContent content = ReadMessageBox(box);
        EXPECT_EQ(content.caption, L"OrvaneDiagnostics");
        EXPECT_EQ(content.text, text);
        EXPECT_EQ(content.buttons, std::vector<std::wstring>{L"OK"});
        EXPECT_EQ(ReadMessageBoxIcon(box), icon);
        EXPECT_TRUE(TopLevelWindows(program.Pid()).size() == 1) << "only the box is on screen";
        ASSERT_TRUE(PressMessageBoxButton(box, L"OK"));
        EXPECT_TRUE(program.WaitForClosed(box));
    }

    static void ExpectEndWithoutMainWindow(Program& program, DWORD expectedStatus) {
        DWORD code = 1234;
        ASSERT_TRUE(program.WaitForExit(code));
        EXPECT_EQ(code, expectedStatus);
    }

    static std::wstring TitleOfMainWindow(LaunchOptions options) {
        Program program(std::move(options));
        HWND main = program.WaitForMainWindow();
        return main ? WindowText(main) : L"(no main window)";
    }
};

// Top-level windows of `pid`, shown or hidden, that hold a report view.
std::size_t WindowsWithReportView(DWORD pid) {
    struct Count {
        DWORD pid;
        std::size_t windows;
    } count{pid, 0};
    ::EnumWindows(
        [](HWND hwnd, LPARAM lParam) -> BOOL {
            auto* count = reinterpret_cast<Count*>(lParam);
            DWORD owner = 0;
            ::GetWindowThreadProcessId(hwnd, &owner);
            if (owner == count->pid && ::GetDlgItem(hwnd, 1003)) ++count->windows;
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&count));
    return count.windows;
}

class FrenchUser : public Shell {
protected:
    void SetUp() override {
        SKIP_UNLESS_FRENCH_USER();
        DeleteSettings();
    }
};

}  // namespace

TEST_F(Shell, EnglishLocaleGivesTheEnglishWindow) {
    Program program(English());
    HWND main = program.WaitForMainWindow();
    ASSERT_NE(main, nullptr);
    EXPECT_EQ(WindowText(main), kEnglishTitle);
    EXPECT_EQ(WindowText(::GetDlgItem(main, 1013)), L"System report");
}

TEST_F(FrenchUser, FrenchLocaleGivesTheFrenchWindow) {
    Program program(French());
    HWND main = program.WaitForMainWindow();
    ASSERT_NE(main, nullptr);
    EXPECT_EQ(WindowText(main), kFrenchTitle);
    EXPECT_EQ(WindowText(::GetDlgItem(main, 1013)), L"Rapport système");
}

TEST_F(Shell, ForcedLocaleFrenchInAnyCaseOverridesAnEnglishLocale) {
    for (const wchar_t* value : {L"FRENCH", L"french", L"FrEnCh"}) {
        WriteSetting(L"System", L"forcedLocale", value);
        EXPECT_EQ(TitleOfMainWindow(English()), kFrenchTitle) << value;
    }
}

TEST_F(FrenchUser, ForcedLocaleOtherThanFrenchGivesEnglishOnAFrenchLocale) {
    for (const wchar_t* value : {L"FRENC", L"FRENCH ", L"German", L"Fran\u00e7ais", L"fr"}) {
        WriteSetting(L"System", L"forcedLocale", value);
        EXPECT_EQ(TitleOfMainWindow(French()), kEnglishTitle) << value;
    }
}

TEST_F(FrenchUser, VeryLongForcedLocaleGivesEnglish) {
    WriteSetting(L"System", L"forcedLocale", std::wstring(5000, L'x'));
    EXPECT_EQ(TitleOfMainWindow(French()), kEnglishTitle);
}

TEST_F(Shell, HelpOptionShowsOnlyTheUsageBox) {
    for (const wchar_t* option : {L"/h", L"-?", L"/H", L"/?", L"-help"}) {
        SCOPED_TRACE(option);
        Program program(English(option));
        ExpectBoxAndPressOk(program, kEnglishUsage, IconKind::kInformation);
        ExpectEndWithoutMainWindow(program, 0);
    }
}

TEST_F(FrenchUser, HelpOptionInFrench) {
    Program program(French(L"/help"));
    ExpectBoxAndPressOk(program, kFrenchUsage, IconKind::kInformation);
    ExpectEndWithoutMainWindow(program, 0);
}

TEST_F(Shell, CapitalisedHelpIsAnUnknownOption) {
    Program program(English(L"/Help"));
    ExpectBoxAndPressOk(program, L"Invalid launch parameters!", IconKind::kStop);
    ExpectBoxAndPressOk(program, kEnglishUsage, IconKind::kInformation);
    ExpectEndWithoutMainWindow(program, 2);
}

TEST_F(Shell, HelpWithAnUnknownOptionIsInvalid) {
    Program program(English(L"/h /x"));
    ExpectBoxAndPressOk(program, L"Invalid launch parameters!", IconKind::kStop);
    ExpectBoxAndPressOk(program, kEnglishUsage, IconKind::kInformation);
    ExpectEndWithoutMainWindow(program, 2);
}

TEST_F(FrenchUser, InvalidParametersInFrench) {
    Program program(French(L"/HELP"));
    ExpectBoxAndPressOk(program, L"Paramètres de lancement invalides !", IconKind::kStop);
    ExpectBoxAndPressOk(program, kFrenchUsage, IconKind::kInformation);
    ExpectEndWithoutMainWindow(program, 2);
}

TEST_F(Shell, TokenOf1022CharactersIsAccepted) {
    // A token that is not an option names the report file: make it a real
    // path of exactly 1,022 characters, in folders of 200.
    std::wstring path = TempFolder(L"orvane-long");
    std::vector<std::wstring> folders{path};
    while (path.size() + 1 + 200 + 1 + 10 < 1022) {
        path += L"\\" + std::wstring(200, L'd');
        ASSERT_TRUE(::CreateDirectoryW(path.c_str(), nullptr)) << ::GetLastError();
        folders.push_back(path);
    }
    path += L"\\" + std::wstring(1022 - path.size() - 1 - 4, L'r') + L".txt";
    ASSERT_EQ(path.size(), 1022u);
    // Unquoted: a closing quote after 1,022 characters would make the line invalid.
    ASSERT_EQ(path.find(L' '), std::wstring::npos);

    Program program(English(path));
    DWORD code = 1234;
    ASSERT_TRUE(program.WaitForExit(code, 120s));
    EXPECT_EQ(code, 0u);
    EXPECT_NE(::GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
    ::DeleteFileW(path.c_str());
    for (auto it = folders.rbegin(); it != folders.rend(); ++it) ::RemoveDirectoryW(it->c_str());
}

TEST_F(Shell, TokenOf1023CharactersIsInvalid) {
    Program program(English(std::wstring(1023, L'x')));
    ExpectBoxAndPressOk(program, L"Invalid launch parameters!", IconKind::kStop);
    ExpectBoxAndPressOk(program, kEnglishUsage, IconKind::kInformation);
    ExpectEndWithoutMainWindow(program, 2);
}

TEST_F(Shell, EnterNeitherClosesTheMainWindowNorOpensAReport) {
    Program program(English());
    HWND main = program.WaitForMainWindow();
    ASSERT_NE(main, nullptr);
    // Where the focus starts: on the System report button, the one control
    // that Enter could press.
    ASSERT_TRUE(WaitUntil([&] { return FocusOf(main) != nullptr; }));
    EXPECT_EQ(FocusOf(main), ::GetDlgItem(main, 1013));
    PostKey(FocusOf(main), VK_RETURN);
    // The About box opens after the Enter key has been handled.
    PostSysCommand(main, 16);
    HWND about = program.WaitForWindow([](HWND hwnd) { return WindowText(hwnd) == L"About Orvane Diagnostics"; });
    ASSERT_NE(about, nullptr);
    EXPECT_TRUE(::IsWindow(main) && ::IsWindowVisible(main));
    EXPECT_TRUE(program.IsRunning());
    // No Diagnostics window, not even a hidden one.
    EXPECT_EQ(WindowsWithReportView(program.Pid()), 0u);
}

TEST_F(Shell, EscapeClosesWithoutSavingTheWindowState) {
    Program program(English());
    HWND main = program.WaitForMainWindow();
    ASSERT_NE(main, nullptr);
    ASSERT_TRUE(WaitUntil([&] { return FocusOf(main) != nullptr; }));
    PostKey(FocusOf(main), VK_ESCAPE);
    DWORD code = 1234;
    ASSERT_TRUE(program.WaitForExit(code));
    EXPECT_EQ(code, 0u);
    std::wstring state;
    EXPECT_FALSE(ReadSetting(L"WindowState", L"OrvaneDiagnostics", state)) << state;
}

TEST_F(Shell, CloseBoxSavesTheWindowState) {
    Program program(English());
    HWND main = program.WaitForMainWindow();
    ASSERT_NE(main, nullptr);
    RECT rect{};
    ::GetWindowRect(main, &rect);
    PostSysCommand(main, SC_CLOSE);
    DWORD code = 1234;
    ASSERT_TRUE(program.WaitForExit(code));
    EXPECT_EQ(code, 0u);
    std::wstring state;
    ASSERT_TRUE(ReadSetting(L"WindowState", L"OrvaneDiagnostics", state));
    EXPECT_EQ(state, L"1," + std::to_wstring(rect.left) + L"," + std::to_wstring(rect.top) + L"," +
                         std::to_wstring(rect.right) + L"," + std::to_wstring(rect.bottom));
}

TEST_F(Shell, AboutBoxShowsNameVersionAndCopyright) {
    Program program(English());
    HWND main = program.WaitForMainWindow();
    ASSERT_NE(main, nullptr);
    PostSysCommand(main, 16);
    HWND about = program.WaitForWindow([](HWND hwnd) { return WindowText(hwnd) == L"About Orvane Diagnostics"; });
    ASSERT_NE(about, nullptr);
    EXPECT_EQ(WindowText(::GetDlgItem(about, 1101)), L"Orvane Diagnostics");
    EXPECT_EQ(WindowText(::GetDlgItem(about, 1102)), L"Version 9.3.1.1042");
    EXPECT_EQ(WindowText(::GetDlgItem(about, 1103)), L"\u00a9 2026 Orvane Software. All rights reserved.");
    PostButtonClick(about, IDOK);
    EXPECT_TRUE(program.WaitForClosed(about));
    EXPECT_TRUE(program.IsRunning());
}

TEST_F(FrenchUser, AboutBoxInFrench) {
    Program program(French());
    HWND main = program.WaitForMainWindow();
    ASSERT_NE(main, nullptr);
    PostSysCommand(main, 16);
    HWND about = program.WaitForWindow([](HWND hwnd) { return WindowText(hwnd) == L"À propos d'Orvane Diagnostics"; });
    ASSERT_NE(about, nullptr);
    EXPECT_EQ(WindowText(::GetDlgItem(about, 1103)), L"\u00a9 2026 Orvane Software. Tous droits réservés.");
}

// The System report as a user meets it: the button, the Diagnostics window,
// OK, Esc and the close box, and Save through the real Save As dialog.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "e2e/Driver.h"
#include "support/Wine.h"
#include "w32/Scoped.h"

using namespace e2e;

namespace {

constexpr int kReportView = 1003;
constexpr int kSaveButton = 1012;
constexpr int kReportButton = 1013;

// An independent reading of the saved file's trailer.
std::uint32_t FoldLowBytes(const std::wstring& body) {
    std::uint32_t value = 0x01020304;
    for (std::size_t i = 0; i < body.size(); ++i) value ^= (static_cast<std::uint32_t>(body[i]) & 0xFF) << (8 * (i % 4));
    return value;
}

std::string ExpectedFileBytes(const std::wstring& body) {
    wchar_t digits[9];
    swprintf(digits, 9, L"%08x", FoldLowBytes(body));
    const std::wstring all = body + L"\n--- \n" + digits + L"\n";
    std::string bytes = "\xFF\xFE";
    for (wchar_t c : all) {
        bytes.push_back(static_cast<char>(c & 0xFF));
        bytes.push_back(static_cast<char>((c >> 8) & 0xFF));
    }
    return bytes;
}

bool IsReportWindow(HWND hwnd) { return ::GetDlgItem(hwnd, kReportView) != nullptr; }

class DiagnosticsWindow : public testing::Test {
protected:
    void SetUp() override {
        SKIP_IF_FRENCH_USER();
        SetUpForAnyLanguage();
    }
    void SetUpForAnyLanguage() {
        DeleteSettings();
        main_ = program_.WaitForMainWindow();
        ASSERT_NE(main_, nullptr);
    }
    void TearDown() override { DeleteSettings(); }

    HWND OpenReport() {
        PostButtonClick(main_, kReportButton);
        HWND window = program_.WaitForWindow(IsReportWindow, 120s);
        if (window) WaitUntil([&] { return ReportText(window).find(L"installation:") != std::wstring::npos; }, 120s);
        return window;
    }
    static std::wstring ReportText(HWND window) { return WindowText(::GetDlgItem(window, kReportView)); }

    std::vector<HWND> ReportWindows() const {
        std::vector<HWND> found;
        for (HWND hwnd : TopLevelWindows(program_.Pid()))
            if (IsReportWindow(hwnd)) found.push_back(hwnd);
        return found;
    }

    // Presses Save, types `path` into the Save As dialog and confirms it.
    HWND SaveAs(HWND window, const std::wstring& path) {
        PostButtonClick(window, kSaveButton);
        return CompleteSaveAs(program_, path);
    }

    Program program_;
    HWND main_ = nullptr;
};

}  // namespace

TEST_F(DiagnosticsWindow, ReportButtonShowsTheReport) {
    HWND window = OpenReport();
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(WindowText(window), L"System report");
    EXPECT_EQ(WindowText(::GetDlgItem(window, kSaveButton)), L"Save...");
    EXPECT_EQ(WindowText(::GetDlgItem(window, IDOK)), L"OK");
    const std::wstring text = ReportText(window);
    EXPECT_EQ(text.rfind(L"Orvane Software system report on ", 0), 0u) << text.substr(0, 80);
    for (const wchar_t* heading : {L"\r\n\r\nProgram:\r\n", L"\r\nHost:\r\n", L"\r\nWindows:\r\n", L"\r\nHardware:\r\n",
                                   L"\r\nNetwork:\r\n", L"\r\nOrvane Software installation:\r\n"})
        EXPECT_NE(text.find(heading), std::wstring::npos) << testing::PrintToString(std::wstring(heading));
}

TEST_F(DiagnosticsWindow, SystemCommand17ShowsTheReport) {
    PostSysCommand(main_, 17);
    EXPECT_NE(program_.WaitForWindow(IsReportWindow, 120s), nullptr);
}

TEST_F(DiagnosticsWindow, SecondRequestRefreshesTheSameWindow) {
    HWND window = OpenReport();
    ASSERT_NE(window, nullptr);
    // Replace the text behind the program's back: the next request must rewrite it.
    ::SendMessageW(::GetDlgItem(window, kReportView), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"stale"));
    ASSERT_EQ(ReportText(window), L"stale");
    PostButtonClick(main_, kReportButton);
    ASSERT_TRUE(WaitUntil([&] { return ReportText(window).find(L"installation:") != std::wstring::npos; }, 120s));
    EXPECT_EQ(ReportText(window).rfind(L"Orvane Software system report on ", 0), 0u);
    EXPECT_EQ(ReportWindows(), std::vector<HWND>{window});
}

TEST_F(DiagnosticsWindow, OkEscapeAndCloseBoxOnlyHide) {
    HWND window = OpenReport();
    ASSERT_NE(window, nullptr);
    const std::wstring text = ReportText(window);

    PostButtonClick(window, IDOK);
    EXPECT_TRUE(program_.WaitForClosed(window));
    EXPECT_TRUE(::IsWindow(window));

    PostButtonClick(main_, kReportButton);
    ASSERT_TRUE(WaitUntil([&] { return ::IsWindowVisible(window) != FALSE; }));
    ASSERT_TRUE(WaitUntil([&] { return FocusOf(window) != nullptr; }));
    PostKey(FocusOf(window), VK_ESCAPE);
    EXPECT_TRUE(program_.WaitForClosed(window));
    EXPECT_TRUE(::IsWindow(window));

    PostButtonClick(main_, kReportButton);
    ASSERT_TRUE(WaitUntil([&] { return ::IsWindowVisible(window) != FALSE; }));
    PostSysCommand(window, SC_CLOSE);
    EXPECT_TRUE(program_.WaitForClosed(window));
    EXPECT_TRUE(::IsWindow(window));
    EXPECT_TRUE(program_.IsRunning());
}

TEST_F(DiagnosticsWindow, SaveWritesTheViewTextWithItsChecksumAndRemembersTheFolder) {
    HWND window = OpenReport();
    ASSERT_NE(window, nullptr);
    const std::wstring folder = TempFolder(L"orvane-save");
    const std::wstring path = folder + L"\\a.txt";
    ::DeleteFileW(path.c_str());
    ASSERT_NE(SaveAs(window, path), nullptr);
    ASSERT_TRUE(WaitUntil([&] { return ReadBytes(path).size() > 32; }));
    const std::wstring body = ReportText(window);
    EXPECT_EQ(ReadBytes(path), ExpectedFileBytes(body));
    std::wstring remembered;
    EXPECT_TRUE(ReadSetting(L"Folder", L"report", remembered));
    EXPECT_EQ(remembered, folder);

    // The next Save proposes report.txt in that folder.
    const std::wstring proposed = folder + L"\\report.txt";
    ::DeleteFileW(proposed.c_str());
    ASSERT_NE(SaveAs(window, L""), nullptr);
    EXPECT_TRUE(WaitUntil([&] { return ReadBytes(proposed) == ExpectedFileBytes(body); }));
    ::DeleteFileW(path.c_str());
    ::DeleteFileW(proposed.c_str());
    ::RemoveDirectoryW(folder.c_str());
}

TEST_F(DiagnosticsWindow, NameWithoutExtensionIsKeptAsTyped) {
    HWND window = OpenReport();
    ASSERT_NE(window, nullptr);
    const std::wstring folder = TempFolder(L"orvane-noext");
    const std::wstring path = folder + L"\\noext";
    ASSERT_NE(SaveAs(window, path), nullptr);
    EXPECT_TRUE(WaitUntil([&] { return ReadBytes(path).size() > 32; }));
    EXPECT_EQ(::GetFileAttributesW((path + L".txt").c_str()), INVALID_FILE_ATTRIBUTES);
    ::DeleteFileW(path.c_str());
    ::RemoveDirectoryW(folder.c_str());
}

TEST_F(DiagnosticsWindow, ExistingFileIsReplacedWholeAfterConfirmation) {
    HWND window = OpenReport();
    ASSERT_NE(window, nullptr);
    const std::wstring folder = TempFolder(L"orvane-overwrite");
    const std::wstring path = folder + L"\\old.txt";
    {
        std::ofstream old(std::filesystem::path(path), std::ios::binary);
        old << std::string(2'000'000, 'x');
    }
    ASSERT_NE(SaveAs(window, path), nullptr);
    HWND question = program_.WaitForMessageBox();
    ASSERT_NE(question, nullptr);
    // The file dialog's own question; its words are the system's.
    EXPECT_EQ(ReadMessageBox(question).buttons, (std::vector<std::wstring>{L"Yes", L"No"}));
    ASSERT_TRUE(PressMessageBoxButton(question, L"Yes"));
    const std::string expected = ExpectedFileBytes(ReportText(window));
    EXPECT_TRUE(WaitUntil([&] { return ReadBytes(path) == expected; }));
    ::DeleteFileW(path.c_str());
    ::RemoveDirectoryW(folder.c_str());
}

TEST_F(DiagnosticsWindow, FileThatCannotBeOpenedGivesTheMessageAndKeepsTheFolder) {
    HWND window = OpenReport();
    ASSERT_NE(window, nullptr);
    const std::wstring folder = TempFolder(L"orvane-locked");
    const std::wstring path = folder + L"\\locked.txt";
    {
        std::ofstream make(std::filesystem::path(path), std::ios::binary);
        make << "keep me";
    }
    // Opened here without sharing: the program cannot open it for writing.
    w32::ScopedHandle lock(::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(lock);
    ASSERT_NE(SaveAs(window, path), nullptr);
    HWND question = program_.WaitForMessageBox();
    ASSERT_NE(question, nullptr);
    ASSERT_TRUE(PressMessageBoxButton(question, L"Yes"));
    HWND box = nullptr;
    ASSERT_TRUE(WaitUntil([&] {
        box = program_.WaitForMessageBox(1s);
        return box && ReadMessageBox(box).text == L"Unable to open file!";
    }));
    const MessageBoxContent content = ReadMessageBox(box);
    EXPECT_EQ(content.caption, L"OrvaneDiagnostics");
    EXPECT_EQ(content.buttons, std::vector<std::wstring>{L"OK"});
    EXPECT_EQ(ReadMessageBoxIcon(box), IconKind::kStop);
    std::wstring remembered;
    EXPECT_TRUE(ReadSetting(L"Folder", L"report", remembered));
    EXPECT_EQ(remembered, folder);
    ASSERT_TRUE(PressMessageBoxButton(box, L"OK"));
    lock.Reset();
    EXPECT_EQ(ReadBytes(path), "keep me");
    ::DeleteFileW(path.c_str());
    ::RemoveDirectoryW(folder.c_str());
}


namespace {

// Runs under LC_ALL=fr_FR.UTF-8 (see tests/CMakeLists.txt).
class FrenchUserReport : public DiagnosticsWindow {
protected:
    void SetUp() override {
        SKIP_UNLESS_FRENCH_USER();
        SetUpForAnyLanguage();
    }
};

}  // namespace

TEST_F(FrenchUserReport, WindowAndSaveSpeakFrench) {
    HWND window = OpenReport();
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(WindowText(window), L"Rapport Syst\u00e8me");
    EXPECT_EQ(WindowText(::GetDlgItem(window, kSaveButton)), L"Sauver...");
    EXPECT_EQ(WindowText(::GetDlgItem(window, IDOK)), L"OK");

    const std::wstring folder = TempFolder(L"orvane-locked-fr");
    const std::wstring path = folder + L"\\verrou.txt";
    {
        std::ofstream make(std::filesystem::path(path), std::ios::binary);
        make << "garder";
    }
    w32::ScopedHandle lock(::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(lock);
    HWND dialog = SaveAs(window, path);
    ASSERT_NE(dialog, nullptr);
    HWND box = nullptr;
    ASSERT_TRUE(WaitUntil([&] {
        box = program_.WaitForMessageBox(1s);
        if (!box) return false;
        const MessageBoxContent content = ReadMessageBox(box);
        if (content.buttons.size() == 2) {  // the file dialog asks before replacing
            PressMessageBoxButton(box, content.buttons[0]);
            return false;
        }
        return content.text == L"Impossible d'ouvrir le fichier !";
    }));
    EXPECT_EQ(ReadMessageBoxIcon(box), IconKind::kStop);
    ASSERT_TRUE(PressMessageBoxButton(box, L"OK"));
    lock.Reset();
    ::DeleteFileW(path.c_str());
    ::RemoveDirectoryW(folder.c_str());
}

// A program directory of thousands of files makes a report of more than
// 200,000 characters: the view holds it whole and Save writes it whole.
TEST(LargeReport, IsHeldAndSavedWhole) {
    DeleteSettings();
    const std::wstring folder = TempFolder(L"orvane-large");
    const std::wstring program = folder + L"\\OrvaneDiagnostics.exe";
    ASSERT_TRUE(::CopyFileW(ProgramPath().c_str(), program.c_str(), FALSE));
    for (int i = 0; i < 3000; ++i) {
        const std::wstring name = folder + L"\\entry-" + std::to_wstring(10000 + i) + L".dat";
        w32::ScopedHandle file(::CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
        ASSERT_TRUE(file);
    }
    {
        LaunchOptions options;
        options.program = program;
        Program running(options);
        HWND main = running.WaitForMainWindow();
        ASSERT_NE(main, nullptr);
        PostButtonClick(main, kReportButton);
        HWND window = running.WaitForWindow(IsReportWindow, 120s);
        ASSERT_NE(window, nullptr);
        std::wstring text;
        ASSERT_TRUE(WaitUntil([&] {
            text = WindowText(::GetDlgItem(window, kReportView));
            return text.find(L"* Shared Batch directory") != std::wstring::npos;
        }, 120s));
        EXPECT_GT(text.size(), 200000u);
        EXPECT_NE(text.find(L"\tentry-12999.dat\t"), std::wstring::npos);

        const std::wstring saved = folder + L"\\large-report.txt";
        PostButtonClick(window, kSaveButton);
        ASSERT_NE(CompleteSaveAs(running, saved), nullptr);
        const std::string expected = ExpectedFileBytes(text);
        EXPECT_TRUE(WaitUntil([&] { return ReadBytes(saved) == expected; }));
        EXPECT_EQ(expected.size(), 32 + 2 * text.size());
    }
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::path(folder), ignored);
    DeleteSettings();
}

// The System report as a user meets it: the button, the Diagnostics window,
// OK, Esc and the close box, and Save through the real Save As dialog.
#include <gtest/gtest.h>

#include <algorithm>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <vector>

#include "e2e/Driver.h"
#include "support/Wine.h"
#include "w32/Scoped.h"

#include <commdlg.h>

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

// Presses System report in the running program's main window; the
// Diagnostics window, or null.
HWND RequestReport(Program& running) {
    HWND main = running.WaitForMainWindow();
    if (!main) return nullptr;
    PostButtonClick(main, kReportButton);
    return running.WaitForWindow(IsReportWindow, kReportTimeout);
}

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
        HWND window = program_.WaitForWindow(IsReportWindow, kReportTimeout);
        if (window) WaitUntil([&] { return ReportText(window).find(L"installation:") != std::wstring::npos; }, kReportTimeout);
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
    EXPECT_NE(program_.WaitForWindow(IsReportWindow, kReportTimeout), nullptr);
}

TEST_F(DiagnosticsWindow, RequestWhileShownActivatesTheWindowAndLeavesNothingOfTheLastReport) {
    HWND window = OpenReport();
    ASSERT_NE(window, nullptr);
    // Words no report holds, at the end of the one on screen (a position
    // past the end puts the caret there).
    const std::wstring planted = L"\u00a7 planted by the test, never written by the program \u00a7";
    HWND view = ::GetDlgItem(window, kReportView);
    const WPARAM end = ::SendMessageW(view, WM_GETTEXTLENGTH, 0, 0);
    ::SendMessageW(view, EM_SETSEL, end, static_cast<LPARAM>(end));
    ::SendMessageW(view, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(planted.c_str()));
    ASSERT_NE(ReportText(window).find(planted), std::wstring::npos);
    // The user turns to the main window, the report staying on screen.
    ::SetForegroundWindow(main_);
    ASSERT_TRUE(WaitUntil([&] { return ::GetForegroundWindow() == main_; }));
    ASSERT_TRUE(::IsWindowVisible(window));

    PostButtonClick(main_, kReportButton);
    std::wstring text;
    ASSERT_TRUE(WaitUntil([&] {
        text = ReportText(window);
        return text.find(planted) == std::wstring::npos && text.find(L"installation:") != std::wstring::npos;
    }, kReportTimeout)) << "the planted line stayed";
    EXPECT_TRUE(WaitUntil([&] { return ::GetForegroundWindow() == window; }))
        << "the Diagnostics window was not brought forward";
    EXPECT_EQ(text.rfind(L"Orvane Software system report on ", 0), 0u);
    // One report: each heading once.
    for (const wchar_t* heading : {L"\r\nProgram:\r\n", L"\r\nNetwork:\r\n", L"\r\nOrvane Software installation:\r\n"}) {
        const std::size_t first = text.find(heading);
        EXPECT_NE(first, std::wstring::npos) << testing::PrintToString(std::wstring(heading));
        EXPECT_EQ(text.find(heading, first + 1), std::wstring::npos) << testing::PrintToString(std::wstring(heading));
    }
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
    ASSERT_TRUE(WaitUntil([&] { return ::IsWindowVisible(window) != FALSE; }, kReportTimeout));
    // Esc goes to the focused control: wait until the focus has moved into
    // the report window, or the key would reach the main window's button.
    ASSERT_TRUE(WaitUntil([&] { return ::IsChild(window, FocusOf(window)) != FALSE; }));
    PostKey(FocusOf(window), VK_ESCAPE);
    EXPECT_TRUE(program_.WaitForClosed(window));
    EXPECT_TRUE(::IsWindow(window));

    PostButtonClick(main_, kReportButton);
    ASSERT_TRUE(WaitUntil([&] { return ::IsWindowVisible(window) != FALSE; }, kReportTimeout));
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
    ::DeleteFileW(path.c_str());
    const std::string expected = ExpectedFileBytes(ReportText(window));
    ASSERT_NE(SaveAs(window, path), nullptr);
    EXPECT_TRUE(WaitUntil([&] { return ReadBytes(path) == expected; }))
        << ReadBytes(path).size() << " bytes instead of " << expected.size();
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
    HWND box = ConfirmReplacementAndWaitForBox(program_, L"Unable to open file!");
    ASSERT_NE(box, nullptr);
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
        HWND window = RequestReport(running);
        ASSERT_NE(window, nullptr);
        std::wstring text;
        ASSERT_TRUE(WaitUntil([&] {
            text = WindowText(::GetDlgItem(window, kReportView));
            return text.find(L"* Shared Batch directory") != std::wstring::npos;
        }, kReportTimeout));
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

namespace {

// The folder that a common file dialog of another process shows. The answer
// is written into the dialog's own process, where the message's pointer is
// valid.
std::wstring FolderOfFileDialog(DWORD pid, HWND dialog) {
    constexpr std::size_t kCapacity = 1024;
    w32::ScopedHandle process(::OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ, FALSE, pid));
    if (!process) return L"(process not opened)";
    void* remote = ::VirtualAllocEx(process.Get(), nullptr, kCapacity * sizeof(wchar_t), MEM_COMMIT, PAGE_READWRITE);
    if (!remote) return L"(no memory in the process)";
    const LRESULT length = ::SendMessageW(dialog, CDM_GETFOLDERPATH, kCapacity, reinterpret_cast<LPARAM>(remote));
    std::wstring path(kCapacity, L'\0');
    SIZE_T read = 0;
    ::ReadProcessMemory(process.Get(), remote, path.data(), kCapacity * sizeof(wchar_t), &read);
    ::VirtualFreeEx(process.Get(), remote, 0, MEM_RELEASE);
    if (length <= 0) return L"(no folder: " + std::to_wstring(length) + L")";
    path.resize(std::wcslen(path.c_str()));
    return path;
}

}  // namespace

// Run as a program of another name, the test has a settings key of its own,
// where no folder was ever remembered.
TEST(SaveProposal, WithNoRememberedFolderIsReportTxtInTheRootOfC) {
    const std::wstring folder = TempFolder(L"orvane-proposal");
    const std::wstring program = folder + L"\\OrvaneSaveProposal.exe";
    const std::wstring settingsKey = L"Software\\Orvane Software V9\\OrvaneSaveProposal";
    ::RegDeleteTreeW(HKEY_CURRENT_USER, settingsKey.c_str());
    ASSERT_TRUE(::CopyFileW(ProgramPath().c_str(), program.c_str(), FALSE));
    {
        LaunchOptions options;
        options.program = program;
        Program running(options);
        HWND window = RequestReport(running);
        ASSERT_NE(window, nullptr);
        PostButtonClick(window, kSaveButton);
        HWND dialog = running.WaitForWindow([](HWND hwnd) { return FileNameField(hwnd) != nullptr; });
        ASSERT_NE(dialog, nullptr);
        // C:\report.txt: the name in its box, in the root of C:.
        EXPECT_EQ(WindowText(FileNameField(dialog)), L"report.txt");
        EXPECT_EQ(FolderOfFileDialog(running.Pid(), dialog), L"C:\\");

        // Cancelled: nothing is remembered.
        ::PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
        EXPECT_TRUE(running.WaitForClosed(dialog));
        PostSysCommand(running.WaitForMainWindow(), SC_CLOSE);
        DWORD code = 1234;
        EXPECT_TRUE(running.WaitForExit(code));
    }
    wchar_t remembered[512] = {};
    DWORD size = sizeof(remembered);
    EXPECT_NE(::RegGetValueW(HKEY_CURRENT_USER, (settingsKey + L"\\Folder").c_str(), L"report", RRF_RT_REG_SZ,
                             nullptr, remembered, &size),
              ERROR_SUCCESS)
        << remembered;
    ::RegDeleteTreeW(HKEY_CURRENT_USER, settingsKey.c_str());
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::path(folder), ignored);
}

namespace {

// The System report command as the button sends it; returns once the report
// is made (the program makes it inside the command).
bool SendReportCommand(HWND main) {
    DWORD_PTR ignored = 0;
    return ::SendMessageTimeoutW(main, WM_COMMAND, MAKEWPARAM(kReportButton, BN_CLICKED), 0, SMTO_NORMAL,
                                 static_cast<UINT>(std::chrono::milliseconds(kReportTimeout).count()),
                                 &ignored) != 0;
}

std::vector<std::wstring> Lines(const std::wstring& text) {
    std::vector<std::wstring> lines;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find(L"\r\n", start)) != std::wstring::npos; start = end + 2)
        lines.push_back(text.substr(start, end - start));
    lines.push_back(text.substr(start));
    return lines;
}

// The entry lines of the program's own directory, sorted, without its "."
// and ".." (their times belong to the directories, not to the entries).
std::vector<std::wstring> CurrentDirectoryEntries(const std::wstring& text) {
    std::vector<std::wstring> entries;
    bool inside = false;
    for (const std::wstring& line : Lines(text)) {
        if (line.rfind(L"* ", 0) == 0) inside = line.rfind(L"* Current directory (", 0) == 0;
        else if (inside && line.find(L"\t.\t") == std::wstring::npos && line.find(L"\t..\t") == std::wstring::npos)
            entries.push_back(line);
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

std::size_t Occurrences(const std::wstring& text, const std::wstring& what) {
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != std::wstring::npos; at = text.find(what, at + 1)) ++count;
    return count;
}

}  // namespace

// Asking again while a report of thousands of entries is on screen and
// scrolled to its end: the view then holds the new report alone, shown from
// its first line, and Save writes exactly that.
TEST(LargeReport, RefreshOfTheShownWindowLeavesTheNewReportFromItsStart) {
    DeleteSettings();
    const std::wstring folder = TempFolder(L"orvane-refresh");
    const std::wstring program = folder + L"\\OrvaneDiagnostics.exe";
    ASSERT_TRUE(::CopyFileW(ProgramPath().c_str(), program.c_str(), FALSE));
    auto createFile = [&](const std::wstring& name) {
        return w32::ScopedHandle(
            ::CreateFileW((folder + L"\\" + name).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    };
    for (int i = 0; i < 2000; ++i) ASSERT_TRUE(createFile(L"entry-" + std::to_wstring(10000 + i) + L".dat"));
    {
        LaunchOptions options;
        options.program = program;
        Program running(options);
        HWND main = running.WaitForMainWindow();
        ASSERT_NE(main, nullptr);
        ASSERT_TRUE(SendReportCommand(main));
        HWND window = running.WaitForWindow(IsReportWindow);
        ASSERT_NE(window, nullptr);
        HWND view = ::GetDlgItem(window, kReportView);
        const std::wstring before = WindowText(view);
        ASSERT_EQ(before.rfind(L"Orvane Software system report on ", 0), 0u);
        EXPECT_EQ(::SendMessageW(view, EM_GETFIRSTVISIBLELINE, 0, 0), 0);

        // The user reads on to the end; meanwhile a file appears.
        ::SendMessageW(view, WM_VSCROLL, SB_BOTTOM, 0);
        ASSERT_GT(::SendMessageW(view, EM_GETFIRSTVISIBLELINE, 0, 0), 1000);
        ASSERT_TRUE(createFile(L"entry-added.dat"));

        ASSERT_TRUE(SendReportCommand(main));
        EXPECT_TRUE(::IsWindowVisible(window));
        // A full view is replaced by a fresh one in the same window (emptying
        // it would cost far more): look the view up again.
        EXPECT_EQ(running.WaitForWindow(IsReportWindow), window);
        view = ::GetDlgItem(window, kReportView);
        ASSERT_NE(view, nullptr);
        const std::wstring after = WindowText(view);
        EXPECT_EQ(::SendMessageW(view, EM_GETFIRSTVISIBLELINE, 0, 0), 0);
        EXPECT_EQ(after.rfind(L"Orvane Software system report on ", 0), 0u);
        for (const wchar_t* once : {L"Orvane Software system report on ", L"\r\nProgram:\r\n", L"\r\nNetwork:\r\n",
                                    L"\r\nOrvane Software installation:\r\n", L"* Current directory (",
                                    L"\tentry-added.dat\t", L"\tentry-11999.dat\t"})
            EXPECT_EQ(Occurrences(after, once), 1u) << testing::PrintToString(std::wstring(once));
        // The same entries as before, the new file's line added, and nothing else.
        std::vector<std::wstring> added = CurrentDirectoryEntries(after);
        ASSERT_EQ(added.size(), CurrentDirectoryEntries(before).size() + 1);
        const auto isAddedLine = [](const std::wstring& line) {
            return line.find(L"\tentry-added.dat\t") != std::wstring::npos;
        };
        added.erase(std::remove_if(added.begin(), added.end(), isAddedLine), added.end());
        EXPECT_EQ(added, CurrentDirectoryEntries(before));

        const std::wstring saved = folder + L"\\refreshed-report.txt";
        PostButtonClick(window, kSaveButton);
        ASSERT_NE(CompleteSaveAs(running, saved), nullptr);
        const std::string expected = ExpectedFileBytes(after);
        EXPECT_TRUE(WaitUntil([&] { return ReadBytes(saved) == expected; }));
    }
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::path(folder), ignored);
    DeleteSettings();
}

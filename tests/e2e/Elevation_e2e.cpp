// Elevation as the user sees it: the title's mark, and the relaunch as
// administrator with its question and its failure message.
#include <gtest/gtest.h>

#include <memory>

#include "e2e/Driver.h"
#include "support/Wine.h"
#include "w32/Scoped.h"

using namespace e2e;

namespace {

LaunchOptions English() {
    return LaunchOptions{};
}

HWND MainWindowOf(DWORD pid) {
    for (HWND hwnd : TopLevelWindows(pid))
        if (::GetDlgItem(hwnd, 1013)) return hwnd;
    return nullptr;
}

class Elevation : public testing::Test {
protected:
    void SetUp() override {
        SKIP_IF_FRENCH_USER();
        SetUpForAnyLanguage();
    }
    void SetUpForAnyLanguage() {
        SKIP_UNLESS_WINE("on Windows the relaunch asks for consent on the secure desktop, which no test can answer");
        DeleteSettings();
    }
    void TearDown() override {
        for (DWORD pid : relaunched_) TerminatePid(pid);
        failing_.reset();
        if (!movedCopy_.empty()) {
            ::DeleteFileW(movedCopy_.c_str());
            ::RemoveDirectoryW(copyFolder_.c_str());
        }
        DeleteSettings();
    }

    // The elevated instance that the relaunch started.
    DWORD WaitForRelaunched(const Program& program) {
        std::vector<DWORD> children;
        WaitUntil([&] {
            children = ChildProcesses(program.Pid(), L"OrvaneDiagnostics.exe");
            return !children.empty();
        });
        relaunched_.insert(relaunched_.end(), children.begin(), children.end());
        return children.size() == 1 ? children[0] : 0;
    }

    // Starts a copy of the program, renames the copy and asks for the
    // relaunch: a program file that is gone cannot be started again.
    // Returns the message box that follows.
    HWND RelaunchThatCannotStart() {
        copyFolder_ = TempFolder(L"orvane-relaunch");
        const std::wstring copy = copyFolder_ + L"\\OrvaneDiagnostics.exe";
        if (!::CopyFileW(ProgramPath().c_str(), copy.c_str(), FALSE)) return nullptr;
        LaunchOptions options = English();
        options.program = copy;
        failing_ = std::make_unique<Program>(options);
        main_ = failing_->WaitForMainWindow();
        if (!main_) return nullptr;
        // A running program's file may be renamed, not deleted.
        movedCopy_ = copy + L".moved";
        if (!::MoveFileW(copy.c_str(), movedCopy_.c_str())) return nullptr;
        PostSysCommand(main_, 23);
        return failing_->WaitForMessageBox();
    }

    // Asks the running `program` for the relaunch; returns the question that
    // follows once the elevated instance runs, or null.
    HWND RelaunchQuestion(Program& program, DWORD& relaunched) {
        main_ = program.WaitForMainWindow();
        if (!main_) return nullptr;
        PostSysCommand(main_, 23);
        HWND box = program.WaitForMessageBox();
        relaunched = box ? WaitForRelaunched(program) : 0;
        return relaunched ? box : nullptr;
    }

    std::vector<DWORD> relaunched_;
    std::unique_ptr<Program> failing_;
    HWND main_ = nullptr;
    std::wstring copyFolder_;
    std::wstring movedCopy_;
};

// Runs under LC_ALL=fr_FR.UTF-8 (see tests/CMakeLists.txt); any other user
// locale is another machine, not a failure.
class FrenchUserElevation : public Elevation {
protected:
    void SetUp() override {
        SKIP_UNLESS_FRENCH_USER();
        SetUpForAnyLanguage();
    }
};

// The box asks with Yes and No whatever words the system gives them.
std::vector<int> ButtonIdsOf(HWND box) {
    std::vector<int> ids;
    for (HWND child = ::GetWindow(box, GW_CHILD); child; child = ::GetWindow(child, GW_HWNDNEXT))
        if (WindowClass(child) == L"Button" && ::IsWindowVisible(child)) ids.push_back(::GetDlgCtrlID(child));
    return ids;
}

}  // namespace

TEST_F(Elevation, LimitedTokenGivesNoMark) {
    LaunchOptions options = English();
    options.limitedToken = true;
    Program program(options);
    ASSERT_TRUE(program.Started());
    HWND main = program.WaitForMainWindow();
    ASSERT_NE(main, nullptr);
    EXPECT_EQ(WindowText(main), L"Orvane Diagnostics 9.3.1.1042 (64 bits)");
}

TEST_F(Elevation, RelaunchAnsweredNoKeepsBothInstances) {
    Program program(English());
    HWND main = program.WaitForMainWindow();
    ASSERT_NE(main, nullptr);
    PostSysCommand(main, 23);
    HWND box = program.WaitForMessageBox();
    ASSERT_NE(box, nullptr);
    const MessageBoxContent content = ReadMessageBox(box);
    EXPECT_EQ(content.caption, L"OrvaneDiagnostics");
    EXPECT_EQ(content.text, L"Close non Administrator instance?");
    EXPECT_EQ(content.buttons, (std::vector<std::wstring>{L"Yes", L"No"}));
    EXPECT_EQ(ReadMessageBoxIcon(box), IconKind::kWarning);
    const DWORD relaunched = WaitForRelaunched(program);
    ASSERT_NE(relaunched, 0u);

    ASSERT_TRUE(PressMessageBoxButton(box, L"No"));
    EXPECT_TRUE(program.WaitForClosed(box));
    EXPECT_TRUE(program.IsRunning());
    EXPECT_TRUE(::IsWindowVisible(main));
    EXPECT_TRUE(WaitUntil([&] {
        for (HWND hwnd : TopLevelWindows(relaunched))
            if (::GetDlgItem(hwnd, 1013)) return true;
        return false;
    })) << "the relaunched instance shows its main window";
}

TEST_F(Elevation, RelaunchAnsweredYesLeavesTheElevatedInstanceAlone) {
    Program program(English());
    DWORD relaunched = 0;
    HWND box = RelaunchQuestion(program, relaunched);
    ASSERT_NE(box, nullptr);
    // Held from here on: the process stays known however it ends.
    w32::ScopedHandle elevated(::OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, relaunched));
    ASSERT_TRUE(elevated);
    ASSERT_TRUE(PressMessageBoxButton(box, L"Yes"));
    DWORD code = 1234;
    ASSERT_TRUE(program.WaitForExit(code));
    EXPECT_EQ(code, 0u);
    std::wstring state;
    EXPECT_FALSE(ReadSetting(L"WindowState", L"OrvaneDiagnostics", state)) << state;

    // The elevated instance runs on, with its own main window.
    EXPECT_EQ(::WaitForSingleObject(elevated.Get(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
    HWND elevatedMain = nullptr;
    ASSERT_TRUE(WaitUntil([&] { return (elevatedMain = MainWindowOf(relaunched)) != nullptr; }));
    EXPECT_EQ(WindowText(elevatedMain), L"Orvane Diagnostics [Administrator] 9.3.1.1042 (64 bits)");

    // It closes as any instance does.
    PostSysCommand(elevatedMain, SC_CLOSE);
    ASSERT_EQ(::WaitForSingleObject(elevated.Get(), 30000), static_cast<DWORD>(WAIT_OBJECT_0));
    DWORD elevatedCode = 1234;
    ASSERT_TRUE(::GetExitCodeProcess(elevated.Get(), &elevatedCode));
    EXPECT_EQ(elevatedCode, 0u);
    relaunched_.clear();
}

TEST_F(Elevation, RelaunchThatCannotStartShowsTheFailure) {
    HWND box = RelaunchThatCannotStart();
    ASSERT_NE(box, nullptr);
    const MessageBoxContent content = ReadMessageBox(box);
    EXPECT_EQ(content.caption, L"OrvaneDiagnostics");
    EXPECT_EQ(content.text, L"Launch in Administrator mode has failed!");
    EXPECT_EQ(content.buttons, std::vector<std::wstring>{L"OK"});
    EXPECT_EQ(ReadMessageBoxIcon(box), IconKind::kStop);
    ASSERT_TRUE(PressMessageBoxButton(box, L"OK"));
    EXPECT_TRUE(failing_->WaitForClosed(box));
    EXPECT_TRUE(failing_->IsRunning());
    EXPECT_EQ(WindowText(main_), L"Orvane Diagnostics [Administrator] 9.3.1.1042 (64 bits)");
    PostSysCommand(main_, SC_CLOSE);
    DWORD code = 0;
    failing_->WaitForExit(code);
}

TEST_F(FrenchUserElevation, RelaunchQuestionInFrench) {
    Program program{LaunchOptions{}};
    DWORD relaunched = 0;
    HWND box = RelaunchQuestion(program, relaunched);
    ASSERT_NE(box, nullptr);
    const MessageBoxContent content = ReadMessageBox(box);
    EXPECT_EQ(content.caption, L"OrvaneDiagnostics");
    EXPECT_EQ(content.text, L"Fermer l'instance non Administrateur ?");
    EXPECT_EQ(ButtonIdsOf(box), (std::vector<int>{IDYES, IDNO}));
    EXPECT_EQ(ReadMessageBoxIcon(box), IconKind::kWarning);
    // No: both instances go on.
    ::PostMessageW(box, WM_COMMAND, MAKEWPARAM(IDNO, BN_CLICKED), reinterpret_cast<LPARAM>(::GetDlgItem(box, IDNO)));
    EXPECT_TRUE(program.WaitForClosed(box));
    EXPECT_TRUE(program.IsRunning());
    EXPECT_EQ(WindowText(main_), L"Diagnostics Orvane [Administrateur] 9.3.1.1042 (64 bits)");
}

TEST_F(FrenchUserElevation, RelaunchFailureInFrench) {
    HWND box = RelaunchThatCannotStart();
    ASSERT_NE(box, nullptr);
    const MessageBoxContent content = ReadMessageBox(box);
    EXPECT_EQ(content.caption, L"OrvaneDiagnostics");
    EXPECT_EQ(content.text, L"Le lancement en mode Administrateur a \u00e9chou\u00e9 !");
    EXPECT_EQ(ButtonIdsOf(box), std::vector<int>{IDOK});
    EXPECT_EQ(ReadMessageBoxIcon(box), IconKind::kStop);
    ::PostMessageW(box, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), reinterpret_cast<LPARAM>(::GetDlgItem(box, IDOK)));
    EXPECT_TRUE(failing_->WaitForClosed(box));
    EXPECT_TRUE(failing_->IsRunning());
}

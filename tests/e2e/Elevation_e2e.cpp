// Elevation as the user sees it: the title's mark, and the relaunch as
// administrator with its question and its failure message.
#include <gtest/gtest.h>

#include "e2e/Driver.h"
#include "support/Wine.h"

using namespace e2e;

namespace {

LaunchOptions English() {
    return LaunchOptions{};
}

class Elevation : public testing::Test {
protected:
    void SetUp() override {
        SKIP_UNLESS_WINE("on Windows the relaunch asks for consent on the secure desktop, which no test can answer");
        DeleteSettings();
    }
    void TearDown() override {
        for (DWORD pid : relaunched_) TerminatePid(pid);
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

    std::vector<DWORD> relaunched_;
};

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

TEST_F(Elevation, RelaunchAnsweredYesEndsTheOldInstanceWithoutSavingItsState) {
    Program program(English());
    HWND main = program.WaitForMainWindow();
    ASSERT_NE(main, nullptr);
    PostSysCommand(main, 23);
    HWND box = program.WaitForMessageBox();
    ASSERT_NE(box, nullptr);
    ASSERT_NE(WaitForRelaunched(program), 0u);
    ASSERT_TRUE(PressMessageBoxButton(box, L"Yes"));
    DWORD code = 1234;
    ASSERT_TRUE(program.WaitForExit(code));
    EXPECT_EQ(code, 0u);
    std::wstring state;
    EXPECT_FALSE(ReadSetting(L"WindowState", L"OrvaneDiagnostics", state)) << state;
}

TEST_F(Elevation, RelaunchThatCannotStartShowsTheFailure) {
    // A copy of the program that is deleted while it runs cannot be started again.
    const std::wstring folder = TempFolder(L"orvane-relaunch");
    const std::wstring copy = folder + L"\\OrvaneDiagnostics.exe";
    ASSERT_TRUE(::CopyFileW(ProgramPath().c_str(), copy.c_str(), FALSE));

    LaunchOptions options = English();
    options.program = copy;
    Program program(options);
    HWND main = program.WaitForMainWindow();
    ASSERT_NE(main, nullptr);
    // A running program's file may be renamed, not deleted.
    ASSERT_TRUE(::MoveFileW(copy.c_str(), (copy + L".moved").c_str()));
    PostSysCommand(main, 23);
    HWND box = program.WaitForMessageBox();
    ASSERT_NE(box, nullptr);
    const MessageBoxContent content = ReadMessageBox(box);
    EXPECT_EQ(content.text, L"Launch in Administrator mode has failed!");
    EXPECT_EQ(content.buttons, std::vector<std::wstring>{L"OK"});
    EXPECT_EQ(ReadMessageBoxIcon(box), IconKind::kStop);
    ASSERT_TRUE(PressMessageBoxButton(box, L"OK"));
    EXPECT_TRUE(program.WaitForClosed(box));
    EXPECT_TRUE(program.IsRunning());
    EXPECT_EQ(WindowText(main), L"Orvane Diagnostics [Administrator] 9.3.1.1042 (64 bits)");
    PostSysCommand(main, SC_CLOSE);
    DWORD code = 0;
    program.WaitForExit(code);
    ::DeleteFileW((copy + L".moved").c_str());
    ::RemoveDirectoryW(folder.c_str());
}

// GDI+ is started only on screens that are not at 96 DPI.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <cwctype>
#include <thread>

#include "e2e/Driver.h"
#include "support/Wine.h"
#include "w32/Scoped.h"

using namespace e2e;

namespace {

// The name a loaded image gives itself in its export directory
// ("gdiplus.dll"), read from the debugged process; empty without one.
std::wstring ExportNameOf(HANDLE process, const BYTE* base) {
    const auto read = [&](const void* at, void* into, SIZE_T size) {
        SIZE_T done = 0;
        return ::ReadProcessMemory(process, at, into, size, &done) && done == size;
    };
    IMAGE_DOS_HEADER dos{};
    IMAGE_NT_HEADERS64 nt{};
    if (!read(base, &dos, sizeof(dos)) || !read(base + dos.e_lfanew, &nt, sizeof(nt))) return {};
    const IMAGE_DATA_DIRECTORY& exports = nt.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    IMAGE_EXPORT_DIRECTORY directory{};
    if (exports.VirtualAddress == 0 || !read(base + exports.VirtualAddress, &directory, sizeof(directory))) return {};
    char name[64] = {};
    if (!read(base + directory.Name, name, sizeof(name) - 1)) return {};
    std::wstring wide(name, name + std::strlen(name));
    std::transform(wide.begin(), wide.end(), wide.begin(), [](wchar_t c) { return std::towlower(c); });
    return wide;
}

// The program run under a debugger of the test's own, which is told of
// every module the process loads from its first instruction to its end.
class ObservedProgram {
public:
    ObservedProgram() : debugger_([this] { Debug(); }) {}
    ~ObservedProgram() {
        if (pid_) TerminatePid(pid_);
        debugger_.join();
    }

    DWORD WaitForPid() {
        WaitUntil([&] { return pid_ != 0 || finished_; });
        return pid_;
    }
    // Waits for the process's end; false on time-out.
    bool WaitForEnd(std::chrono::milliseconds timeout = kDefaultTimeout) {
        return WaitUntil([&] { return finished_.load(); }, timeout);
    }
    DWORD ExitCode() const { return exitCode_; }
    // Every module loaded, in lower case; complete once the process ended.
    const std::vector<std::wstring>& LoadedModules() const { return modules_; }

private:
    void Debug() {
        std::wstring commandLine = L"\"" + ProgramPath() + L"\"";
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION info{};
        if (!::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, DEBUG_ONLY_THIS_PROCESS, nullptr,
                              nullptr, &startup, &info)) {
            finished_ = true;
            return;
        }
        w32::ScopedHandle process(info.hProcess), thread(info.hThread);
        pid_ = info.dwProcessId;
        const auto deadline = std::chrono::steady_clock::now() + 120s;
        bool sawFirstBreakpoint = false;
        while (std::chrono::steady_clock::now() < deadline) {
            DEBUG_EVENT event{};
            if (!::WaitForDebugEvent(&event, 100)) continue;
            DWORD continueStatus = DBG_CONTINUE;
            switch (event.dwDebugEventCode) {
            case CREATE_PROCESS_DEBUG_EVENT:
                if (event.u.CreateProcessInfo.hFile) ::CloseHandle(event.u.CreateProcessInfo.hFile);
                break;
            case LOAD_DLL_DEBUG_EVENT:
                modules_.push_back(ExportNameOf(process.Get(), static_cast<const BYTE*>(event.u.LoadDll.lpBaseOfDll)));
                if (event.u.LoadDll.hFile) ::CloseHandle(event.u.LoadDll.hFile);
                break;
            case EXCEPTION_DEBUG_EVENT:
                // The loader's breakpoint is ours to pass; every other
                // exception goes back to the program's own handling.
                if (!sawFirstBreakpoint && event.u.Exception.ExceptionRecord.ExceptionCode == EXCEPTION_BREAKPOINT)
                    sawFirstBreakpoint = true;
                else
                    continueStatus = DBG_EXCEPTION_NOT_HANDLED;
                break;
            case EXIT_PROCESS_DEBUG_EVENT:
                exitCode_ = event.u.ExitProcess.dwExitCode;
                ::ContinueDebugEvent(event.dwProcessId, event.dwThreadId, DBG_CONTINUE);
                pid_ = 0;
                finished_ = true;
                return;
            default:
                break;
            }
            ::ContinueDebugEvent(event.dwProcessId, event.dwThreadId, continueStatus);
        }
        ::TerminateProcess(process.Get(), 97);
        finished_ = true;
    }

    std::atomic<DWORD> pid_{0};
    std::atomic<bool> finished_{false};
    DWORD exitCode_ = 1234;
    std::vector<std::wstring> modules_;
    std::thread debugger_;
};

constexpr wchar_t kDesktopKey[] = L"Control Panel\\Desktop";

class ScreenDpi : public testing::Test {
protected:
    void SetUp() override { SKIP_UNLESS_WINE("Windows reads the screen's DPI from LogPixels only at the next sign-in"); }
    // Only Wine's throwaway prefix gets its LogPixels set, and removed again.
    void TearDown() override {
        if (testsupport::RunningUnderWine()) ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kDesktopKey, L"LogPixels");
    }

    static void SetDpi(DWORD dpi) {
        ASSERT_EQ(::RegSetKeyValueW(HKEY_CURRENT_USER, kDesktopKey, L"LogPixels", REG_DWORD, &dpi, sizeof(dpi)),
                  ERROR_SUCCESS);
    }

    static bool GdiplusLoadedInMainWindow() {
        Program program;
        HWND main = program.WaitForMainWindow();
        EXPECT_NE(main, nullptr);
        return IsModuleLoaded(program.Pid(), L"gdiplus.dll");
    }
};

// Runs the program under the observer until its main window closes by its
// close box; the modules it loaded, in lower case.
std::vector<std::wstring> ModulesOfOneRun() {
    ObservedProgram program;
    const DWORD pid = program.WaitForPid();
    EXPECT_NE(pid, 0u);
    HWND main = nullptr;
    EXPECT_TRUE(WaitUntil([&] {
        for (HWND hwnd : TopLevelWindows(pid))
            if (::GetDlgItem(hwnd, 1013)) main = hwnd;
        return main != nullptr;
    }));
    PostSysCommand(main, SC_CLOSE);
    EXPECT_TRUE(program.WaitForEnd());
    EXPECT_EQ(program.ExitCode(), 0u);
    return program.LoadedModules();
}

bool Holds(const std::vector<std::wstring>& modules, const wchar_t* name) {
    return std::find(modules.begin(), modules.end(), name) != modules.end();
}

}  // namespace

// Without gdiplus.dll in the process, nothing can start or stop GDI+: the
// debugger sees every module that the program loads, up to its exit.
TEST_F(ScreenDpi, At96DpiGdiplusIsNeverStartedNorShutDown) {
    SetDpi(96);
    const std::vector<std::wstring> modules = ModulesOfOneRun();
    // The observer saw the program's own windowing modules load...
    EXPECT_TRUE(Holds(modules, L"user32.dll"));
    EXPECT_TRUE(Holds(modules, L"comctl32.dll"));
    // ...and never GDI+'s.
    EXPECT_FALSE(Holds(modules, L"gdiplus.dll"));
}

TEST_F(ScreenDpi, At120DpiGdiplusIsStarted) {
    SetDpi(120);
    EXPECT_TRUE(GdiplusLoadedInMainWindow());
    // So the observer of the 96 DPI run would have seen it.
    EXPECT_TRUE(Holds(ModulesOfOneRun(), L"gdiplus.dll"));
}

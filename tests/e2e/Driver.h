// Drives the real program as a user would: starts it, finds its windows by
// process id, reads their texts and presses their buttons. Every wait polls
// with a deadline.
#pragma once

#include <windows.h>

#include <chrono>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace e2e {

using namespace std::chrono_literals;
// Generous: a wait only lasts this long when something is wrong, and a
// loaded machine must not turn a slow start into a failure.
inline constexpr auto kDefaultTimeout = 60s;
// A whole report: the program answers nothing while it makes one.
inline constexpr auto kReportTimeout = 120s;

// Polls `condition` until it is true or the deadline passes.
bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout = kDefaultTimeout);

std::wstring ProgramPath();           // OrvaneDiagnostics.exe next to the test
std::wstring WindowText(HWND hwnd);   // WM_GETTEXT, across processes
std::wstring WindowClass(HWND hwnd);
std::vector<HWND> TopLevelWindows(DWORD pid);  // visible ones

struct LaunchOptions {
    std::wstring arguments;  // what follows the program's path
    std::vector<std::pair<std::wstring, std::wstring>> environment;  // added or replaced
    bool limitedToken = false;  // start without elevation (the linked token)
    std::wstring program;       // default: ProgramPath()
    std::wstring currentDirectory;  // default: the test's
    bool captureOutput = false;     // standard output and error into a pipe
};

class Program {
public:
    explicit Program(LaunchOptions options = {});
    ~Program();  // ends the process if it still runs
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    bool Started() const { return process_ != nullptr; }
    // Why the process could not be started (GetLastError), 0 when it was.
    DWORD StartError() const { return startError_; }
    DWORD Pid() const { return pid_; }
    HANDLE Process() const { return process_; }
    bool IsRunning() const;
    // Waits for the end; returns its exit code, or nullopt-like -1 on time-out.
    bool WaitForExit(DWORD& exitCode, std::chrono::milliseconds timeout = kDefaultTimeout);

    // The first visible top-level window of the process that matches.
    HWND WaitForWindow(const std::function<bool(HWND)>& match, std::chrono::milliseconds timeout = kDefaultTimeout);
    HWND WaitForMainWindow(std::chrono::milliseconds timeout = kDefaultTimeout);
    // What the program wrote to its standard output and error (captureOutput);
    // call after it ended.
    std::string CapturedOutput();
    HWND WaitForMessageBox(std::chrono::milliseconds timeout = kDefaultTimeout);
    // Waits until `hwnd` is gone or hidden.
    bool WaitForClosed(HWND hwnd, std::chrono::milliseconds timeout = kDefaultTimeout);

private:
    HANDLE process_ = nullptr;
    DWORD pid_ = 0;
    HANDLE outputRead_ = nullptr;
    void SayWhyNoWindow() const;
    DWORD startError_ = 0;
};

// A message box as the user sees it.
struct MessageBoxContent {
    std::wstring caption;
    std::wstring text;
    std::vector<std::wstring> buttons;  // in creation order, "&" removed
};
MessageBoxContent ReadMessageBox(HWND box);
// Presses the box's button with that caption ("OK", "Yes", "No").
bool PressMessageBoxButton(HWND box, const std::wstring& caption);

// What the icon of a message box shows, judged from its pixels on screen.
enum class IconKind { kNone, kStop, kInformation, kWarning, kQuestion };
IconKind ReadMessageBoxIcon(HWND box);

// Posted, not sent: a click that opens a modal window must not block us.
void PostButtonClick(HWND dialog, int controlId);
void PostSysCommand(HWND window, WPARAM command);
void PostKey(HWND window, UINT virtualKey);

// The focused control of the thread that owns `window`.
HWND FocusOf(HWND window);

// Processes whose parent is `parentPid` and whose image has that file name.
std::vector<DWORD> ChildProcesses(DWORD parentPid, const std::wstring& imageName);
bool IsModuleLoaded(DWORD pid, const std::wstring& moduleName);
void TerminatePid(DWORD pid);

// A new, empty folder of the test's own, named after `name`, under a folder
// that only this test process uses (removed when the process ends).
std::wstring TempFolder(const std::wstring& name);
// Every byte of a file; empty when it cannot be read.
std::string ReadBytes(const std::wstring& path);

// The file name box of a common file dialog; null for any other window.
HWND FileNameField(HWND dialog);
// Waits for the program's Save As dialog, types `path` into its file name
// box (leaves the proposal when `path` is empty) and presses Save. Returns
// the dialog, or null when none appeared.
HWND CompleteSaveAs(Program& program, const std::wstring& path);
// After a Save As onto an existing file: answers Yes to the file dialog's
// question, then waits for the program's box saying `text`. Null when
// either does not come.
HWND ConfirmReplacementAndWaitForBox(Program& program, const std::wstring& text);
// Waits for the program's end; false when a window of it showed meanwhile
// or it did not end within `timeout`.
bool RunWithoutWindow(Program& program, DWORD& status, std::chrono::milliseconds timeout = kReportTimeout);
// Runs the program as `options` say (its path and a report file's as
// arguments) to its end: true when it ended with status 0 within `timeout`
// and no window of it showed meanwhile.
bool TakeHeadlessReport(const LaunchOptions& options, std::chrono::milliseconds timeout = kReportTimeout);

// What reportcheck.exe, beside the test, ended with and wrote.
struct CheckerOutcome {
    DWORD status = 1234;
    std::string output;  // standard output and error
};
CheckerOutcome RunReportcheck(const std::wstring& arguments);

// Presses the main window's System report button and waits until the
// report window holds the whole report. Returns that window, or null.
HWND OpenWholeReport(Program& program);

// Registry helpers for the program's settings (HKCU).
inline constexpr wchar_t kSettingsKey[] = L"Software\\Orvane Software V9\\OrvaneDiagnostics";
void DeleteSettings();
void WriteSetting(const std::wstring& section, const std::wstring& entry, const std::wstring& value);
bool ReadSetting(const std::wstring& section, const std::wstring& entry, std::wstring& value);

}  // namespace e2e

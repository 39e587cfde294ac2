#include "e2e/Driver.h"

#include <psapi.h>
#include <tlhelp32.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <thread>

#include "support/TempDirectory.h"
#include "w32/Scoped.h"
#include "w32/Text.h"

namespace e2e {
namespace {

std::wstring BuildEnvironment(const std::vector<std::pair<std::wstring, std::wstring>>& overrides) {
    std::map<std::wstring, std::wstring> variables;
    wchar_t* block = ::GetEnvironmentStringsW();
    for (const wchar_t* p = block; p && *p; p += wcslen(p) + 1) {
        const std::wstring entry(p);
        const std::size_t equals = entry.find(L'=', 1);
        if (equals != std::wstring::npos) variables[entry.substr(0, equals)] = entry.substr(equals + 1);
    }
    ::FreeEnvironmentStringsW(block);
    for (const auto& [name, value] : overrides) variables[name] = value;
    std::wstring result;
    for (const auto& [name, value] : variables) result += name + L"=" + value + L'\0';
    result += L'\0';
    return result;
}

w32::ScopedHandle LinkedToken() {
    w32::ScopedHandle own;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, own.Put())) return {};
    TOKEN_LINKED_TOKEN linked{};
    DWORD size = 0;
    if (!::GetTokenInformation(own.Get(), TokenLinkedToken, &linked, sizeof(linked), &size)) return {};
    return w32::ScopedHandle(linked.LinkedToken);
}

std::wstring WithoutAmpersand(std::wstring text) {
    text.erase(std::remove(text.begin(), text.end(), L'&'), text.end());
    return text;
}

struct FindData {
    DWORD pid;
    std::vector<HWND> windows;
};

BOOL CALLBACK CollectWindow(HWND hwnd, LPARAM lParam) {
    auto* data = reinterpret_cast<FindData*>(lParam);
    DWORD pid = 0;
    ::GetWindowThreadProcessId(hwnd, &pid);
    if (pid == data->pid && ::IsWindowVisible(hwnd)) data->windows.push_back(hwnd);
    return TRUE;
}

std::vector<HWND> ChildWindows(HWND parent) {
    std::vector<HWND> children;
    for (HWND child = ::GetWindow(parent, GW_CHILD); child; child = ::GetWindow(child, GW_HWNDNEXT))
        children.push_back(child);
    return children;
}

// A program built beside the test program.
std::wstring BesideTheTest(const wchar_t* name) {
    const std::wstring path = w32::GetModulePath(nullptr);
    return path.substr(0, path.find_last_of(L"\\/") + 1) + name;
}

}  // namespace

bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        if (condition()) return true;
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(20ms);
    }
}

std::wstring ProgramPath() { return BesideTheTest(L"OrvaneDiagnostics.exe"); }

bool RunWithoutWindow(Program& program, DWORD& status, std::chrono::milliseconds timeout) {
    bool windowSeen = false;
    WaitUntil(
        [&] {
            if (!TopLevelWindows(program.Pid()).empty()) windowSeen = true;
            return !program.IsRunning();
        },
        timeout);
    return program.WaitForExit(status, 1s) && !windowSeen;
}

bool TakeHeadlessReport(const LaunchOptions& options, std::chrono::milliseconds timeout) {
    Program program(options);
    DWORD status = 1234;
    return RunWithoutWindow(program, status, timeout) && status == 0;
}

CheckerOutcome RunReportcheck(const std::wstring& arguments) {
    LaunchOptions options;
    options.program = BesideTheTest(L"reportcheck.exe");
    options.arguments = arguments;
    options.captureOutput = true;
    Program checker(options);
    CheckerOutcome outcome;
    if (!checker.WaitForExit(outcome.status)) outcome.output = "reportcheck did not end\n";
    outcome.output += checker.CapturedOutput();
    return outcome;
}

std::wstring WindowText(HWND hwnd) {
    // Not "abort if hung": a program busy drawing a long report for a few
    // seconds on a loaded machine answers all the same, only later.
    const UINT timeout = static_cast<UINT>(kDefaultTimeout.count() * 1000);
    DWORD_PTR length = 0;
    if (!::SendMessageTimeoutW(hwnd, WM_GETTEXTLENGTH, 0, 0, SMTO_NORMAL, timeout, &length)) return {};
    std::wstring text(length + 1, L'\0');
    DWORD_PTR copied = 0;
    ::SendMessageTimeoutW(hwnd, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()), SMTO_NORMAL, timeout,
                          &copied);
    text.resize(copied);
    return text;
}

std::wstring WindowClass(HWND hwnd) {
    wchar_t name[256] = {};
    ::GetClassNameW(hwnd, name, 256);
    return name;
}

std::vector<HWND> TopLevelWindows(DWORD pid) {
    FindData data{pid, {}};
    ::EnumWindows(CollectWindow, reinterpret_cast<LPARAM>(&data));
    return data.windows;
}

Program::Program(LaunchOptions options) {
    const std::wstring program = options.program.empty() ? ProgramPath() : options.program;
    std::wstring commandLine = L"\"" + program + L"\"";
    if (!options.arguments.empty()) commandLine += L" " + options.arguments;
    std::wstring environment = BuildEnvironment(options.environment);

    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    w32::ScopedHandle outputWrite;
    if (options.captureOutput) {
        SECURITY_ATTRIBUTES inheritable{sizeof(inheritable), nullptr, TRUE};
        ::CreatePipe(&outputRead_, outputWrite.Put(), &inheritable, 1 << 20);
        ::SetHandleInformation(outputRead_, HANDLE_FLAG_INHERIT, 0);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = outputWrite.Get();
        startup.hStdError = outputWrite.Get();
    }
    const BOOL inherit = options.captureOutput ? TRUE : FALSE;
    const wchar_t* directory = options.currentDirectory.empty() ? nullptr : options.currentDirectory.c_str();
    PROCESS_INFORMATION info{};
    BOOL created = FALSE;
    // Wine has been seen to refuse a start now and then among thousands: the
    // program is what is tested, not the platform's start, so a refused start
    // is tried again, and each refusal is said.
    for (int attempt = 1; attempt <= 3 && !created; ++attempt) {
        if (options.limitedToken) {
            w32::ScopedHandle token = LinkedToken();
            if (token)
                created = ::CreateProcessAsUserW(token.Get(), program.c_str(), commandLine.data(), nullptr, nullptr,
                                                 inherit, CREATE_UNICODE_ENVIRONMENT, environment.data(), directory,
                                                 &startup, &info);
        } else {
            created = ::CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, inherit,
                                       CREATE_UNICODE_ENVIRONMENT, environment.data(), directory, &startup, &info);
        }
        if (!created) {
            startError_ = ::GetLastError();
            std::fprintf(stderr, "start %d of the program refused: error %lu\n", attempt, startError_);
        }
    }
    if (!created) return;
    startError_ = 0;
    ::CloseHandle(info.hThread);
    process_ = info.hProcess;
    pid_ = info.dwProcessId;
}

std::string Program::CapturedOutput() {
    std::string output;
    if (!outputRead_) return output;
    char buffer[4096];
    DWORD available = 0;
    while (::PeekNamedPipe(outputRead_, nullptr, 0, nullptr, &available, nullptr) && available > 0) {
        DWORD read = 0;
        if (!::ReadFile(outputRead_, buffer, sizeof(buffer), &read, nullptr) || read == 0) break;
        output.append(buffer, read);
    }
    return output;
}

Program::~Program() {
    if (outputRead_) ::CloseHandle(outputRead_);
    if (!process_) return;
    if (IsRunning()) {
        ::TerminateProcess(process_, 99);
        ::WaitForSingleObject(process_, 10000);
    }
    ::CloseHandle(process_);
}

bool Program::IsRunning() const { return process_ && ::WaitForSingleObject(process_, 0) == WAIT_TIMEOUT; }

bool Program::WaitForExit(DWORD& exitCode, std::chrono::milliseconds timeout) {
    if (!process_ || ::WaitForSingleObject(process_, static_cast<DWORD>(timeout.count())) != WAIT_OBJECT_0)
        return false;
    return ::GetExitCodeProcess(process_, &exitCode) != FALSE;
}

HWND Program::WaitForWindow(const std::function<bool(HWND)>& match, std::chrono::milliseconds timeout) {
    HWND found = nullptr;
    WaitUntil(
        [&] {
            for (HWND hwnd : TopLevelWindows(pid_))
                if (match(hwnd)) {
                    found = hwnd;
                    return true;
                }
            return !IsRunning();
        },
        timeout);
    if (!found) SayWhyNoWindow();
    return found;
}

// A wait that ends without its window says whether the program ever ran and
// how it ended, so that a failure names its cause.
void Program::SayWhyNoWindow() const {
    if (!process_) {
        std::fprintf(stderr, "no window: the program did not start (error %lu)\n", startError_);
        return;
    }
    DWORD exitCode = 0;
    if (!IsRunning() && ::GetExitCodeProcess(process_, &exitCode))
        std::fprintf(stderr, "no window: the program ended with status 0x%lx before showing it\n", exitCode);
}

HWND Program::WaitForMainWindow(std::chrono::milliseconds timeout) {
    return WaitForWindow([](HWND hwnd) { return ::GetDlgItem(hwnd, 1013) != nullptr; }, timeout);
}

HWND Program::WaitForMessageBox(std::chrono::milliseconds timeout) {
    return WaitForWindow(
        [](HWND hwnd) {
            if (WindowClass(hwnd) != L"#32770") return false;
            // A message box holds buttons and statics (its text and icon), nothing else.
            bool hasButton = false;
            for (HWND child : ChildWindows(hwnd)) {
                const std::wstring cls = WindowClass(child);
                if (cls == L"Button")
                    hasButton = true;
                else if (cls != L"Static")
                    return false;
            }
            return hasButton && !::GetDlgItem(hwnd, 1101) && !::GetDlgItem(hwnd, 1013);  // not About, not main
        },
        timeout);
}

bool Program::WaitForClosed(HWND hwnd, std::chrono::milliseconds timeout) {
    return WaitUntil([&] { return !::IsWindow(hwnd) || !::IsWindowVisible(hwnd); }, timeout);
}

MessageBoxContent ReadMessageBox(HWND box) {
    MessageBoxContent content;
    content.caption = WindowText(box);
    for (HWND child : ChildWindows(box)) {
        const std::wstring cls = WindowClass(child);
        if (cls == L"Button") {
            if (::IsWindowVisible(child)) content.buttons.push_back(WithoutAmpersand(WindowText(child)));
        } else if (cls == L"Static") {
            const std::wstring text = WindowText(child);
            if (!text.empty()) content.text = text;
        }
    }
    return content;
}

bool PressMessageBoxButton(HWND box, const std::wstring& caption) {
    for (HWND child : ChildWindows(box)) {
        if (WindowClass(child) == L"Button" && WithoutAmpersand(WindowText(child)) == caption) {
            ::PostMessageW(box, WM_COMMAND, MAKEWPARAM(::GetDlgCtrlID(child), BN_CLICKED),
                           reinterpret_cast<LPARAM>(child));
            return true;
        }
    }
    return false;
}

IconKind ReadMessageBoxIcon(HWND box) {
    HWND icon = nullptr;
    for (HWND child : ChildWindows(box))
        if (WindowClass(child) == L"Static" && (::GetWindowLongW(child, GWL_STYLE) & SS_TYPEMASK) == SS_ICON &&
            ::IsWindowVisible(child))
            icon = child;
    if (!icon) return IconKind::kNone;

    IconKind kind = IconKind::kNone;
    WaitUntil(
        [&] {
            RECT r{};
            ::GetWindowRect(icon, &r);
            const int w = r.right - r.left, h = r.bottom - r.top;
            if (w <= 0 || h <= 0) return false;
            w32::ScopedWindowDC screen(nullptr);
            int red = 0, blue = 0, yellow = 0;
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) {
                    const COLORREF c = ::GetPixel(screen.Get(), r.left + x, r.top + y);
                    const int R = GetRValue(c), G = GetGValue(c), B = GetBValue(c);
                    if (R > 170 && G < 110 && B < 110) ++red;
                    if (B > 150 && R < 120) ++blue;
                    if (R > 180 && G > 150 && B < 90) ++yellow;
                }
            const int enough = w * h / 20;
            if (red > enough && red >= blue && red >= yellow) kind = IconKind::kStop;
            else if (yellow > enough && yellow >= blue) kind = IconKind::kWarning;
            else if (blue > enough) kind = IconKind::kInformation;
            return kind != IconKind::kNone;
        },
        5s);
    return kind;
}

void PostButtonClick(HWND dialog, int controlId) {
    ::PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(controlId, BN_CLICKED),
                   reinterpret_cast<LPARAM>(::GetDlgItem(dialog, controlId)));
}

void PostSysCommand(HWND window, WPARAM command) { ::PostMessageW(window, WM_SYSCOMMAND, command, 0); }

void PostKey(HWND window, UINT virtualKey) {
    const UINT scan = ::MapVirtualKeyW(virtualKey, MAPVK_VK_TO_VSC);
    ::PostMessageW(window, WM_KEYDOWN, virtualKey, 1 | (scan << 16));
    ::PostMessageW(window, WM_KEYUP, virtualKey, 1 | (scan << 16) | (1u << 30) | (1u << 31));
}

HWND FocusOf(HWND window) {
    GUITHREADINFO info{};
    info.cbSize = sizeof(info);
    if (!::GetGUIThreadInfo(::GetWindowThreadProcessId(window, nullptr), &info)) return nullptr;
    return info.hwndFocus;
}

std::vector<DWORD> ChildProcesses(DWORD parentPid, const std::wstring& imageName) {
    std::vector<DWORD> children;
    w32::ScopedHandle snapshot(::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    if (!snapshot) return children;
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL ok = ::Process32FirstW(snapshot.Get(), &entry); ok; ok = ::Process32NextW(snapshot.Get(), &entry))
        if (entry.th32ParentProcessID == parentPid && _wcsicmp(entry.szExeFile, imageName.c_str()) == 0)
            children.push_back(entry.th32ProcessID);
    return children;
}

bool IsModuleLoaded(DWORD pid, const std::wstring& moduleName) {
    w32::ScopedHandle snapshot(::CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, pid));
    if (!snapshot) return false;
    MODULEENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL ok = ::Module32FirstW(snapshot.Get(), &entry); ok; ok = ::Module32NextW(snapshot.Get(), &entry))
        if (_wcsicmp(entry.szModule, moduleName.c_str()) == 0) return true;
    return false;
}

void TerminatePid(DWORD pid) {
    w32::ScopedHandle process(::OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, pid));
    if (!process) return;
    ::TerminateProcess(process.Get(), 98);
    ::WaitForSingleObject(process.Get(), 10000);
}

void DeleteSettings() { ::RegDeleteTreeW(HKEY_CURRENT_USER, kSettingsKey); }

void WriteSetting(const std::wstring& section, const std::wstring& entry, const std::wstring& value) {
    w32::ScopedRegKey key;
    const std::wstring path = std::wstring(kSettingsKey) + L"\\" + section;
    if (::RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, key.Put(), nullptr) !=
        ERROR_SUCCESS)
        return;
    ::RegSetValueExW(key.Get(), entry.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                     static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

bool ReadSetting(const std::wstring& section, const std::wstring& entry, std::wstring& value) {
    const std::wstring path = std::wstring(kSettingsKey) + L"\\" + section;
    wchar_t data[1024] = {};
    DWORD size = sizeof(data) - sizeof(wchar_t);
    if (::RegGetValueW(HKEY_CURRENT_USER, path.c_str(), entry.c_str(), RRF_RT_REG_SZ, nullptr, data, &size) !=
        ERROR_SUCCESS)
        return false;
    value = data;
    return true;
}

std::wstring TempFolder(const std::wstring& name) { return NewScratchFolder(name); }

std::string ReadBytes(const std::wstring& path) {
    std::ifstream in(std::filesystem::path(path), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

HWND FileNameField(HWND dialog) {
    if (WindowClass(dialog) != L"#32770") return nullptr;
    if (HWND edit = ::GetDlgItem(dialog, 0x480)) return edit;  // edt1
    HWND combo = ::GetDlgItem(dialog, 0x47C);  // cmb13, a ComboBoxEx around a combo box
    if (!combo) return nullptr;
    if (HWND inner = ::FindWindowExW(combo, nullptr, L"ComboBox", nullptr)) combo = inner;
    return ::FindWindowExW(combo, nullptr, L"Edit", nullptr);
}

HWND CompleteSaveAs(Program& program, const std::wstring& path) {
    HWND dialog = program.WaitForWindow([](HWND hwnd) { return FileNameField(hwnd) != nullptr; });
    if (!dialog) return nullptr;
    if (!path.empty()) ::SendMessageW(FileNameField(dialog), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    ::PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
    return dialog;
}

HWND ConfirmReplacementAndWaitForBox(Program& program, const std::wstring& text) {
    HWND question = program.WaitForMessageBox();
    if (!question || !PressMessageBoxButton(question, L"Yes")) return nullptr;
    HWND box = nullptr;
    WaitUntil([&] {
        box = program.WaitForMessageBox(1s);
        return box && ReadMessageBox(box).text == text;
    });
    return box && ReadMessageBox(box).text == text ? box : nullptr;
}

HWND OpenWholeReport(Program& program) {
    HWND main = program.WaitForMainWindow();
    if (!main) return nullptr;
    PostButtonClick(main, 1013);
    HWND window = program.WaitForWindow([](HWND hwnd) { return ::GetDlgItem(hwnd, 1003) != nullptr; }, kReportTimeout);
    if (!window) return nullptr;
    const bool whole = WaitUntil(
        [&] { return WindowText(::GetDlgItem(window, 1003)).find(L"installation:") != std::wstring::npos; },
        kReportTimeout);
    return whole ? window : nullptr;
}

}  // namespace e2e

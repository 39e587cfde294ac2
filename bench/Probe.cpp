// In-process benchmarks of the report code.
//
//   bench_probe sections <passes> <program directory>
//       One report, section by section, into a string (as the headless
//       report makes it), then the five WMI queries apart. The first pass
//       runs in a fresh process and carries the first loading of the system
//       libraries; the passes after it do not.
//   bench_probe listing string|both <warm-ups> <runs> <directory>...
//       ListDirectory of each directory into a string and (both) into a real
//       Rich Edit 5.0 view (a ReportView attached to a "RichEdit50W"
//       control with the Diagnostics window's styles), round after round;
//       with both, short listings are repeated within a round.
//   bench_probe listing-parts <directory> <runs>
//       Where the time of one entry goes: the directory search alone, the
//       two file times, the product version (also as it was read before the
//       first-bytes check, and the version library's size query alone), the
//       whole entry text, ListDirectory.
//   bench_probe save <megabytes> <output directory> <warm-ups> <runs>
//       WriteReportFile of a report of that size against writing and
//       copying the same bytes.
//   bench_probe platform <data file> <versioned library> <runs>
//       The platform calls that the report's time goes to, each alone.
//   bench_probe peak idle|report <file>|listing <directory> string|view
//       The peak working set of this process after doing that once.
//   bench_probe view-fill <directory>|report <runs>
//       The pieces of one listing (or of one whole report) handed to a hidden
//       and to a shown view in several ways: one message a piece, drawing
//       suspended, undo and notifications off, pieces gathered.
//   bench_probe window <warm-ups> <rounds>
//       The real program (OrvaneDiagnostics.exe beside this one) driven from
//       here: the System report command sent and timed until it returns,
//       first, refreshed while shown, refreshed while hidden; side by side
//       with the same report into a string in a fresh process of this one
//       (bench_probe window-string <entries> <run>).
#include <winsock2.h>
#include <windows.h>
#include <iphlpapi.h>
#include <richedit.h>
#include <wbemidl.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "app/HeadlessReport.h"
#include "collect/DirectoryListing.h"
#include "collect/InstallationCollector.h"
#include "collect/ReportFile.h"
#include "collect/SystemReport.h"
#include "collect/WmiQuery.h"
#include "diagwin/ReportView.h"
#include "format/EntryText.h"
#include "format/ReportChecksum.h"
#include "format/ReportSink.h"
#include "format/ViewText.h"
#include "w32/Application.h"
#include "w32/Scoped.h"
#include "w32/Text.h"

namespace {

using bench::NowMs;
using bench::Record;

// ---------------------------------------------------------------- sections

struct WmiValue {
    const wchar_t* caseName;
    const wchar_t* className;
    const wchar_t* propertyName;
};
// In the order in which the report asks for them.
constexpr WmiValue kWmiValues[] = {
    {L"wmi Win32_ComputerSystem.Name", L"Win32_ComputerSystem", L"Name"},
    {L"wmi Win32_ComputerSystem.Domain", L"Win32_ComputerSystem", L"Domain"},
    {L"wmi Win32_OperatingSystem.Version", L"Win32_OperatingSystem", L"Version"},
    {L"wmi Win32_BIOS.Name", L"Win32_BIOS", L"Name"},
    {L"wmi Win32_BaseBoard.Manufacturer", L"Win32_BaseBoard", L"Manufacturer"},
};

template <typename Work>
double Time(Work&& work) {
    const double start = NowMs();
    work();
    return NowMs() - start;
}

int Sections(int passes, const std::wstring& programDirectory) {
    for (int pass = 0; pass < passes; ++pass) {
        const std::wstring run = pass == 0 ? L"cold" : std::to_wstring(pass);
        StringReportSink sink;
        SystemFolders folders;
        double total = 0;
        auto timed = [&](const wchar_t* name, auto&& work) {
            const double ms = Time(work);
            total += ms;
            Record(L"sections", name, run, L"ms", ms);
        };
        timed(L"header", [&] {
            if (const auto header = MakeReportHeader()) sink.Append(*header);
        });
        timed(L"program", [&] { WriteProgramSection(sink); });
        timed(L"host", [&] { WriteHostSection(sink); });
        timed(L"windows", [&] { folders = WriteWindowsSection(sink); });
        timed(L"hardware", [&] { WriteHardwareSection(sink); });
        timed(L"network", [&] { WriteNetworkSection(sink); });
        // The installed program's own directory, as the headless report run
        // from the installation lists it.
        timed(L"installation", [&] {
            WriteInstallationSection(sink, programDirectory, folders.programFiles, folders.commonAppData);
        });
        Record(L"sections", L"total", run, L"ms", total);
        Record(L"sections", L"total", run, L"chars", static_cast<double>(sink.Text().size()));
        for (const WmiValue& value : kWmiValues) {
            std::wstring text;
            const double ms = Time([&] { text = QueryWmiPropertyFromAnyThread(value.className, value.propertyName); });
            Record(L"sections", value.caseName, run, L"ms", ms);
            Record(L"sections", value.caseName, run, L"empty", text.empty() ? 1 : 0);
        }
    }
    return 0;
}

// ---------------------------------------------------------------- listings

// A hidden top-level window holding a report view with the styles of the
// Diagnostics window's control (its template: 431 by 335 dialog units).
class ViewWindow {
public:
    ViewWindow() {
        ::LoadLibraryW(L"msftedit.dll");
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = ::DefWindowProcW;
        windowClass.hInstance = ::GetModuleHandleW(nullptr);
        windowClass.lpszClassName = L"OrvaneBenchViewHost";
        ::RegisterClassW(&windowClass);
        frame_ = ::CreateWindowExW(0, windowClass.lpszClassName, L"bench", WS_OVERLAPPEDWINDOW, 0, 0, 680, 620,
                                   nullptr, nullptr, windowClass.hInstance, nullptr);
        const HWND control = ::CreateWindowExW(
            0, L"RichEdit50W", L"",
            WS_CHILD | WS_VISIBLE | WS_BORDER | WS_VSCROLL | WS_HSCROLL | WS_TABSTOP | ES_MULTILINE |
                ES_AUTOHSCROLL | ES_READONLY | ES_DISABLENOSCROLL,
            5, 5, 647, 545, frame_, nullptr, windowClass.hInstance, nullptr);
        view_.Attach(control);
        view_.SetReportFormat();
    }
    ~ViewWindow() {
        if (frame_) ::DestroyWindow(frame_);
    }
    bool Ok() const { return view_.Hwnd() != nullptr; }
    ReportView& View() { return view_; }
    // On screen, as the Diagnostics window is when its report is refreshed.
    void Show() {
        ::ShowWindow(frame_, SW_SHOW);
        ::UpdateWindow(frame_);
    }
    // Lines as the control counts them (the last one is empty).
    LRESULT LineCount() const { return ::SendMessageW(view_.Hwnd(), EM_GETLINECOUNT, 0, 0); }

private:
    HWND frame_ = nullptr;
    ReportView view_;
};

// Counts the entry lines that reach a sink.
class CountingSink final : public ReportSink {
public:
    explicit CountingSink(ReportSink& next) : next_(next) {}
    void Append(std::wstring_view text) override {
        ++pieces_;
        next_.Append(text);
    }
    std::size_t Pieces() const { return pieces_; }

private:
    ReportSink& next_;
    std::size_t pieces_ = 0;
};

// Every round lists each directory into the string and then into the view,
// so that drift of a shared machine falls on every size and both sinks alike.
int Listing(const std::wstring& sinks, int warmups, int runs, const std::vector<std::wstring>& directories) {
    const bool intoViewToo = sinks != L"string";
    ViewWindow window;
    if (!window.Ok()) {
        bench::Note(L"the RichEdit50W control could not be created");
        return 1;
    }
    // A listing shorter than about a second is repeated within the round and
    // its median kept: one disturbance would otherwise be the whole figure.
    // Not when only the string is asked for: that listing is counted (system
    // calls under strace) and must be made once.
    auto repeats = [&](std::size_t entries) -> std::size_t {
        if (!intoViewToo) return 1;
        return entries < 500 ? 5 : entries < 5000 ? 3 : 1;
    };
    auto medianOf = [](std::vector<double> values) {
        std::sort(values.begin(), values.end());
        return values[values.size() / 2];
    };
    for (int i = 0; i < warmups + runs; ++i) {
        const std::wstring run = i < warmups ? L"w" : std::to_wstring(i - warmups + 1);
        for (const std::wstring& directory : directories) {
            StringReportSink text;
            std::vector<double> stringTimes;
            std::size_t entries = 0;
            do {
                text.Clear();
                CountingSink intoString(text);
                stringTimes.push_back(Time([&] { ListDirectory(intoString, directory, false, false); }));
                entries = intoString.Pieces();
            } while (stringTimes.size() < repeats(entries));
            Record(L"listing", L"string " + directory, run, L"ms", medianOf(stringTimes));
            Record(L"listing", L"string " + directory, run, L"entries", static_cast<double>(entries));
            if (!intoViewToo) continue;

            std::vector<double> viewTimes;
            double clearMs = 0;
            do {
                clearMs = Time([&] { window.View().Clear(); });
                CountingSink intoView(window.View());
                viewTimes.push_back(Time([&] {
                    const ReportView::Refill refill(window.View());
                    ListDirectory(intoView, directory, false, false);
                }));
            } while (viewTimes.size() < repeats(entries));
            const std::wstring viewCase = L"view " + directory;
            Record(L"listing", viewCase, run, L"ms", medianOf(viewTimes));
            Record(L"listing", viewCase, run, L"entries", static_cast<double>(entries));
            Record(L"listing", viewCase, run, L"view_lines", static_cast<double>(window.LineCount()));
            // Emptying the view of what the listing before left in it.
            Record(L"listing", viewCase, run, L"clear_before_ms", clearMs);
            // The same text handed to the view as one piece: what the control
            // charges per insertion rather than per character. Not for the
            // largest listing: one piece of that size takes the control minutes.
            if (entries > 2000) continue;
            window.View().Clear();
            const double onePiece = Time([&] { window.View().Append(text.Text()); });
            Record(L"listing", viewCase, run, L"one_piece_ms", onePiece);
        }
    }
    return 0;
}

// ReadProductVersion as it was before it looked at the file's first two
// bytes: the version library is asked for every entry. Kept here to show
// what that check saves, run against run.
std::wstring ReadProductVersionAlways(const std::wstring& path) {
    DWORD handle = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(path.c_str(), &handle);
    if (size == 0) return {};
    std::vector<BYTE> data(size);
    ::GetFileVersionInfoW(path.c_str(), 0, size, data.data());
    for (const wchar_t* key : {L"\\StringFileInfo\\000004b0\\ProductVersion",
                               L"\\StringFileInfo\\040904b0\\ProductVersion"}) {
        void* value = nullptr;
        UINT length = 0;
        if (::VerQueryValueW(data.data(), key, &value, &length) && value)
            return NormaliseVersion(static_cast<const wchar_t*>(value));
    }
    return {};
}

// The pieces of one entry, each over every entry of the directory.
int ListingParts(const std::wstring& directory, int runs) {
    std::vector<WIN32_FIND_DATAW> entries;
    for (int run = 0; run <= runs; ++run) {
        const std::wstring runName = run == 0 ? L"w" : std::to_wstring(run);
        entries.clear();
        const double search = Time([&] {
            WIN32_FIND_DATAW entry{};
            const w32::ScopedFind find(::FindFirstFileW((directory + L"\\*").c_str(), &entry));
            if (!find) return;
            do entries.push_back(entry);
            while (::FindNextFileW(find.Get(), &entry));
        });
        std::size_t sink = 0;
        const double times = Time([&] {
            for (const auto& e : entries) sink += FormatFileTime(e.ftCreationTime).size() +
                                                  FormatFileTime(e.ftLastWriteTime).size();
        });
        const double versions = Time([&] {
            for (const auto& e : entries) sink += ReadProductVersion(directory + L"/" + e.cFileName).size();
        });
        std::size_t same = 0;
        const double always = Time([&] {
            for (const auto& e : entries) {
                const std::wstring path = directory + L"/" + e.cFileName;
                same += ReadProductVersionAlways(path) == ReadProductVersion(path) ? 0 : 1;
            }
        });
        const double checked = Time([&] {
            for (const auto& e : entries) sink += ReadProductVersion(directory + L"/" + e.cFileName).size();
        });
        const double unchecked = Time([&] {
            for (const auto& e : entries) sink += ReadProductVersionAlways(directory + L"/" + e.cFileName).size();
        });
        if (same != 0) bench::Note(L"ReadProductVersion differs from the version library's answer for some files");
        (void)always;
        // What any reader of a file pays at least: open, read its first
        // bytes, close.
        const double opens = Time([&] {
            for (const auto& e : entries) {
                const w32::ScopedHandle file(::CreateFileW((directory + L"/" + e.cFileName).c_str(), GENERIC_READ,
                                                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                                           nullptr, OPEN_EXISTING, 0, nullptr));
                char magic[2] = {};
                DWORD read = 0;
                if (file) ::ReadFile(file.Get(), magic, sizeof(magic), &read, nullptr);
                sink += read;
            }
        });
        const double sizes = Time([&] {
            for (const auto& e : entries) {
                DWORD handle = 0;
                sink += ::GetFileVersionInfoSizeW((directory + L"/" + e.cFileName).c_str(), &handle);
            }
        });
        const double heads = Time([&] {
            for (const auto& e : entries) sink += FormatEntryHead(e.dwFileAttributes, e.nFileSizeLow).size();
        });
        const double whole = Time([&] {
            for (const auto& e : entries) sink += FormatFileEntry(directory, e, false, false).size();
        });
        StringReportSink listed;
        const double listing = Time([&] { ListDirectory(listed, directory, false, false); });
        // The report lists the installation directory twice when the program
        // runs from it; the second listing takes the versions the first read.
        StringReportSink twiceRead;
        const double twice = Time([&] {
            ListDirectory(twiceRead, directory, false, false);
            ListDirectory(twiceRead, directory, false, false);
        });
        StringReportSink twiceRemembered;
        const double remembered = Time([&] {
            ProductVersionMemo memo;
            ListDirectory(twiceRemembered, directory, false, false, &memo);
            ListDirectory(twiceRemembered, directory, false, false, &memo);
        });
        if (twiceRead.Text() != twiceRemembered.Text())
            bench::Note(L"listing twice with the version memo gives other lines than without it");
        const std::wstring caseName = directory;
        Record(L"listing-parts", caseName, runName, L"entries", static_cast<double>(entries.size()));
        Record(L"listing-parts", caseName, runName, L"twice_ms", twice);
        Record(L"listing-parts", caseName, runName, L"twice_memo_ms", remembered);
        Record(L"listing-parts", caseName, runName, L"ListDirectory_ms", listing);
        Record(L"listing-parts", caseName, runName, L"search_ms", search);
        Record(L"listing-parts", caseName, runName, L"file_times_ms", times);
        Record(L"listing-parts", caseName, runName, L"product_version_ms", versions);
        Record(L"listing-parts", caseName, runName, L"product_version_checked_ms", checked);
        Record(L"listing-parts", caseName, runName, L"product_version_unchecked_ms", unchecked);
        Record(L"listing-parts", caseName, runName, L"open_read_close_ms", opens);
        Record(L"listing-parts", caseName, runName, L"GetFileVersionInfoSizeW_ms", sizes);
        Record(L"listing-parts", caseName, runName, L"head_ms", heads);
        Record(L"listing-parts", caseName, runName, L"entry_text_ms", whole);
        if (sink == 0) bench::Note(L"no entry text");
    }
    return 0;
}

// ---------------------------------------------------------------- filling the view

// Ways of giving the control a report's pieces, each by raw messages so that
// the ways the view used before stay measurable whatever ReportView does now.
enum class Fill { eachPiece, redrawOff, quiet, quietPieces4k, quietPieces64k, reportView };
struct FillWay {
    Fill fill;
    const wchar_t* name;
};
constexpr FillWay kFillWays[] = {
    {Fill::eachPiece, L"one EM_REPLACESEL a piece (before)"},
    {Fill::redrawOff, L"the same, drawing suspended"},
    {Fill::quiet, L"the same, drawing, undo and notifications suspended"},
    {Fill::quietPieces4k, L"suspended, pieces gathered to 4 KiB at line ends"},
    {Fill::quietPieces64k, L"suspended, pieces gathered to 64 KiB at line ends"},
    {Fill::reportView, L"ReportView as the program fills it"},
};

void ReplaceSelection(HWND control, const std::wstring& text) {
    ::SendMessageW(control, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(text.c_str()));
}

void FillRaw(HWND control, const std::vector<std::wstring>& pieces, Fill fill) {
    const bool redrawOff = fill != Fill::eachPiece;
    const bool quiet = fill != Fill::eachPiece && fill != Fill::redrawOff;
    ::SetWindowTextW(control, L"");
    ::SendMessageW(control, EM_SETSEL, static_cast<WPARAM>(-1), -1);
    if (redrawOff) ::SendMessageW(control, WM_SETREDRAW, FALSE, 0);
    LRESULT events = 0;
    if (quiet) {
        ::SendMessageW(control, EM_SETUNDOLIMIT, 0, 0);
        events = ::SendMessageW(control, EM_SETEVENTMASK, 0, 0);
    }
    const std::size_t gather = fill == Fill::quietPieces4k ? 4096 : fill == Fill::quietPieces64k ? 65536 : 0;
    std::wstring pending;
    for (const std::wstring& piece : pieces) {
        if (gather == 0) {
            ReplaceSelection(control, piece);
            continue;
        }
        pending += piece;
        if (pending.size() >= gather && !pending.empty() && pending.back() == L'\n') {
            ReplaceSelection(control, pending);
            pending.clear();
        }
    }
    if (!pending.empty()) ReplaceSelection(control, pending);
    if (quiet) ::SendMessageW(control, EM_SETEVENTMASK, 0, events);
    if (redrawOff) {
        ::SendMessageW(control, WM_SETREDRAW, TRUE, 0);
        ::InvalidateRect(control, nullptr, TRUE);
    }
    ::SendMessageW(control, EM_SETSEL, 0, 0);
    ::SendMessageW(control, EM_SCROLLCARET, 0, 0);
}

// The pieces of one listing (or of one whole report, with no directory)
// given to a hidden and a shown view in each of the ways above.
int ViewFill(const std::wstring& directory, int runs) {
    RecordingSink recorded;
    if (directory == L"report")
        WriteSystemReport(recorded);
    else
        ListDirectory(recorded, directory, false, false);
    const std::vector<std::wstring>& pieces = recorded.Pieces();
    for (const bool shown : {false, true}) {
        ViewWindow window;
        if (!window.Ok()) return 1;
        if (shown) window.Show();
        // The view puts a new control in place of a full one: ask for it each time.
        auto control = [&] { return window.View().Hwnd(); };
        for (int run = 0; run <= runs; ++run) {
            const std::wstring runName = run == 0 ? L"w" : std::to_wstring(run);
            for (const FillWay& way : kFillWays) {
                // The ways of before take minutes for a listing of thousands of
                // entries: a large one shows what the program's way costs alone.
                if (pieces.size() > 5000 && way.fill != Fill::reportView) continue;
                // Drawn at every piece, a shown view takes minutes for a
                // thousand entries: that way is measured once, warm-up apart.
                if (shown && way.fill == Fill::eachPiece && pieces.size() > 500 && run != 1) continue;
                const double ms = Time([&] {
                    if (way.fill == Fill::reportView) {
                        const ReportView::Refill refill(window.View());
                        for (const std::wstring& piece : pieces) window.View().Append(piece);
                    } else {
                        FillRaw(control(), pieces, way.fill);
                    }
                });
                const std::wstring caseName =
                    std::wstring(shown ? L"shown " : L"hidden ") + way.name + L" " + directory;
                Record(L"view-fill", caseName, runName, L"ms", ms);
                Record(L"view-fill", caseName, runName, L"pieces", static_cast<double>(pieces.size()));
                Record(L"view-fill", caseName, runName, L"first_line",
                       static_cast<double>(::SendMessageW(control(), EM_GETFIRSTVISIBLELINE, 0, 0)));
            }
        }
    }
    return 0;
}

// Emptying a view that holds `lines` report lines, in several ways.
int ClearWays(int lines) {
    ViewWindow window;
    if (!window.Ok()) return 1;
    const HWND control = window.View().Hwnd();
    auto fill = [&] {
        const ReportView::Refill refill(window.View());
        for (int i = 0; i < lines; ++i)
            window.View().Append(L"\t00000020\t" + std::to_wstring(100000 + i) + L"\t22/11/2026 15:08:05\tfile" +
                                 std::to_wstring(i) + L".dat\n");
    };
    const std::wstring n = std::to_wstring(lines);
    fill();
    Record(L"clear", L"SetWindowText " + n, L"1", L"ms", Time([&] { ::SetWindowTextW(control, L""); }));
    fill();
    Record(L"clear", L"select all, replace " + n, L"1", L"ms", Time([&] {
        ::SendMessageW(control, EM_SETSEL, 0, -1);
        ::SendMessageW(control, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(L""));
    }));
    fill();
    Record(L"clear", L"from the end, 200 lines at a time " + n, L"1", L"ms", Time([&] {
        for (LRESULT count = ::SendMessageW(control, EM_GETLINECOUNT, 0, 0); count > 1;
             count = ::SendMessageW(control, EM_GETLINECOUNT, 0, 0)) {
            const LRESULT from = ::SendMessageW(control, EM_LINEINDEX, count > 200 ? count - 200 : 0, 0);
            ::SendMessageW(control, EM_SETSEL, from, -1);
            ::SendMessageW(control, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(L""));
        }
        ::SetWindowTextW(control, L"");
    }));
    Record(L"clear", L"fill " + n, L"1", L"ms", Time(fill));
    fill();
    Record(L"clear", L"a new control in its place (the program's way) " + n, L"1", L"ms",
           Time([&] { window.View().Clear(); }));
    return 0;
}

// ---------------------------------------------------------------- the whole window

// The real program, started from this program's own directory, driven from
// here as a user's click would drive it: the System report command is sent
// to its main window and timed until SendMessage returns (the report is made
// inside the command), first with the Diagnostics window not yet shown, then
// again while it is shown, then again once it is hidden. Side by side, in
// each round, a fresh process of this program writes the report of the same
// directory into a string twice (the first carries the loading of the system
// libraries, as the program's first report does).

constexpr int kSystemReportButton = 1013;  // IDC_SYSTEM_REPORT
constexpr DWORD kWindowWaitMs = 600000;

std::wstring SiblingPath(const wchar_t* fileName) {
    std::wstring path = w32::GetModulePath(nullptr);
    path.resize(path.find_last_of(L'\\') + 1);
    return path + fileName;
}

struct WindowSearch {
    DWORD pid;
    HWND except;
    HWND found;
};

// A visible top-level window of the process other than `except`.
HWND VisibleWindowOf(DWORD pid, HWND except) {
    WindowSearch search{pid, except, nullptr};
    ::EnumWindows(
        [](HWND hwnd, LPARAM data) -> BOOL {
            auto* s = reinterpret_cast<WindowSearch*>(data);
            DWORD owner = 0;
            ::GetWindowThreadProcessId(hwnd, &owner);
            if (owner != s->pid || hwnd == s->except || !::IsWindowVisible(hwnd)) return TRUE;
            s->found = hwnd;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

HWND PollForWindow(DWORD pid, HWND except, HANDLE process) {
    const double deadline = NowMs() + kWindowWaitMs;
    while (NowMs() < deadline) {
        if (const HWND hwnd = VisibleWindowOf(pid, except)) return hwnd;
        if (::WaitForSingleObject(process, 20) == WAIT_OBJECT_0) return nullptr;
    }
    return nullptr;
}

double SendSystemReport(HWND mainWindow) {
    DWORD_PTR result = 0;
    const double start = NowMs();
    const LRESULT sent = ::SendMessageTimeoutW(mainWindow, WM_COMMAND, MAKEWPARAM(kSystemReportButton, BN_CLICKED),
                                               0, SMTO_NORMAL, kWindowWaitMs, &result);
    const double ms = NowMs() - start;
    return sent ? ms : -1;
}

// What the view shows after a report: its first visible line and its length
// (with CR LF line ends, as the control counts).
void RecordView(const std::wstring& caseName, const std::wstring& run, HWND diagnostics) {
    const HWND view = ::GetDlgItem(diagnostics, 1003);  // IDC_REPORT_VIEW
    Record(L"window", caseName, run, L"first_line",
           static_cast<double>(::SendMessageW(view, EM_GETFIRSTVISIBLELINE, 0, 0)));
    Record(L"window", caseName, run, L"chars", static_cast<double>(::SendMessageW(view, WM_GETTEXTLENGTH, 0, 0)));
    Record(L"window", caseName, run, L"shown", ::IsWindowVisible(diagnostics) ? 1 : 0);
}

bool DriveProgram(const std::wstring& size, const std::wstring& run) {
    std::wstring commandLine = L"\"" + SiblingPath(L"OrvaneDiagnostics.exe") + L"\"";
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                          &process)) {
        bench::Note(L"the program could not be started");
        return false;
    }
    const w32::ScopedHandle processHandle(process.hProcess);
    const w32::ScopedHandle threadHandle(process.hThread);
    ::WaitForInputIdle(process.hProcess, kWindowWaitMs);
    const HWND mainWindow = PollForWindow(process.dwProcessId, nullptr, process.hProcess);
    if (!mainWindow) {
        bench::Note(L"the program's main window did not appear");
        ::TerminateProcess(process.hProcess, 1);
        return false;
    }
    const double first = SendSystemReport(mainWindow);
    const HWND diagnostics = PollForWindow(process.dwProcessId, mainWindow, process.hProcess);
    Record(L"window", L"window first " + size, run, L"ms", first);
    if (diagnostics) RecordView(L"window first " + size, run, diagnostics);

    const double shown = SendSystemReport(mainWindow);
    Record(L"window", L"window refresh shown " + size, run, L"ms", shown);
    if (diagnostics) RecordView(L"window refresh shown " + size, run, diagnostics);

    if (diagnostics) ::SendMessageW(diagnostics, WM_CLOSE, 0, 0);  // hides it
    const double hidden = SendSystemReport(mainWindow);
    Record(L"window", L"window refresh hidden " + size, run, L"ms", hidden);

    ::SendMessageTimeoutW(mainWindow, WM_CLOSE, 0, 0, SMTO_NORMAL, kWindowWaitMs, nullptr);
    if (::WaitForSingleObject(process.hProcess, kWindowWaitMs) != WAIT_OBJECT_0) {
        bench::Note(L"the program did not end when its main window was closed");
        ::TerminateProcess(process.hProcess, 1);
    }
    return first >= 0 && shown >= 0 && hidden >= 0;
}

// In a fresh process: the report into a string, twice.
int StringReportTwice(const std::wstring& size, const std::wstring& run) {
    for (const std::wstring& caseName : {L"string first " + size, L"string second " + size}) {
        StringReportSink text;
        const double ms = Time([&] { WriteSystemReport(text); });
        Record(L"window", caseName, run, L"ms", ms);
        Record(L"window", caseName, run, L"chars", static_cast<double>(AsViewText(text.Text()).size()));
    }
    return 0;
}

bool RunStringReportProcess(const std::wstring& size, const std::wstring& run) {
    std::wstring commandLine = L"\"" + w32::GetModulePath(nullptr) + L"\" window-string " + size + L" " + run;
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    std::fflush(stdout);
    // The child inherits the standard handles and writes its records there.
    if (!::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                          &process))
        return false;
    const w32::ScopedHandle processHandle(process.hProcess);
    const w32::ScopedHandle threadHandle(process.hThread);
    return ::WaitForSingleObject(process.hProcess, kWindowWaitMs) == WAIT_OBJECT_0;
}

// The entries of this program's directory, "." and ".." left out: the size
// that every case of a round carries in its name.
std::size_t EntriesBesideMe() {
    std::size_t entries = 0;
    WIN32_FIND_DATAW entry{};
    const w32::ScopedFind find(::FindFirstFileW(SiblingPath(L"*").c_str(), &entry));
    if (!find) return 0;
    do {
        const std::wstring_view name = entry.cFileName;
        if (name != L"." && name != L"..") ++entries;
    } while (::FindNextFileW(find.Get(), &entry));
    return entries;
}

int WholeWindow(int warmups, int rounds) {
    const std::wstring size = std::to_wstring(EntriesBesideMe());
    for (int round = 0; round < warmups + rounds; ++round) {
        const std::wstring run = round < warmups ? L"w" : std::to_wstring(round - warmups + 1);
        if (!RunStringReportProcess(size, run)) bench::Note(L"the string report's process failed");
        if (!DriveProgram(size, run)) bench::Note(L"a round of the whole window failed");
    }
    return 0;
}

// ---------------------------------------------------------------- saving

// Report text, repeated until it holds `units` UTF-16 code units, in the
// form the view gives it back (CR LF line ends).
std::wstring ReportTextOfSize(std::size_t units) {
    StringReportSink report;
    WriteSystemReport(report);
    const std::wstring one = AsViewText(report.Text());
    std::wstring text;
    text.reserve(units + one.size());
    while (text.size() < units) text += one;
    text.resize(units);
    return text;
}

// BuildReportFileBytes as it was before it filled its buffer in place: one
// push_back a byte. Kept here to show what that change saves, run against run.
std::string BuildBytesOneByOne(std::u16string_view body) {
    std::string bytes;
    bytes.reserve(2 + 2 * body.size() + 30);
    bytes.push_back(static_cast<char>(0xFF));
    bytes.push_back(static_cast<char>(0xFE));
    auto append = [&bytes](std::u16string_view text) {
        for (char16_t unit : text) {
            bytes.push_back(static_cast<char>(unit & 0xFF));
            bytes.push_back(static_cast<char>((unit >> 8) & 0xFF));
        }
    };
    append(body);
    append(FormatReportTrailer(ComputeReportChecksum(body)));
    return bytes;
}

bool WriteBytes(const std::wstring& path, const std::string& bytes) {
    const w32::ScopedHandle file(::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                               nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return false;
    DWORD written = 0;
    return ::WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
           written == bytes.size();
}

int Save(double megabytes, const std::wstring& directory, int warmups, int runs) {
    // The file holds 2 bytes of byte-order mark, 2 bytes a unit and the trailer.
    const auto units = static_cast<std::size_t>(megabytes * 1e6 / 2);
    const std::wstring text = ReportTextOfSize(units);
    const std::wstring reportPath = directory + L"\\saved-report.txt";
    const std::wstring rawPath = directory + L"\\raw-bytes.txt";
    const std::wstring copyPath = directory + L"\\copied-report.txt";
    const std::string bytes = BuildReportFileBytes(AsUtf16(text));
    const double sizeMb = static_cast<double>(bytes.size()) / 1e6;
    for (int i = 0; i < warmups + runs; ++i) {
        const std::wstring run = i < warmups ? L"w" : std::to_wstring(i - warmups + 1);
        const double save = Time([&] { WriteReportFile(reportPath, text); });
        const double build = Time([&] { volatile auto size = BuildReportFileBytes(AsUtf16(text)).size(); (void)size; });
        std::string before;
        const double oneByOne = Time([&] { before = BuildBytesOneByOne(AsUtf16(text)); });
        if (before != bytes) bench::Note(L"the bytes built one push_back at a time differ from BuildReportFileBytes");
        const double checksum = Time([&] { volatile auto sum = ComputeReportChecksum(AsUtf16(text)); (void)sum; });
        const double write = Time([&] { WriteBytes(rawPath, bytes); });
        ::DeleteFileW(copyPath.c_str());
        const double copy = Time([&] { ::CopyFileW(reportPath.c_str(), copyPath.c_str(), FALSE); });
        Record(L"save", L"WriteReportFile", run, L"ms", save);
        Record(L"save", L"WriteReportFile", run, L"MB/s", sizeMb / (save / 1000));
        Record(L"save", L"BuildReportFileBytes", run, L"ms", build);
        Record(L"save", L"ComputeReportChecksum", run, L"ms", checksum);
        Record(L"save", L"bytes built one push_back at a time", run, L"ms", oneByOne);
        Record(L"save", L"WriteFile of the same bytes", run, L"ms", write);
        Record(L"save", L"WriteFile of the same bytes", run, L"MB/s", sizeMb / (write / 1000));
        Record(L"save", L"CopyFileW of the saved file", run, L"ms", copy);
        Record(L"save", L"CopyFileW of the saved file", run, L"MB/s", sizeMb / (copy / 1000));
    }
    Record(L"save", L"file", L"1", L"bytes", static_cast<double>(bytes.size()));
    // The saved file must be exactly the bytes built apart.
    const w32::ScopedHandle saved(::CreateFileW(reportPath.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                                OPEN_EXISTING, 0, nullptr));
    LARGE_INTEGER size{};
    if (!saved || !::GetFileSizeEx(saved.Get(), &size) || static_cast<std::size_t>(size.QuadPart) != bytes.size())
        bench::Note(L"the saved report does not have the expected size");
    ::DeleteFileW(reportPath.c_str());
    ::DeleteFileW(rawPath.c_str());
    ::DeleteFileW(copyPath.c_str());
    return 0;
}

// ---------------------------------------------------------------- platform

// The platform calls that the report's time goes to, each alone: what the
// system under test charges for them, whatever our code does around them.
int Platform(const std::wstring& dataFile, const std::wstring& libraryFile, int runs) {
    // First of all, before anything else needs the desktop: the first call
    // that needs the screen.
    const double firstDc = Time([] { ::ReleaseDC(nullptr, ::GetDC(nullptr)); });
    Record(L"platform", L"first GetDC(NULL) of the process", L"1", L"ms", firstDc);
    for (int i = 0; i <= runs; ++i) {
        const std::wstring run = i == 0 ? L"first" : std::to_wstring(i);
        Record(L"platform", L"COM apartment and WMI locator, created and released", run, L"ms", Time([] {
                   const w32::ComApartment apartment(COINIT_MULTITHREADED);
                   w32::ComPtr<IWbemLocator> locator;
                   ::CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                                      locator.PutVoid());
               }));
        Record(L"platform", L"GetAdaptersAddresses, 448-byte buffer (too small)", run, L"ms", Time([] {
                   std::vector<BYTE> buffer(448);
                   ULONG size = static_cast<ULONG>(buffer.size());
                   ::GetAdaptersAddresses(AF_UNSPEC, GAA_FLAG_INCLUDE_PREFIX, nullptr,
                                          reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.data()), &size);
               }));
        Record(L"platform", L"GetAdaptersAddresses, large enough buffer", run, L"ms", Time([] {
                   std::vector<BYTE> buffer(256 * 1024);
                   ULONG size = static_cast<ULONG>(buffer.size());
                   ::GetAdaptersAddresses(AF_UNSPEC, GAA_FLAG_INCLUDE_PREFIX, nullptr,
                                          reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.data()), &size);
               }));
        for (const auto& [label, path] : {std::pair{L"data file", dataFile}, std::pair{L"versioned DLL", libraryFile}}) {
            Record(L"platform", std::wstring(L"GetFileVersionInfoSizeW, ") + label, run, L"ms", Time([&] {
                       DWORD handle = 0;
                       ::GetFileVersionInfoSizeW(path.c_str(), &handle);
                   }));
            Record(L"platform", std::wstring(L"ReadProductVersion, ") + label, run, L"ms",
                   Time([&] { ReadProductVersion(path); }));
            Record(L"platform", std::wstring(L"CreateFileW, ReadFile of 2 bytes, CloseHandle, ") + label, run,
                   L"ms", Time([&] {
                       const w32::ScopedHandle file(::CreateFileW(path.c_str(), GENERIC_READ,
                                                                  FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                                                  OPEN_EXISTING, 0, nullptr));
                       char magic[2];
                       DWORD read = 0;
                       if (file) ::ReadFile(file.Get(), magic, sizeof(magic), &read, nullptr);
                   }));
        }
        FILETIME now{};
        ::GetSystemTimeAsFileTime(&now);
        Record(L"platform", L"FormatFileTime", run, L"ms", Time([&] { FormatFileTime(now); }));
    }
    return 0;
}

// ---------------------------------------------------------------- memory

int Peak(int argc, wchar_t** argv) {
    const std::wstring what = argv[2];
    std::wstring caseName = what;
    if (what == L"idle") {
        // Nothing but this program's start-up and the rich edit library.
        ::LoadLibraryW(L"msftedit.dll");
    } else if (what == L"report" && argc >= 4) {
        if (WriteHeadlessReport(argv[3]) != 0) return 1;
    } else if (what == L"listing" && argc >= 5) {
        const std::wstring directory = argv[3];
        const std::wstring sinkKind = argv[4];
        caseName = L"listing " + sinkKind + L" " + directory;
        if (sinkKind == L"view") {
            ViewWindow window;
            ListDirectory(window.View(), directory, false, false);
        } else {
            StringReportSink text;
            ListDirectory(text, directory, false, false);
        }
    } else {
        return 2;
    }
    Record(L"peak", caseName, L"1", L"peak_ws", static_cast<double>(bench::PeakWorkingSet()));
    return 0;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    // The program section names the application and reads its version.
    w32::Application app;
    app.Initialise(::GetModuleHandleW(nullptr), L"");
    if (argc < 2) return 2;
    const std::wstring mode = argv[1];
    if (mode == L"sections" && argc >= 4) return Sections(_wtoi(argv[2]), argv[3]);
    if (mode == L"listing" && argc >= 6)
        return Listing(argv[2], _wtoi(argv[3]), _wtoi(argv[4]), {argv + 5, argv + argc});
    if (mode == L"listing-parts" && argc >= 4) return ListingParts(argv[2], _wtoi(argv[3]));
    if (mode == L"save" && argc >= 6) return Save(_wtof(argv[2]), argv[3], _wtoi(argv[4]), _wtoi(argv[5]));
    if (mode == L"platform" && argc >= 5) return Platform(argv[2], argv[3], _wtoi(argv[4]));
    if (mode == L"peak" && argc >= 3) return Peak(argc, argv);
    if (mode == L"view-fill" && argc >= 4) return ViewFill(argv[2], _wtoi(argv[3]));
    if (mode == L"clear-ways" && argc >= 3) return ClearWays(_wtoi(argv[2]));
    if (mode == L"window" && argc >= 4) return WholeWindow(_wtoi(argv[2]), _wtoi(argv[3]));
    if (mode == L"window-string" && argc >= 4) return StringReportTwice(argv[2], argv[3]);
    return 2;
}

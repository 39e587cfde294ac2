// reportcheck FILE...: tells for each file whether it is a report saved by
// Orvane Diagnostics that arrived whole. One line per file, in the order
// given; the exit status is that of the worst file.

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "report/ReportVerdict.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace {

enum ExitStatus { kAllIntact = 0, kSomeAltered = 1, kSomeNotAReport = 2 };

constexpr const char kUsage[] =
    "usage: reportcheck FILE...\n"
    "Checks that each FILE is a report saved by Orvane Diagnostics whose\n"
    "checksum still matches its text, and prints one line per file:\n"
    "  FILE: intact (checksum 1a2b3c4d)\n"
    "  FILE: altered (trailer says 1a2b3c4d, body gives 0badf00d)\n"
    "  FILE: not a report (REASON)\n"
    "  FILE: cannot be read (REASON)\n"
    "Exit status: 0 when every file is intact, 1 when one is altered,\n"
    "2 when one is not a report or cannot be read, or when no FILE is given.\n"
    "The checksum catches accidental damage only: whoever edits a report on\n"
    "purpose can recompute it.\n";

#if defined(_WIN32)
using NativeChar = wchar_t;

std::FILE* OpenForReading(const wchar_t* path) {
    return _wfopen(path, L"rb");
}

std::string ToUtf8(std::wstring_view text) {
    if (text.empty()) return {};
    const int size = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0,
                                           nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), utf8.data(), size, nullptr,
                          nullptr);
    return utf8;
}

// A console shows any name through the wide API, whatever its code page;
// a pipe or a file gets UTF-8.
void Print(std::FILE* stream, const std::string& utf8) {
    const HANDLE handle = ::GetStdHandle(stream == stderr ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    if (handle != INVALID_HANDLE_VALUE && ::GetConsoleMode(handle, &mode)) {
        std::wstring wide(utf8.size(), L'\0');
        wide.resize(static_cast<std::size_t>(::MultiByteToWideChar(
            CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), wide.data(), static_cast<int>(wide.size()))));
        std::fflush(stream);
        DWORD written = 0;
        ::WriteConsoleW(handle, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr);
        return;
    }
    std::fputs(utf8.c_str(), stream);
}
#else
using NativeChar = char;

std::FILE* OpenForReading(const char* path) {
    return std::fopen(path, "rb");
}

// File names are bytes here; they are printed as they were given.
std::string ToUtf8(std::string_view text) {
    return std::string(text);
}

void Print(std::FILE* stream, const std::string& text) {
    std::fputs(text.c_str(), stream);
}
#endif

// The whole file, or the errno value that stopped the reading. Reports are
// small; a file too large for memory is simply one that cannot be read.
bool ReadWholeFile(const NativeChar* path, std::string& bytes, int& error) {
    std::FILE* file = OpenForReading(path);
    if (!file) {
        error = errno;
        return false;
    }
    bool ok = true;
    try {
        char buffer[64 * 1024];
        std::size_t count;
        while ((count = std::fread(buffer, 1, sizeof buffer, file)) > 0) bytes.append(buffer, count);
        if (std::ferror(file)) {
            ok = false;
            error = errno;
        }
    } catch (const std::bad_alloc&) {
        ok = false;
        error = ENOMEM;
    }
    std::fclose(file);
    return ok;
}

int CheckFile(const NativeChar* path) {
    const std::string name = ToUtf8(path);
    std::string bytes;
    int error = 0;
    if (!ReadWholeFile(path, bytes, error)) {
        Print(stdout, name + ": cannot be read (" + std::strerror(error) + ")\n");
        return kSomeNotAReport;
    }
    const ReportVerdict verdict = CheckReportBytes(bytes);
    Print(stdout, name + ": " + DescribeReportVerdict(verdict) + "\n");
    switch (verdict.state) {
        case ReportState::Intact: return kAllIntact;
        case ReportState::Altered: return kSomeAltered;
        case ReportState::NotAReport: break;
    }
    return kSomeNotAReport;
}

bool IsHelpOption(std::string_view argument) {
    return argument == "-h" || argument == "--help" || argument == "/?";
}

int Run(int argc, NativeChar* argv[]) {
    if (argc < 2) {
        Print(stderr, kUsage);
        return kSomeNotAReport;
    }
    if (argc == 2 && IsHelpOption(ToUtf8(argv[1]))) {
        Print(stdout, kUsage);
        return kAllIntact;
    }
    int status = kAllIntact;
    for (int i = 1; i < argc; ++i) status = std::max(status, CheckFile(argv[i]));
    return status;
}

}  // namespace

#if defined(_WIN32)
// wmain: names arrive as UTF-16 whatever the code page, so any file opens.
int wmain(int argc, wchar_t* argv[]) {
    return Run(argc, argv);
}

// The process's entry point, ahead of the runtime library's start-up: every
// library loaded by name from here on comes from the system directory, never
// from beside the program or from the current directory. The static imports
// are Windows' known DLLs only (kernel32, msvcrt).
extern "C" int mainCRTStartup();   // MinGW-w64's start-up for a console program
extern "C" int wmainCRTStartup();  // the Visual C++ runtime's
extern "C" int ReportCheckStartup() {
    ::SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
#if defined(__MINGW32__)
    return mainCRTStartup();
#else
    return wmainCRTStartup();
#endif
}
#else
int main(int argc, char* argv[]) {
    return Run(argc, argv);
}
#endif

// A child process for the report tests: it writes report text to a file so
// that a test can see what a process started with other settings (another
// Windows version, another token) reports.
//
//   report_printer <what> <output file>
//     report    the whole report
//     windows   the Windows section alone
//     program   the Program section alone
//     version   what the system says of itself, for comparison:
//               "<major>.<minor>.<build> <service pack major> <product type>\n"
//               from RtlGetVersion, then the same from GetVersionExW
//
// The file holds the text as UTF-16 code units, without byte-order mark.
#include <windows.h>

#include <string>

#include "collect/SystemReport.h"
#include "w32/Application.h"
#include "w32/Scoped.h"

namespace {

using RtlGetVersionFunction = LONG(WINAPI*)(OSVERSIONINFOEXW*);

std::wstring Describe(const OSVERSIONINFOEXW& info) {
    return std::to_wstring(info.dwMajorVersion) + L"." + std::to_wstring(info.dwMinorVersion) + L"." +
           std::to_wstring(info.dwBuildNumber) + L" " + std::to_wstring(info.wServicePackMajor) + L" " +
           std::to_wstring(info.wProductType) + L"\n";
}

std::wstring SystemVersions() {
    OSVERSIONINFOEXW real{};
    real.dwOSVersionInfoSize = sizeof(real);
    auto rtlGetVersion = reinterpret_cast<RtlGetVersionFunction>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion")));
    if (rtlGetVersion) rtlGetVersion(&real);
    OSVERSIONINFOEXW reported{};
    reported.dwOSVersionInfoSize = sizeof(reported);
    ::GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&reported));
    return Describe(real) + Describe(reported);
}

bool Produce(const std::wstring& what, StringReportSink& sink) {
    if (what == L"report") return WriteSystemReport(sink);
    if (what == L"windows") {
        WriteWindowsSection(sink);
    } else if (what == L"program") {
        WriteProgramSection(sink);
    } else if (what == L"version") {
        sink.Append(SystemVersions());
    } else {
        return false;
    }
    return true;
}

bool WriteUtf16(const std::wstring& path, const std::wstring& text) {
    const w32::ScopedHandle file(
        ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return false;
    const DWORD bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    DWORD written = 0;
    return ::WriteFile(file.Get(), text.data(), bytes, &written, nullptr) && written == bytes;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc < 3) return 3;
    w32::Application app;
    app.Initialise(::GetModuleHandleW(nullptr), L"");
    StringReportSink sink;
    const bool produced = Produce(argv[1], sink);
    if (!WriteUtf16(argv[2], sink.Text())) return 4;
    return produced ? 0 : 2;
}

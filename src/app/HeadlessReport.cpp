#include "app/HeadlessReport.h"

#include <windows.h>

#include "app/DiagnosticsApp.h"
#include "app/ExitStatus.h"
#include "diagwin/ReportFile.h"
#include "diagwin/ViewText.h"
#include "report/ReportSink.h"
#include "report/SystemReport.h"
#include "w32/Scoped.h"

namespace {
constexpr Bilingual kCannotOpen{L"Impossible d'ouvrir le fichier !", L"Unable to open file!"};

// A script that redirected our standard error gets the line there; one run
// from a console sees it on that console; otherwise nobody is told.
void TellParent(const std::wstring& line) {
    HANDLE error = ::GetStdHandle(STD_ERROR_HANDLE);
    if (error && error != INVALID_HANDLE_VALUE && ::GetFileType(error) != FILE_TYPE_UNKNOWN) {
        const int size = ::WideCharToMultiByte(CP_UTF8, 0, line.data(), static_cast<int>(line.size()), nullptr, 0,
                                               nullptr, nullptr);
        std::string utf8(static_cast<std::size_t>(size), '\0');
        ::WideCharToMultiByte(CP_UTF8, 0, line.data(), static_cast<int>(line.size()), utf8.data(), size, nullptr,
                              nullptr);
        DWORD written = 0;
        ::WriteFile(error, utf8.data(), static_cast<DWORD>(utf8.size()), &written, nullptr);
        return;
    }
    if (!::AttachConsole(ATTACH_PARENT_PROCESS)) return;
    w32::ScopedHandle console(::CreateFileW(L"CONOUT$", GENERIC_WRITE, FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                            nullptr));
    DWORD written = 0;
    if (console) ::WriteConsoleW(console.Get(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    ::FreeConsole();
}
}  // namespace

int WriteHeadlessReport(const std::wstring& path) {
    StringReportSink report;
    if (!WriteSystemReport(report)) return kExitReportFailed;
    if (!WriteReportFile(path, AsViewText(report.Text()))) {
        TellParent(std::wstring(Tr(kCannotOpen)) + L"\r\n");
        return kExitCannotWriteReport;
    }
    return kExitSuccess;
}

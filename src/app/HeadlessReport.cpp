#include "app/HeadlessReport.h"

#include <windows.h>

#include "app/ExitStatus.h"
#include "collect/ReportFile.h"
#include "collect/SystemReport.h"
#include "format/ViewText.h"
#include "lang/Language.h"
#include "w32/Scoped.h"
#include "w32/Text.h"

namespace {
// A script that redirected our standard error gets the line there; one run
// from a console sees it on that console; otherwise nobody is told.
void TellParent(const std::wstring& line) {
    HANDLE error = ::GetStdHandle(STD_ERROR_HANDLE);
    if (error && error != INVALID_HANDLE_VALUE && ::GetFileType(error) != FILE_TYPE_UNKNOWN) {
        const std::string utf8 = w32::WideToUtf8(line);
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

int TellFailure(ReportFileOutcome outcome) {
    TellParent(std::wstring(Tr(ReportFileFailureMessage(outcome))) + L"\r\n");
    return kExitCannotWriteReport;
}
}  // namespace

int WriteHeadlessReport(const std::wstring& path) {
    // Each piece goes to the file as it is made: the report is never held whole.
    ReportFileWriter file(path);
    if (!file.Opened()) return TellFailure(ReportFileOutcome::kCannotOpen);
    ViewTextSink asTheViewGivesIt(file);
    // Without a local time nothing was written: the writer removes its file.
    if (!WriteSystemReport(asTheViewGivesIt)) return kExitReportFailed;
    const ReportFileOutcome outcome = file.Commit();
    if (outcome != ReportFileOutcome::kWritten) return TellFailure(outcome);
    return kExitSuccess;
}

// The report view: a read-only Rich Edit 5.0 control that receives the report
// piece by piece and gives its text back for saving.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "report/ReportSink.h"

class ReportView final : public ReportSink {
public:
    void Attach(HWND control);
    HWND Hwnd() const { return hwnd_; }

    // 9-point black Courier New, as the default and for all text.
    void SetReportFormat();
    // Empties the view and puts the caret at the end.
    void Clear();
    // Inserts at the caret; not undoable.
    void Append(std::wstring_view text) override;
    // Puts the caret at the start and scrolls there: a report is read from its top.
    void ShowStart();
    // The view's text as its window text gives it (line breaks as CR LF).
    std::wstring Text() const;

private:
    HWND hwnd_ = nullptr;
};

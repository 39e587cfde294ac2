// The report view: a read-only Rich Edit 5.0 control that receives the report
// piece by piece and gives its text back for saving.
#pragma once

#include <windows.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "format/ReportSink.h"

class ReportView final : public ReportSink {
public:
    // One whole report written into the view: for its life the view is
    // emptied, does not draw, sends no notifications and takes the pieces
    // gathered into parts of some 65,000 characters that end a line; at its
    // end the view holds every piece, is drawn once and shows the report's start.
    class Refill {
    public:
        explicit Refill(ReportView& view);
        ~Refill();
        Refill(const Refill&) = delete;
        Refill& operator=(const Refill&) = delete;

    private:
        ReportView& view_;
        LRESULT eventMask_;
    };

    void Attach(HWND control);
    HWND Hwnd() const { return hwnd_; }

    // 9-point black Courier New, as the default and for all text.
    void SetReportFormat();
    // Empties the view and puts the caret at the end. A view holding text is
    // emptied by putting a new control in its place: Hwnd() changes.
    void Clear();
    // Inserts at the caret; not undoable. During a Refill the pieces wait
    // until kGatherChars characters that end a line have gathered.
    void Append(std::wstring_view text) override;
    // Puts the caret at the start and scrolls there: a report is read from its top.
    void ShowStart();
    // The view's text as its window text gives it (line breaks as CR LF).
    std::wstring Text() const;

    // How many characters a Refill gathers before it inserts them.
    static constexpr std::size_t kGatherChars = 65536;

private:
    void ReplaceWithEmptyTwin();
    void Insert(const wchar_t* text);
    void InsertGathered();

    HWND hwnd_ = nullptr;
    bool gathering_ = false;
    std::wstring gathered_;
};

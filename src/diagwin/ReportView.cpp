#include "diagwin/ReportView.h"

#include <richedit.h>

#include <iterator>

#include "w32/Text.h"

namespace {
// The control holds 32,767 characters unless told otherwise; a report with a
// large installation directory is far longer.
constexpr LPARAM kTextLimit = 0x7FFFFFFE;
}  // namespace

// Each insertion into a control that draws itself is laid out and painted at
// once (under Wine, the whole visible page and its scroll bars every time):
// on a shown window that made a refresh ten times slower than the first
// report. Suspended drawing, and fewer, larger insertions, make the report
// cost the same shown or hidden.
ReportView::Refill::Refill(ReportView& view) : view_(view) {
    // Emptied first: a fresh control (see Clear) starts out drawing.
    view_.Clear();
    ::SendMessageW(view_.hwnd_, WM_SETREDRAW, FALSE, 0);
    eventMask_ = ::SendMessageW(view_.hwnd_, EM_SETEVENTMASK, 0, 0);
    view_.gathering_ = true;
}

ReportView::Refill::~Refill() {
    view_.InsertGathered();
    view_.gathering_ = false;
    ::SendMessageW(view_.hwnd_, EM_SETEVENTMASK, 0, eventMask_);
    ::SendMessageW(view_.hwnd_, WM_SETREDRAW, TRUE, 0);
    view_.ShowStart();
    ::InvalidateRect(view_.hwnd_, nullptr, TRUE);
}

void ReportView::Attach(HWND control) {
    hwnd_ = control;
    ::SendMessageW(hwnd_, EM_EXLIMITTEXT, 0, kTextLimit);
    // The view is read-only: nothing in it is ever undone.
    ::SendMessageW(hwnd_, EM_SETUNDOLIMIT, 0, 0);
}

void ReportView::SetReportFormat() {
    CHARFORMAT2W format{};
    format.cbSize = sizeof(format);
    format.dwMask = CFM_SIZE | CFM_COLOR | CFM_FACE;
    format.yHeight = 180;  // twips: 9 points
    format.crTextColor = RGB(0, 0, 0);
    wcscpy_s(format.szFaceName, L"Courier New");
    ::SendMessageW(hwnd_, EM_SETCHARFORMAT, SCF_DEFAULT, reinterpret_cast<LPARAM>(&format));
    // The dialog's font would otherwise win over the default format.
    ::SendMessageW(hwnd_, EM_SETCHARFORMAT, SCF_ALL, reinterpret_cast<LPARAM>(&format));
}

void ReportView::Clear() {
    if (::GetWindowTextLengthW(hwnd_) > 0) ReplaceWithEmptyTwin();
    ::SetWindowTextW(hwnd_, L"");
    ::SendMessageW(hwnd_, EM_SETSEL, static_cast<WPARAM>(-1), -1);
}

// Wine's rich edit empties itself in a time that grows with the square of
// its lines (a report of 10,000 entries: 15 s against 0.1 s to make a new
// control), so a full view is not emptied but replaced: a new control of the
// same class, id, place, styles, font and format takes the old one's place
// in the dialog's tab order, and the old one goes. The window keeps its
// view; nothing of the old report survives in it.
void ReportView::ReplaceWithEmptyTwin() {
    const HWND old = hwnd_;
    const HWND parent = ::GetParent(old);
    RECT rect{};
    ::GetWindowRect(old, &rect);
    ::MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&rect), 2);
    wchar_t className[64] = L"";
    ::GetClassNameW(old, className, static_cast<int>(std::size(className)));
    const auto style = static_cast<DWORD>(::GetWindowLongW(old, GWL_STYLE));
    const HWND twin = ::CreateWindowExW(
        static_cast<DWORD>(::GetWindowLongW(old, GWL_EXSTYLE)), className, L"", style & ~WS_VISIBLE, rect.left,
        rect.top, rect.right - rect.left, rect.bottom - rect.top, parent,
        reinterpret_cast<HMENU>(static_cast<INT_PTR>(::GetDlgCtrlID(old))),
        reinterpret_cast<HINSTANCE>(::GetWindowLongPtrW(old, GWLP_HINSTANCE)), nullptr);
    if (!twin) return;  // emptied the slow way by the caller

    // The dialog gives its controls its own font as it creates them, and the
    // report format keeps that font's weight and effects: so does the twin.
    // (The control's WM_GETFONT does not give back the font it was given.)
    ::SendMessageW(twin, WM_SETFONT, ::SendMessageW(parent, WM_GETFONT, 0, 0), FALSE);
    ::SendMessageW(twin, EM_SETEVENTMASK, 0, ::SendMessageW(old, EM_GETEVENTMASK, 0, 0));
    ::SetWindowPos(twin, old, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    const bool hadFocus = ::GetFocus() == old;
    Attach(twin);
    SetReportFormat();
    ::DestroyWindow(old);
    if (style & WS_VISIBLE) ::ShowWindow(twin, SW_SHOWNA);
    if (hadFocus) ::SetFocus(twin);
}

void ReportView::Append(std::wstring_view text) {
    if (!gathering_) {
        Insert(std::wstring(text).c_str());
        return;
    }
    // The control reads CR LF as one line break and a CR and an LF inserted
    // apart as two: a piece is never joined to one that ends in CR, so every
    // line break reaches the control as it came.
    if (!gathered_.empty() && gathered_.back() == L'\r') InsertGathered();
    gathered_.append(text);
    if (gathered_.size() >= kGatherChars && gathered_.back() == L'\n') InsertGathered();
}

void ReportView::ShowStart() {
    ::SendMessageW(hwnd_, EM_SETSEL, 0, 0);
    ::SendMessageW(hwnd_, EM_SCROLLCARET, 0, 0);
}

std::wstring ReportView::Text() const { return w32::GetWindowTextString(hwnd_); }

void ReportView::Insert(const wchar_t* text) {
    ::SendMessageW(hwnd_, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(text));
}

void ReportView::InsertGathered() {
    if (gathered_.empty()) return;
    Insert(gathered_.c_str());
    gathered_.clear();
}

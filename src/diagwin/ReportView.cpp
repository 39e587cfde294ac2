#include "diagwin/ReportView.h"

#include <richedit.h>

#include "w32/Text.h"

namespace {
// The control holds 32,767 characters unless told otherwise; a report with a
// large installation directory is far longer.
constexpr LPARAM kTextLimit = 0x7FFFFFFE;
}  // namespace

void ReportView::Attach(HWND control) {
    hwnd_ = control;
    ::SendMessageW(hwnd_, EM_EXLIMITTEXT, 0, kTextLimit);
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
    ::SetWindowTextW(hwnd_, L"");
    ::SendMessageW(hwnd_, EM_SETSEL, static_cast<WPARAM>(-1), -1);
}

void ReportView::Append(std::wstring_view text) {
    const std::wstring piece(text);
    ::SendMessageW(hwnd_, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(piece.c_str()));
}

void ReportView::ShowStart() {
    ::SendMessageW(hwnd_, EM_SETSEL, 0, 0);
    ::SendMessageW(hwnd_, EM_SCROLLCARET, 0, 0);
}

std::wstring ReportView::Text() const { return w32::GetWindowTextString(hwnd_); }

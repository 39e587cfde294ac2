#include "w32/Dialog.h"

#include <commctrl.h>

#include "w32/Application.h"
#include "w32/ExceptionBarrier.h"
#include "w32/Text.h"

namespace w32 {
namespace {
constexpr wchar_t kOwnerDrawProperty[] = L"w32.OwnerDrawControl";
constexpr UINT_PTR kSubclassId = 0x0D1A6;

bool ReturnsValueDirectly(UINT message) {
    switch (message) {
    case WM_CTLCOLORMSGBOX: case WM_CTLCOLOREDIT: case WM_CTLCOLORLISTBOX: case WM_CTLCOLORBTN:
    case WM_CTLCOLORDLG: case WM_CTLCOLORSCROLLBAR: case WM_CTLCOLORSTATIC: case WM_COMPAREITEM:
    case WM_VKEYTOITEM: case WM_CHARTOITEM: case WM_QUERYDRAGICON: case WM_INITDIALOG:
        return true;
    default:
        return false;
    }
}
}  // namespace

// ---- OwnerDrawControl ----------------------------------------------------

OwnerDrawControl::~OwnerDrawControl() {
    if (hwnd_ && ::IsWindow(hwnd_)) {
        ::RemoveWindowSubclass(hwnd_, SubclassProc, kSubclassId);
        ::RemovePropW(hwnd_, kOwnerDrawProperty);
    }
}

bool OwnerDrawControl::Attach(HWND control) {
    if (!control) return false;
    hwnd_ = control;
    ::SetPropW(control, kOwnerDrawProperty, this);
    return ::SetWindowSubclass(control, SubclassProc, kSubclassId, reinterpret_cast<DWORD_PTR>(this)) != FALSE;
}

OwnerDrawControl* OwnerDrawControl::FromHandle(HWND control) {
    return static_cast<OwnerDrawControl*>(::GetPropW(control, kOwnerDrawProperty));
}

bool OwnerDrawControl::OnControlMessage(UINT, WPARAM, LPARAM, LRESULT&) { return false; }

LRESULT CALLBACK OwnerDrawControl::SubclassProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam,
                                                UINT_PTR, DWORD_PTR data) {
    auto* self = reinterpret_cast<OwnerDrawControl*>(data);
    if (message == WM_NCDESTROY) {
        ::RemoveWindowSubclass(hwnd, SubclassProc, kSubclassId);
        ::RemovePropW(hwnd, kOwnerDrawProperty);
        self->hwnd_ = nullptr;
        return ::DefSubclassProc(hwnd, message, wParam, lParam);
    }
    LRESULT result = 0;
    bool handled = false;
    // A handler that throws leaves the message to the control itself.
    if (!RunWithBarrier("SubclassProc", [&] { handled = self->OnControlMessage(message, wParam, lParam, result); }))
        ShowFailureNotice("SubclassProc");
    if (handled) return result;
    return ::DefSubclassProc(hwnd, message, wParam, lParam);
}

// ---- Dialog --------------------------------------------------------------

Dialog::Dialog(UINT templateId, HWND parent) : templateId_(templateId), parent_(parent) {}

Dialog::~Dialog() {
    if (hwnd_) {
        ::SetWindowLongPtrW(hwnd_, DWLP_USER, 0);
        ::DestroyWindow(hwnd_);
    }
}

Dialog* Dialog::FromHandle(HWND hwnd) {
    if (!hwnd) return nullptr;
    if (reinterpret_cast<DLGPROC>(::GetWindowLongPtrW(hwnd, DWLP_DLGPROC)) != DialogProc) return nullptr;
    return reinterpret_cast<Dialog*>(::GetWindowLongPtrW(hwnd, DWLP_USER));
}

INT_PTR Dialog::DoModal() {
    HINSTANCE instance = CurrentApp() ? CurrentApp()->Instance() : ::GetModuleHandleW(nullptr);
    HWND owner = parent_;
    const bool reenableOwner = owner && ::IsWindowEnabled(owner);
    if (reenableOwner) ::EnableWindow(owner, FALSE);

    modal_ = true;
    endRequested_ = false;
    result_ = -1;
    HWND hwnd = ::CreateDialogParamW(instance, MAKEINTRESOURCEW(templateId_), owner, DialogProc,
                                     reinterpret_cast<LPARAM>(this));
    if (hwnd) {
        if (!endRequested_ && !::IsWindowVisible(hwnd)) ::ShowWindow(hwnd, SW_SHOW);
        MSG message;
        while (!endRequested_) {
            const BOOL got = ::GetMessageW(&message, nullptr, 0, 0);
            if (got == 0) {
                ::PostQuitMessage(static_cast<int>(message.wParam));
                break;
            }
            if (got == -1) break;
            if (!PreTranslate(message)) {
                ::TranslateMessage(&message);
                ::DispatchMessageW(&message);
            }
        }
    }
    if (reenableOwner) ::EnableWindow(owner, TRUE);
    if (owner && ::GetActiveWindow() == hwnd_) ::SetActiveWindow(owner);
    if (hwnd_) ::DestroyWindow(hwnd_);
    modal_ = false;
    return result_;
}

bool Dialog::Create(UINT templateId, HWND owner) {
    templateId_ = templateId;
    parent_ = owner;
    modal_ = false;
    HINSTANCE instance = CurrentApp() ? CurrentApp()->Instance() : ::GetModuleHandleW(nullptr);
    return ::CreateDialogParamW(instance, MAKEINTRESOURCEW(templateId), owner, DialogProc,
                                reinterpret_cast<LPARAM>(this)) != nullptr;
}

void Dialog::EndDialog(INT_PTR result) {
    result_ = result;
    endRequested_ = true;
    if (hwnd_) ::PostMessageW(hwnd_, WM_NULL, 0, 0);  // wake the modal loop
}

std::wstring Dialog::Text() const { return GetWindowTextString(hwnd_); }

void Dialog::SetText(std::wstring_view text) {
    const std::wstring value(text);
    ::SetWindowTextW(hwnd_, value.c_str());
}

void Dialog::EnableToolTips() {
    if (tooltip_) return;
    HINSTANCE instance = CurrentApp() ? CurrentApp()->Instance() : ::GetModuleHandleW(nullptr);
    tooltip_ = ::CreateWindowExW(0, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP, CW_USEDEFAULT,
                                 CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, hwnd_, nullptr, instance, nullptr);
    if (!tooltip_) return;
    for (HWND child = ::GetWindow(hwnd_, GW_CHILD); child; child = ::GetWindow(child, GW_HWNDNEXT)) {
        TOOLINFOW tool{};
        tool.cbSize = sizeof(tool);
        tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
        tool.hwnd = hwnd_;
        tool.uId = reinterpret_cast<UINT_PTR>(child);
        tool.lpszText = LPSTR_TEXTCALLBACKW;
        ::SendMessageW(tooltip_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    }
}

bool Dialog::OnInitDialog() { return true; }

bool Dialog::OnCommand(WORD id, WORD code, HWND) {
    if (code != BN_CLICKED && code != 0) return false;
    if (id == IDOK) {
        OnOK();
        return true;
    }
    if (id == IDCANCEL) {
        OnCancel();
        return true;
    }
    return false;
}

void Dialog::OnOK() {
    if (modal_)
        EndDialog(IDOK);
    else
        ::DestroyWindow(hwnd_);
}

void Dialog::OnCancel() {
    if (modal_)
        EndDialog(IDCANCEL);
    else
        ::DestroyWindow(hwnd_);
}

bool Dialog::OnSysCommand(WPARAM, LPARAM) { return false; }
bool Dialog::OnSize(UINT, int, int) { return false; }
bool Dialog::OnNotify(const NMHDR&, LRESULT&) { return false; }
bool Dialog::OnMessage(UINT, WPARAM, LPARAM, LRESULT&) { return false; }

bool Dialog::PreTranslate(MSG& message) {
    if (message.message < WM_KEYFIRST || message.message > WM_KEYLAST) return false;
    HWND root = ::GetAncestor(message.hwnd, GA_ROOT);
    return root && FromHandle(root) && ::IsDialogMessageW(root, &message);
}

INT_PTR CALLBACK Dialog::DialogProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    Dialog* self = nullptr;
    if (message == WM_INITDIALOG) {
        self = reinterpret_cast<Dialog*>(lParam);
        ::SetWindowLongPtrW(hwnd, DWLP_USER, lParam);
        self->hwnd_ = hwnd;
    } else {
        self = reinterpret_cast<Dialog*>(::GetWindowLongPtrW(hwnd, DWLP_USER));
    }
    if (!self) return FALSE;
    if (message == WM_NCDESTROY) {
        self->hwnd_ = nullptr;
        self->tooltip_ = nullptr;
        ::SetWindowLongPtrW(hwnd, DWLP_USER, 0);
        return FALSE;
    }
    // A handler that throws leaves the message unhandled.
    INT_PTR result = FALSE;
    if (!RunWithBarrier("DialogProc", [&] { result = self->Dispatch(message, wParam, lParam); }))
        ShowFailureNotice("DialogProc");
    return result;
}

INT_PTR Dialog::Dispatch(UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT result = 0;
    bool handled = false;
    switch (message) {
    case WM_INITDIALOG:
        return OnInitDialog() ? TRUE : FALSE;
    case WM_COMMAND:
        handled = OnCommand(LOWORD(wParam), HIWORD(wParam), reinterpret_cast<HWND>(lParam));
        break;
    case WM_CLOSE:
        handled = OnClose();
        break;
    case WM_SYSCOMMAND:
        handled = OnSysCommand(wParam, lParam);
        break;
    case WM_PAINT:
        handled = OnPaint();
        break;
    case WM_SIZE:
        handled = OnSize(static_cast<UINT>(wParam), LOWORD(lParam), HIWORD(lParam));
        break;
    case WM_NOTIFY:
        handled = OnNotify(*reinterpret_cast<const NMHDR*>(lParam), result);
        break;
    case WM_DRAWITEM: {
        const auto* item = reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
        if (OwnerDrawControl* control = OwnerDrawControl::FromHandle(item->hwndItem)) {
            control->DrawItem(*item);
            result = TRUE;
            handled = true;
        }
        break;
    }
    default:
        handled = OnMessage(message, wParam, lParam, result);
        break;
    }
    if (!handled) return FALSE;
    if (ReturnsValueDirectly(message)) return static_cast<INT_PTR>(result);
    if (hwnd_) ::SetWindowLongPtrW(hwnd_, DWLP_MSGRESULT, result);
    return TRUE;
}

}  // namespace w32

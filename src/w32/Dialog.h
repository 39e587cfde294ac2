// A dialog window built from a template, with `this` kept in the window and
// its messages dispatched to a few virtual handlers. Modal dialogs run their
// own message loop, which gives keyboard navigation to every dialog of ours,
// modeless ones included.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace w32 {

// A control that draws itself: the dialog passes WM_DRAWITEM on to it.
class OwnerDrawControl {
public:
    virtual ~OwnerDrawControl();
    // Binds the object to the control window and subclasses it.
    bool Attach(HWND control);
    HWND Hwnd() const { return hwnd_; }
    virtual void DrawItem(const DRAWITEMSTRUCT& item) = 0;

    static OwnerDrawControl* FromHandle(HWND control);

protected:
    // Messages of the control itself; return true when handled.
    virtual bool OnControlMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result);

private:
    static LRESULT CALLBACK SubclassProc(HWND, UINT, WPARAM, LPARAM, UINT_PTR, DWORD_PTR);
    HWND hwnd_ = nullptr;
};

class Dialog {
public:
    explicit Dialog(UINT templateId = 0, HWND parent = nullptr);
    virtual ~Dialog();
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    // Runs the dialog modally and returns the value given to EndDialog, or -1
    // when the window could not be created.
    INT_PTR DoModal();
    // Creates the dialog modeless; its owner stays enabled.
    bool Create(UINT templateId, HWND owner);

    HWND Hwnd() const { return hwnd_; }
    HWND Item(int id) const { return ::GetDlgItem(hwnd_, id); }
    bool IsModal() const { return modal_; }
    void EndDialog(INT_PTR result);

    std::wstring Text() const;
    void SetText(std::wstring_view text);

    // Shows tooltips for the child controls: the tooltip asks the dialog for
    // each text through WM_NOTIFY/TTN_NEEDTEXTW (handled by OnNotify).
    void EnableToolTips();

    static Dialog* FromHandle(HWND hwnd);

protected:
    // Return true to let the dialog manager set the focus.
    virtual bool OnInitDialog();
    // Default: IDOK calls OnOK, IDCANCEL calls OnCancel.
    virtual bool OnCommand(WORD id, WORD code, HWND control);
    virtual void OnOK();
    virtual void OnCancel();

    // Each returns true when handled; false lets the default processing run.
    virtual bool OnClose() { return false; }
    virtual bool OnSysCommand(WPARAM id, LPARAM lParam);
    virtual bool OnPaint() { return false; }
    virtual bool OnSize(UINT type, int width, int height);
    virtual bool OnNotify(const NMHDR& header, LRESULT& result);
    // Any message not covered above; return true when handled.
    virtual bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result);

private:
    static INT_PTR CALLBACK DialogProc(HWND, UINT, WPARAM, LPARAM);
    INT_PTR Dispatch(UINT message, WPARAM wParam, LPARAM lParam);
    static bool PreTranslate(MSG& message);

    UINT templateId_;
    HWND parent_;
    HWND hwnd_ = nullptr;
    HWND tooltip_ = nullptr;
    bool modal_ = false;
    bool endRequested_ = false;
    INT_PTR result_ = 0;
};

}  // namespace w32

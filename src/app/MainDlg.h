// The main window: the System report button, the title with the privilege
// mark and the version, and the system menu with the relaunch as
// administrator and the About box.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <memory>

#include "ovsystem/OVButtons.h"
#include "ovsystem/OVDialog.h"

class CDiagWinDlg;

// The name under which the main window's placement is saved.
inline constexpr wchar_t kMainWindowStateName[] = L"OrvaneDiagnostics";

// Appends the elevation entry and, when its text exists, the About entry.
void AppendMainSystemMenuEntries(HMENU menu, bool elevated);

class CMainDlg : public OVDialog {
public:
    CMainDlg(UINT templateId, HWND parent = nullptr);
    ~CMainDlg() override;

    // Opens the Diagnostics window with a freshly generated report.
    void OnSystemReport();
    CDiagWinDlg* DiagnosticsWindow() const { return m_pDiagWinDlg.get(); }

    // TTN_NEEDTEXTW: the text of controls 1006 to 1015, at most 79 characters.
    virtual BOOL OnToolTipNotify(UINT id, NMHDR* header, LRESULT* result);

protected:
    bool OnInitDialog() override;
    void OnOK() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;
    bool OnClose() override;
    bool OnSysCommand(WPARAM id, LPARAM lParam) override;
    bool OnPaint() override;
    bool OnNotify(const NMHDR& header, LRESULT& result) override;
    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) override;

private:
    void ComposeTitle(bool elevated);
    void ShowAboutBox();
    void RelaunchAsAdministrator();

    CBitmapButtonWithHot m_btnSystemReport;
    HICON m_hIcon;
    // Created on the first report, hidden rather than destroyed, deleted with us.
    std::unique_ptr<CDiagWinDlg> m_pDiagWinDlg;
};

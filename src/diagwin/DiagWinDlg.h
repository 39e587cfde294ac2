// The Diagnostics window: the report in a read-only fixed-pitch view, OK and
// Save. Created once by the main window, hidden (never destroyed) on close.
#pragma once

#include <windows.h>

#include "collect/SystemReport.h"
#include "diagwin/ReportView.h"
#include "ovsystem/OVButtons.h"
#include "w32/Dialog.h"

class CMainDlg;

class CDiagWinDlg : public w32::Dialog {
public:
    explicit CDiagWinDlg(CMainDlg* mainDlg);
    ~CDiagWinDlg() override;

    // Empties the view and writes a fresh report into it. False when the
    // local time cannot be had: the view then stays empty.
    bool GenerateSystemReport(const ReportSources& sources = {});
    // Refills the view and shows the window in front; when no report could
    // be made, tells the user why over the empty view.
    void ShowFreshReport(const ReportSources& sources = {});
    // Asks for a file name and writes the view's text with its checksum.
    void OnSaveReport();

    ReportView& View() { return m_reportView; }

protected:
    bool OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;
    bool OnClose() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;

private:
    void DoDataExchange();

    COVRoundRectButton m_btnOK;
    COVRoundRectButton m_btnSave;
    CMainDlg* m_pMainDlg;
    ReportView m_reportView;
};

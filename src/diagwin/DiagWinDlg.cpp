#include "diagwin/DiagWinDlg.h"

#include <commdlg.h>

#include "app/DiagnosticsApp.h"
#include "diagwin/ReportFile.h"
#include "diagwin/SaveLocation.h"
#include "report/SystemReport.h"
#include "resource.h"
#include "w32/FileDialog.h"
#include "w32/MessageBox.h"

namespace {
constexpr Bilingual kTitle{L"Rapport Système", L"System report"};
constexpr Bilingual kSaveCaption{L"Sauver...", L"Save..."};
constexpr Bilingual kFilter{L"Fichiers textes (*.txt)|*.txt||", L"Text Files (*.txt)|*.txt||"};
constexpr wchar_t kFolderSection[] = L"Folder";
constexpr wchar_t kReportEntry[] = L"report";
}  // namespace

CDiagWinDlg::CDiagWinDlg(CMainDlg* mainDlg) : m_pMainDlg(mainDlg) {}

CDiagWinDlg::~CDiagWinDlg() = default;

void CDiagWinDlg::DoDataExchange() {
    m_btnOK.Attach(Item(IDOK));
    m_btnSave.Attach(Item(IDC_SAVE_REPORT));
    m_reportView.Attach(Item(IDC_REPORT_VIEW));
}

bool CDiagWinDlg::OnInitDialog() {
    DoDataExchange();
    SetText(Tr(kTitle));
    ::SetWindowTextW(Item(IDC_SAVE_REPORT), Tr(kSaveCaption));
    m_reportView.SetReportFormat();
    return true;
}

void CDiagWinDlg::GenerateSystemReport() {
    // Drawn once, when the report is whole, and shown from its start.
    const ReportView::Refill refill(m_reportView);
    WriteSystemReport(m_reportView);
}

// OK, Enter, Esc and the close box only hide the window: it keeps its report.
void CDiagWinDlg::OnOK() { ::ShowWindow(Hwnd(), SW_HIDE); }
void CDiagWinDlg::OnCancel() { ::ShowWindow(Hwnd(), SW_HIDE); }
bool CDiagWinDlg::OnClose() {
    ::ShowWindow(Hwnd(), SW_HIDE);
    return true;
}

bool CDiagWinDlg::OnCommand(WORD id, WORD code, HWND control) {
    if (id == IDC_SAVE_REPORT && code == BN_CLICKED) {
        OnSaveReport();
        return true;
    }
    return w32::Dialog::OnCommand(id, code, control);
}

void CDiagWinDlg::OnSaveReport() {
    w32::Application* app = w32::CurrentApp();
    const std::wstring remembered = app->GetProfileString(kFolderSection, kReportEntry);
    const auto chosen = w32::ShowSaveAsDialog(nullptr, ProposedReportPath(remembered), Tr(kFilter),
                                              OFN_HIDEREADONLY | OFN_OVERWRITEPROMPT);
    if (!chosen) return;

    // Remembered before the file is opened, so a failed write keeps it too.
    if (const auto folder = FolderToRemember(*chosen)) app->WriteProfileString(kFolderSection, kReportEntry, *folder);

    if (!WriteReportFile(*chosen, m_reportView.Text())) w32::ShowMessageBox(Tr(kCannotOpenReportFile), MB_ICONSTOP | MB_OK);
}

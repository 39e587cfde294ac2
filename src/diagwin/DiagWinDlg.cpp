#include "diagwin/DiagWinDlg.h"

#include <commdlg.h>

#include "collect/ReportFile.h"
#include "collect/SystemReport.h"
#include "diagwin/SaveLocation.h"
#include "lang/Language.h"
#include "resource.h"
#include "w32/Application.h"
#include "w32/FileDialog.h"
#include "w32/MessageBox.h"

namespace {
constexpr Bilingual kTitle{L"Rapport Système", L"System report"};
constexpr Bilingual kSaveCaption{L"Sauver...", L"Save..."};
constexpr Bilingual kFilter{L"Fichiers textes (*.txt)|*.txt||", L"Text Files (*.txt)|*.txt||"};
constexpr Bilingual kNoLocalTime{
    L"Le rapport n'a pas pu être établi : l'heure locale n'a pas pu être lue. "
    L"Vérifiez la date et l'heure de cet ordinateur.",
    L"The report could not be made: the local time could not be read. Check this computer's date and time."};
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

bool CDiagWinDlg::GenerateSystemReport(const ReportSources& sources) {
    // Drawn once, when the report is whole, and shown from its start.
    const ReportView::Refill refill(m_reportView);
    return WriteSystemReport(m_reportView, sources);
}

void CDiagWinDlg::ShowFreshReport(const ReportSources& sources) {
    // The report is made here, before the window shows; the window waits for it.
    const bool made = GenerateSystemReport(sources);
    const bool alreadyShown = ::IsWindowVisible(Hwnd()) != FALSE;
    ::ShowWindow(Hwnd(), SW_SHOW);
    // Showing a window already on screen neither activates it nor brings it forward.
    if (alreadyShown) ::SetForegroundWindow(Hwnd());
    // An empty window alone would leave the user guessing.
    if (!made) w32::ShowMessageBox(Tr(kNoLocalTime), MB_ICONSTOP | MB_OK);
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

    const ReportFileOutcome outcome = WriteReportFile(*chosen, m_reportView.Text());
    if (outcome != ReportFileOutcome::kWritten)
        w32::ShowMessageBox(Tr(ReportFileFailureMessage(outcome)), MB_ICONSTOP | MB_OK);
}

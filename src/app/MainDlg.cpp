#include "app/MainDlg.h"

#include <shellapi.h>

#include "app/DiagnosticsApp.h"
#include "app/Title.h"
#include "diagwin/DiagWinDlg.h"
#include "ovsystem/OVAbout.h"
#include "ovsystem/OVPackage.h"
#include "ovsystem/OVString.h"
#include "ovsystem/OVWindowState.h"
#include "resource.h"
#include "w32/Elevation.h"
#include "w32/MessageBox.h"
#include "w32/Scoped.h"
#include "w32/Text.h"

namespace {
constexpr Bilingual kLaunchedAsAdministrator{L"Exécution en Administrateur", L"Launched as Administrator"};
constexpr Bilingual kRelaunchAsAdministrator{L"Relancer en Administrateur...", L"Relaunch as Administrator..."};
constexpr Bilingual kRelaunchFailed{L"Le lancement en mode Administrateur a échoué !",
                                    L"Launch in Administrator mode has failed!"};
constexpr Bilingual kCloseOldInstance{L"Fermer l'instance non Administrateur ?",
                                      L"Close non Administrator instance?"};

// Controls whose window text serves as their tooltip.
constexpr int kFirstTooltipControl = 1006;
constexpr int kLastTooltipControl = 1015;

// This window keeps every control where the template puts it.
constexpr ResizePolicy kResizePolicies[] = {kOVEndOfPolicies};

HINSTANCE AppInstance() {
    return w32::CurrentApp() ? w32::CurrentApp()->Instance() : ::GetModuleHandleW(nullptr);
}
}  // namespace

CMainDlg::CMainDlg(UINT templateId, HWND parent)
    : OVDialog(templateId, parent), m_hIcon(::LoadIconW(AppInstance(), MAKEINTRESOURCEW(IDR_MAINFRAME))) {}

CMainDlg::~CMainDlg() = default;

bool CMainDlg::OnInitDialog() {
    OVDialog::OnInitDialog();
    SetResizePolicies(kResizePolicies);

    const bool elevated = IsProcessElevated();
    ComposeTitle(elevated);
    if (HMENU menu = ::GetSystemMenu(Hwnd(), FALSE)) AppendMainSystemMenuEntries(menu, elevated);

    ::SendMessageW(Hwnd(), WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(m_hIcon));
    ::SendMessageW(Hwnd(), WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(m_hIcon));

    EnableToolTips();
    m_btnSystemReport.Attach(Item(IDC_SYSTEM_REPORT));
    m_btnSystemReport.loadBitmapsRange(IDB_SYSTEM_REPORT, 5);
    return true;
}

void CMainDlg::ComposeTitle(bool elevated) {
    const std::wstring version = MFCStringWithOVString(OVGetPackageVersionWithBuild());
    SetText(ComposeMainTitle(Text(), elevated, IsEnglish(), version));
}

void AppendMainSystemMenuEntries(HMENU menu, bool elevated) {
    ::AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    if (elevated)
        // Disabled but not greyed: it states a fact rather than offering a choice.
        ::AppendMenuW(menu, MF_STRING | MF_DISABLED, IDM_RUN_AS_ADMIN, Tr(kLaunchedAsAdministrator));
    else
        ::AppendMenuW(menu, MF_STRING, IDM_RUN_AS_ADMIN, Tr(kRelaunchAsAdministrator));

    const std::wstring about = w32::LoadResourceString(AppInstance(), IsEnglish() ? IDS_ABOUTBOX_EN : IDS_ABOUTBOX_FR);
    if (!about.empty()) {
        ::AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
        ::AppendMenuW(menu, MF_STRING, IDM_ABOUTBOX, about.c_str());
    }
}

// Enter must never close the main window.
void CMainDlg::OnOK() {}

bool CMainDlg::OnCommand(WORD id, WORD code, HWND control) {
    if (id == IDC_SYSTEM_REPORT && code == BN_CLICKED) {
        OnSystemReport();
        return true;
    }
    return OVDialog::OnCommand(id, code, control);
}

bool CMainDlg::OnClose() {
    saveWindowState(Hwnd(), kMainWindowStateName);
    return false;  // the dialog manager turns the close into Cancel
}

bool CMainDlg::OnSysCommand(WPARAM id, LPARAM) {
    // Compared as it arrives: these are our own commands, not SC_* values.
    switch (id) {
    case IDM_ABOUTBOX:
        ShowAboutBox();
        return true;
    case IDM_SYSTEM_REPORT:
        OnSystemReport();
        return true;
    case IDM_RUN_AS_ADMIN:
        RelaunchAsAdministrator();
        return true;
    default:
        return false;
    }
}

void CMainDlg::ShowAboutBox() {
    CAboutDlg about(nullptr);
    about.DoModal();
}

void CMainDlg::RelaunchAsAdministrator() {
    const std::wstring path = w32::GetModulePath(nullptr);
    const auto result = reinterpret_cast<INT_PTR>(
        ::ShellExecuteW(nullptr, L"runas", path.c_str(), nullptr, nullptr, SW_SHOWNORMAL));
    if (result <= 32) {
        w32::ShowMessageBox(Tr(kRelaunchFailed), MB_ICONSTOP | MB_OK);
        return;
    }
    if (w32::ShowMessageBox(Tr(kCloseOldInstance), MB_ICONWARNING | MB_YESNO) == IDYES) EndDialog(IDCANCEL);
}

void CMainDlg::OnSystemReport() {
    if (!m_pDiagWinDlg) {
        m_pDiagWinDlg = std::make_unique<CDiagWinDlg>(this);
        m_pDiagWinDlg->Create(IDD_DIAGNOSTICS, Hwnd());
    }
    m_pDiagWinDlg->ShowFreshReport();
}

bool CMainDlg::OnPaint() {
    if (!::IsIconic(Hwnd())) return OVDialog::OnPaint();
    w32::ScopedPaint paint(Hwnd());
    ::SendMessageW(Hwnd(), WM_ICONERASEBKGND, reinterpret_cast<WPARAM>(paint.Get()), 0);
    RECT client{};
    ::GetClientRect(Hwnd(), &client);
    const int x = (client.right - client.left - ::GetSystemMetrics(SM_CXICON) + 1) / 2;
    const int y = (client.bottom - client.top - ::GetSystemMetrics(SM_CYICON) + 1) / 2;
    ::DrawIcon(paint.Get(), x, y, m_hIcon);
    return true;
}

bool CMainDlg::OnNotify(const NMHDR& header, LRESULT& result) {
    if (header.code != TTN_NEEDTEXTW) return OVDialog::OnNotify(header, result);
    return OnToolTipNotify(0, const_cast<NMHDR*>(&header), &result) != FALSE;
}

BOOL CMainDlg::OnToolTipNotify(UINT, NMHDR* header, LRESULT*) {
    auto* request = reinterpret_cast<NMTTDISPINFOW*>(header);
    if (!(request->uFlags & TTF_IDISHWND)) return FALSE;
    HWND tool = reinterpret_cast<HWND>(header->idFrom);
    const int id = ::GetDlgCtrlID(tool);
    if (id < kFirstTooltipControl || id > kLastTooltipControl) return FALSE;
    const std::wstring text = TooltipTextFor(w32::GetWindowTextString(tool));
    const std::size_t capacity = sizeof(request->szText) / sizeof(request->szText[0]);
    text.copy(request->szText, capacity - 1);
    request->szText[std::min(text.size(), capacity - 1)] = L'\0';
    request->hinst = nullptr;
    return TRUE;
}

bool CMainDlg::OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
    if (message == WM_QUERYDRAGICON) {
        result = reinterpret_cast<LRESULT>(m_hIcon);
        return true;
    }
    return OVDialog::OnMessage(message, wParam, lParam, result);
}

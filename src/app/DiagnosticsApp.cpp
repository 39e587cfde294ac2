#include "app/DiagnosticsApp.h"

#include <windows.h>
#include <commctrl.h>

#include <clocale>
#include <cwchar>

#include "app/CommandLine.h"
#include "app/ExitStatus.h"
#include "app/HeadlessReport.h"
#include "app/MainDlg.h"
#include "ovsystem/OVPackage.h"
#include "resource.h"
#include "w32/Gdiplus.h"
#include "w32/MessageBox.h"
#include "w32/Scoped.h"
#include "w32/SystemLibrary.h"

namespace {
constexpr int kDefaultDpi = 96;
constexpr Bilingual kInvalidParameters{L"Paramètres de lancement invalides !", L"Invalid launch parameters!"};

int MeasureScreenDpi() {
    w32::ScopedWindowDC screen(nullptr);
    return ::GetDeviceCaps(screen.Get(), LOGPIXELSX);
}
}  // namespace

CDiagnosticsApp::CDiagnosticsApp() = default;

bool CDiagnosticsApp::InitInstance() {
    if (!w32::Application::InitInstance()) return false;

    // GDI+ is only wanted where the screen is scaled.
    if (MeasureScreenDpi() != kDefaultDpi) StartGdiplus();

    wchar_t key[64];
    std::swprintf(key, sizeof(key) / sizeof(key[0]), kRegistryKeyFormat, kSuiteMajorVersion);
    SetRegistryKey(key);

    ChooseLanguage();
    if (HandleCommandLine()) return false;

    // The Diagnostics window's view is a Rich Edit 5.0 control ("RichEdit50W").
    w32::LoadSystemLibrary(L"msftedit.dll");
    INITCOMMONCONTROLSEX controls{sizeof(controls), ICC_STANDARD_CLASSES | ICC_BAR_CLASSES};
    ::InitCommonControlsEx(&controls);

    RunMainDialog();
    return false;
}

void CDiagnosticsApp::StartGdiplus() {
    // Whether it started is deliberately not used here; the image buttons ask GDI+ itself.
    w32::StartGdiplus(m_gdiplusToken);
}

void CDiagnosticsApp::StopGdiplus() { w32::StopGdiplus(m_gdiplusToken); }

void CDiagnosticsApp::ChooseLanguage() {
    std::wstring choice = GetProfileString(L"System", L"forcedLocale");
    if (choice.empty()) {
        // Switches the runtime library to the user's locale, e.g. "French_France.1252".
        const char* localeName = std::setlocale(LC_ALL, "");
        choice = LanguagePartOfLocaleName(localeName ? localeName : "");
    }
    const bool english = IsEnglishChoice(choice);
    m_bEnglish = english ? 1 : 0;
    SetInterfaceLanguage(english);
    mainTemplateId_ = english ? IDD_MAIN_EN : IDD_MAIN_FR;
    OVSetLanguage(english);
}

bool CDiagnosticsApp::HandleCommandLine() {
    if (CommandLineText().empty()) return false;
    const CommandLine commandLine = ParseCommandLine(CommandLineText());
    const std::wstring usage = UsageText(m_bEnglish != 0, Name() + L".exe");
    // One report file at most: a second path is more likely a missing quote.
    if (commandLine.invalid || commandLine.arguments.size() > 1) {
        w32::ShowMessageBox(kInvalidParameters.Pick(m_bEnglish != 0), MB_ICONSTOP | MB_OK);
        w32::ShowMessageBox(usage, MB_ICONINFORMATION | MB_OK);
        SetExitCode(kExitInvalidCommandLine);
        return true;
    }
    if (commandLine.help) {
        w32::ShowMessageBox(usage, MB_ICONINFORMATION | MB_OK);
        return true;
    }
    if (commandLine.arguments.size() == 1) {
        SetExitCode(WriteHeadlessReport(commandLine.arguments.front()));
        return true;
    }
    return false;
}

void CDiagnosticsApp::RunMainDialog() {
    CMainDlg dialog(mainTemplateId_, nullptr);
    SetMainDialog(&dialog);
    dialog.DoModal();
    SetMainDialog(nullptr);
}

int CDiagnosticsApp::ExitInstance() {
    // Measured again: the process is DPI-aware, so both readings agree.
    if (MeasureScreenDpi() != kDefaultDpi) StopGdiplus();
    return w32::Application::ExitInstance();
}

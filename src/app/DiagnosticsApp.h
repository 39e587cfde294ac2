// The application object of Orvane Diagnostics.
#pragma once

#include <cstdint>

#include "lang/Language.h"
#include "w32/Application.h"
#include "w32/Scoped.h"

class CDiagnosticsApp : public w32::Application {
public:
    CDiagnosticsApp();

    // Nonzero: English texts; zero: French texts. Settled by InitInstance
    // before the first window and never changed afterwards.
    int m_bEnglish = 1;
    // The token from GdiplusStartup; meaningful only when GDI+ was started.
    std::uintptr_t m_gdiplusToken = 0;

protected:
    bool InitInstance() override;
    int ExitInstance() override;

private:
    void StartGdiplus();
    void StopGdiplus();
    void ChooseLanguage();
    // True when the command line asks the program to end before its window.
    bool HandleCommandLine();
    void RunMainDialog();
    UINT mainTemplateId_ = 0;
};

// The key under HKEY_CURRENT_USER\Software that holds the settings.
inline constexpr wchar_t kRegistryKeyFormat[] = L"Orvane Software V%d";
inline constexpr int kSuiteMajorVersion = 9;

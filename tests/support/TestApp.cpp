#include "support/TestApp.h"

#include <windows.h>
#include <commctrl.h>

#include <gtest/gtest.h>

#include "ovsystem/OVPackage.h"

namespace {
CDiagnosticsApp g_app;
}

CDiagnosticsApp& TestApp() { return g_app; }

ScopedLanguage::ScopedLanguage(bool english) : previous_(g_app.m_bEnglish) {
    g_app.m_bEnglish = english ? 1 : 0;
    SetInterfaceLanguage(english);
    OVSetLanguage(english);
}

ScopedLanguage::~ScopedLanguage() {
    g_app.m_bEnglish = previous_;
    SetInterfaceLanguage(previous_ != 0);
    OVSetLanguage(previous_ != 0);
}

int main(int argc, char** argv) {
    g_app.Initialise(::GetModuleHandleW(nullptr), L"");
    g_app.SetRegistryKey(kTestRegistryKey);
    ::LoadLibraryW(L"msftedit.dll");
    INITCOMMONCONTROLSEX controls{sizeof(controls), ICC_STANDARD_CLASSES | ICC_BAR_CLASSES};
    ::InitCommonControlsEx(&controls);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

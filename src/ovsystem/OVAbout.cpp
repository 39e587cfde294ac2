#include "ovsystem/OVAbout.h"

#include <string>

#include "resource.h"
#include "ovsystem/OVPackage.h"

namespace {
// French elides "de" before a vowel: "À propos d'Orvane Diagnostics".
std::wstring AboutTitle(bool english, const std::wstring& name) {
    if (english) return L"About " + name;
    const bool vowel = !name.empty() && std::wstring_view(L"AEIOUYaeiouy").find(name[0]) != std::wstring_view::npos;
    return (vowel ? L"À propos d'" : L"À propos de ") + name;
}
}  // namespace

CWelcomeDlg::CWelcomeDlg(HWND parent) : w32::Dialog(IDD_OV_ABOUT, parent) {}

bool CWelcomeDlg::OnInitDialog() {
    const bool english = OVIsEnglish();
    const std::wstring name = OVGetPackageString(L"FileDescription");
    const std::wstring version = MFCStringWithOVString(OVGetPackageVersionWithBuild());
    const std::wstring copyright = OVGetPackageString(L"LegalCopyright");

    SetText(AboutTitle(english, name));
    ::SetDlgItemTextW(Hwnd(), IDC_OV_ABOUT_NAME, name.c_str());
    ::SetDlgItemTextW(Hwnd(), IDC_OV_ABOUT_VERSION, ((english ? L"Version " : L"Version ") + version).c_str());
    const std::wstring rights = copyright + (english ? L". All rights reserved." : L". Tous droits réservés.");
    ::SetDlgItemTextW(Hwnd(), IDC_OV_ABOUT_COPYRIGHT, rights.c_str());
    return true;
}

CAboutDlg::CAboutDlg(HWND parent) : CWelcomeDlg(parent) {}

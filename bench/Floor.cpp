// The floor of the time-to-report benchmark: what any program of ours pays
// before it writes a single line. It starts like the program (same runtime,
// manifest and imported libraries), loads the libraries that the report
// brings in at run time (the rich edit, WMI's in-process client, the IP
// helper, the version and shell libraries) and ends with status 0.
#include <winsock2.h>
#include <windows.h>
#include <commctrl.h>
#include <commdlg.h>
#include <iphlpapi.h>
#include <objbase.h>
#include <oleauto.h>
#include <shlobj.h>

namespace {
// Loaded by name, as the program or COM loads them.
constexpr const wchar_t* kRunTimeLibraries[] = {
    L"msftedit.dll",  // the report view's Rich Edit 5.0
    L"wbemprox.dll",  // the WMI locator's in-process server
    L"wbemdisp.dll",  // WMI's scripting types, loaded with the locator on Windows
    L"fastprox.dll",  // WMI's class objects on Windows (absent under Wine)
    L"iphlpapi.dll",
    L"version.dll",
    L"shell32.dll",
    L"comctl32.dll",
    L"ole32.dll",
    L"oleaut32.dll",
    L"advapi32.dll",
};

// Refers to one function of every library that the program imports, so the
// loader maps the same set at start-up; nothing is called.
void* volatile gImports[] = {
    reinterpret_cast<void*>(&::RegOpenKeyExW),            // advapi32
    reinterpret_cast<void*>(&::InitCommonControlsEx),     // comctl32
    reinterpret_cast<void*>(&::GetSaveFileNameW),         // comdlg32
    reinterpret_cast<void*>(&::GetDeviceCaps),            // gdi32
    reinterpret_cast<void*>(&::GetAdaptersAddresses),     // iphlpapi
    reinterpret_cast<void*>(&::TransparentBlt),           // msimg32
    reinterpret_cast<void*>(&::CoInitializeEx),           // ole32
    reinterpret_cast<void*>(&::SysAllocString),           // oleaut32
    reinterpret_cast<void*>(&::SHGetFolderPathW),         // shell32
    reinterpret_cast<void*>(&::GetDC),                    // user32
    reinterpret_cast<void*>(&::GetFileVersionInfoSizeW),  // version
};
}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
    if (!gImports[0]) return 1;
    int loaded = 0;
    for (const wchar_t* name : kRunTimeLibraries) {
        if (::LoadLibraryW(name)) ++loaded;
    }
    return loaded > 0 ? 0 : 1;
}

// The control for the planting tests: a program built the careless way, as
// the tool was before it guarded its library search. It imports statically
// from the libraries that are not Windows' known DLLs, and loads by bare name
// each library named on its command line, so the loader takes a planted file
// beside it (or wherever else it looks first) for any of them.
#include <winsock2.h>
#include <windows.h>

#include <commctrl.h>
#include <commdlg.h>
#include <iphlpapi.h>
#include <shellapi.h>

namespace {

// Taking the addresses makes these static imports without calling anything.
const void* volatile kStaticImports[] = {
    reinterpret_cast<const void*>(&::GetFileVersionInfoSizeW),  // version.dll
    reinterpret_cast<const void*>(&::GetAdaptersAddresses),     // iphlpapi.dll
    reinterpret_cast<const void*>(&::TransparentBlt),           // msimg32.dll
    reinterpret_cast<const void*>(&::InitCommonControlsEx),     // comctl32.dll
    reinterpret_cast<const void*>(&::GetSaveFileNameW),         // comdlg32.dll
};

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
    int count = 0;
    wchar_t** arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (!arguments) return 1;
    for (int i = 1; i < count; ++i) {
        // The plant refuses to stay loaded; its marker tells it was.
        if (const HMODULE module = ::LoadLibraryW(arguments[i])) ::FreeLibrary(module);
    }
    ::LocalFree(arguments);
    for (const void* volatile& import : kStaticImports)
        if (!import) return 1;
    return 0;
}

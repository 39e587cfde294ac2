#include <windows.h>

#include "app/DiagnosticsApp.h"

namespace {
CDiagnosticsApp theApp;
}

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR commandLine, int) {
    return theApp.Run(instance, commandLine);
}

// The process's entry point, ahead of the runtime library's own start-up
// (static constructors included): from here on every library loaded by name
// comes from the system directory, never from the program's folder or the
// current directory, which anyone may be able to write to. The only static
// imports are kernel32, the C runtime and advapi32; every other library is
// delay-loaded, so loaded after this (cmake/DelayLoad.cmake).
extern "C" int WinMainCRTStartup();   // MinGW-w64's start-up for a GUI program
extern "C" int wWinMainCRTStartup();  // the Visual C++ runtime's
extern "C" int OrvaneDiagnosticsStartup() {
    ::SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
    // The theme library draws with msimg32, which it loads by name on first
    // use; Wine's does so without the restriction above, and would take a
    // file planted beside the program. Loaded from the system directory now,
    // for the whole run, the library is already there when anything asks
    // for it by name.
    ::LoadLibraryExW(L"msimg32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
#if defined(__MINGW32__)
    return WinMainCRTStartup();
#else
    return wWinMainCRTStartup();
#endif
}

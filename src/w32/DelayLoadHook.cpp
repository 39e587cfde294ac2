// The delay-load helper would load a delay-loaded library with LoadLibraryA,
// which the entry point has already restricted to the system directory. This
// hook asks for the system directory explicitly as well, so the rule holds
// even where that restriction was not made (a test program, a future entry
// point). Linked into the program itself: the helper finds the hook by name.
#include <windows.h>

#include <delayimp.h>

namespace {

FARPROC WINAPI LoadDelayedLibraryFromSystemDirectory(unsigned notification, PDelayLoadInfo info) {
    if (notification != dliNotePreLoadLibrary) return nullptr;  // the helper's own way
    return reinterpret_cast<FARPROC>(::LoadLibraryExA(info->szDll, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
}

}  // namespace

// Declared by <delayimp.h> (const in the Visual C++ one).
#if defined(_MSC_VER)
const PfnDliHook __pfnDliNotifyHook2 = LoadDelayedLibraryFromSystemDirectory;
#else
PfnDliHook __pfnDliNotifyHook2 = LoadDelayedLibraryFromSystemDirectory;
#endif

// A library that an attacker would drop beside the program under a system
// library's name. Loading it is the whole harm: its DllMain writes a marker
// named after its own file ("version.dll" -> "version.dll.loaded") into the
// folder that ORVANE_PLANT_MARKERS names, then refuses to stay loaded so
// nothing can call into it.
#include <windows.h>

namespace {

void WriteMarker(HINSTANCE self) {
    wchar_t folder[MAX_PATH];
    const DWORD folderLength = ::GetEnvironmentVariableW(L"ORVANE_PLANT_MARKERS", folder, MAX_PATH);
    if (folderLength == 0 || folderLength >= MAX_PATH) return;
    wchar_t modulePath[MAX_PATH];
    const DWORD moduleLength = ::GetModuleFileNameW(self, modulePath, MAX_PATH);
    if (moduleLength == 0 || moduleLength >= MAX_PATH) return;
    const wchar_t* name = modulePath;
    for (const wchar_t* p = modulePath; *p; ++p)
        if (*p == L'\\' || *p == L'/') name = p + 1;

    wchar_t marker[2 * MAX_PATH + 16];
    lstrcpyW(marker, folder);
    lstrcatW(marker, L"\\");
    lstrcatW(marker, name);
    lstrcatW(marker, L".loaded");
    const HANDLE file = ::CreateFileW(marker, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;
    // What was loaded, in full: the folder it came from is the finding.
    DWORD written = 0;
    ::WriteFile(file, modulePath, moduleLength * sizeof(wchar_t), &written, nullptr);
    ::CloseHandle(file);
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE self, DWORD reason, LPVOID) {
    if (reason != DLL_PROCESS_ATTACH) return TRUE;
    WriteMarker(self);
    return FALSE;
}

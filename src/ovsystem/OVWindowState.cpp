#include "ovsystem/OVWindowState.h"

#include "w32/Application.h"

std::wstring FormatWindowState(const WINDOWPLACEMENT& placement) {
    const RECT& r = placement.rcNormalPosition;
    return std::to_wstring(placement.showCmd) + L"," + std::to_wstring(r.left) + L"," + std::to_wstring(r.top) +
           L"," + std::to_wstring(r.right) + L"," + std::to_wstring(r.bottom);
}

bool saveWindowState(HWND window, std::wstring_view name) {
    WINDOWPLACEMENT placement{};
    placement.length = sizeof(placement);
    if (!::GetWindowPlacement(window, &placement)) return false;
    const w32::Application* app = w32::CurrentApp();
    return app && app->WriteProfileString(kOVWindowStateSection, name, FormatWindowState(placement));
}

// Window placement kept by name in the application's settings.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

// The section of the settings that holds the placements.
inline constexpr wchar_t kOVWindowStateSection[] = L"WindowState";

// Stores the window's placement under `name` as the text
// "showCmd,left,top,right,bottom" (the restored rectangle, in screen pixels).
bool saveWindowState(HWND window, std::wstring_view name);

// The text that saveWindowState would store for a placement.
std::wstring FormatWindowState(const WINDOWPLACEMENT& placement);

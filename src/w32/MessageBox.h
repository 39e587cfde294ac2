// Message boxes captioned with the application's name.
#pragma once

#include <windows.h>

#include <string_view>

namespace w32 {

// MessageBoxW with the application's name as caption, owned by the active
// window of this thread (or the main window, or none). `type` takes the MB_*
// flags for buttons and icon. Returns the button pressed.
int ShowMessageBox(std::wstring_view text, UINT type);

}  // namespace w32

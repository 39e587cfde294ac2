// The common Save As dialog.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

namespace w32 {

// `filter` is written "Description|pattern|...|" (the last "|" may be doubled).
// Returns the chosen full path, or nothing when the user cancels.
std::optional<std::wstring> ShowSaveAsDialog(HWND owner, std::wstring_view initialPath, std::wstring_view filter,
                                             DWORD flags);

}  // namespace w32

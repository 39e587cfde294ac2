#include "w32/FileDialog.h"

#include <commdlg.h>

#include <vector>

namespace w32 {
namespace {
// The dialog wants NUL-separated pairs ending with two NULs.
std::wstring ToDialogFilter(std::wstring_view filter) {
    std::wstring result(filter);
    for (wchar_t& c : result)
        if (c == L'|') c = L'\0';
    result.push_back(L'\0');
    result.push_back(L'\0');
    return result;
}

constexpr std::size_t kPathCapacity = 32768;  // the longest path Windows accepts
}  // namespace

std::optional<std::wstring> ShowSaveAsDialog(HWND owner, std::wstring_view initialPath, std::wstring_view filter,
                                             DWORD flags) {
    std::vector<wchar_t> path(kPathCapacity, L'\0');
    initialPath.substr(0, kPathCapacity - 1).copy(path.data(), kPathCapacity - 1);
    const std::wstring dialogFilter = ToDialogFilter(filter);

    OPENFILENAMEW ofn{};
    ofn.lStructSize = sizeof(ofn);
    ofn.hwndOwner = owner;
    ofn.lpstrFilter = dialogFilter.c_str();
    ofn.lpstrFile = path.data();
    ofn.nMaxFile = static_cast<DWORD>(path.size());
    ofn.Flags = flags | OFN_EXPLORER | OFN_ENABLESIZING;
    if (!::GetSaveFileNameW(&ofn)) return std::nullopt;
    return std::wstring(path.data());
}

}  // namespace w32

#include "ovsystem/OVPackage.h"

#include <windows.h>

#include <vector>

#include "w32/Text.h"

namespace {
bool g_english = true;

std::vector<BYTE> ReadOwnVersionResource() {
    const std::wstring path = w32::GetModulePath(nullptr);
    DWORD handle = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(path.c_str(), &handle);
    if (size == 0) return {};
    std::vector<BYTE> data(size);
    if (!::GetFileVersionInfoW(path.c_str(), 0, size, data.data())) return {};
    return data;
}
}  // namespace

OVString OVGetPackageVersionWithBuild() {
    std::vector<BYTE> data = ReadOwnVersionResource();
    if (data.empty()) return {};
    VS_FIXEDFILEINFO* info = nullptr;
    UINT length = 0;
    if (!::VerQueryValueW(data.data(), L"\\", reinterpret_cast<void**>(&info), &length) || !info ||
        length < sizeof(VS_FIXEDFILEINFO))
        return {};
    const std::wstring version = std::to_wstring(HIWORD(info->dwProductVersionMS)) + L"." +
                                 std::to_wstring(LOWORD(info->dwProductVersionMS)) + L"." +
                                 std::to_wstring(HIWORD(info->dwProductVersionLS)) + L"." +
                                 std::to_wstring(LOWORD(info->dwProductVersionLS));
    return OVString(version);
}

std::wstring OVGetPackageString(std::wstring_view name) {
    std::vector<BYTE> data = ReadOwnVersionResource();
    if (data.empty()) return {};
    const std::wstring query = L"\\StringFileInfo\\040904b0\\" + std::wstring(name);
    wchar_t* value = nullptr;
    UINT length = 0;
    if (!::VerQueryValueW(data.data(), query.c_str(), reinterpret_cast<void**>(&value), &length) || !value)
        return {};
    std::wstring text(value, length);
    const std::size_t end = text.find(L'\0');
    if (end != std::wstring::npos) text.resize(end);
    return text;
}

void OVSetLanguage(bool english) { g_english = english; }
bool OVIsEnglish() { return g_english; }

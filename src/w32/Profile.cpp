#include "w32/Profile.h"

#include "w32/GrowingBuffer.h"
#include "w32/Scoped.h"

#include <vector>

namespace w32 {

ProfileStore::ProfileStore(std::wstring registryKey, std::wstring applicationName)
    : registryKey_(std::move(registryKey)), applicationName_(std::move(applicationName)) {}

std::wstring ProfileStore::BaseKeyPath() const {
    return L"Software\\" + registryKey_ + L"\\" + applicationName_;
}

std::wstring ProfileStore::GetString(std::wstring_view section, std::wstring_view entry,
                                     std::wstring_view fallback) const {
    if (!IsConfigured()) return std::wstring(fallback);
    const std::wstring path = BaseKeyPath() + L"\\" + std::wstring(section);
    ScopedRegKey key;
    if (::RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, key.Put()) != ERROR_SUCCESS)
        return std::wstring(fallback);

    const std::wstring name(entry);
    // The first ask, without a buffer, gives the size and the type; the
    // second reads the data. Registry strings need not be terminated: the
    // buffer keeps one character more than the data, and the value is trimmed.
    const auto data = FillGrowingBuffer<std::vector<wchar_t>>(0, 2, [&](std::vector<wchar_t>& buffer) {
        DWORD type = 0;
        if (buffer.empty()) {
            DWORD size = 0;
            if (::RegQueryValueExW(key.Get(), name.c_str(), nullptr, &type, nullptr, &size) != ERROR_SUCCESS ||
                (type != REG_SZ && type != REG_EXPAND_SZ))
                return BufferAnswer::Failed();
            return BufferAnswer::TooSmall(size / sizeof(wchar_t) + 1);
        }
        DWORD bytes = static_cast<DWORD>((buffer.size() - 1) * sizeof(wchar_t));
        if (::RegQueryValueExW(key.Get(), name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()),
                               &bytes) != ERROR_SUCCESS)
            return BufferAnswer::Failed();
        return BufferAnswer::Filled(bytes / sizeof(wchar_t));
    });
    if (!data) return std::wstring(fallback);
    std::wstring value(data->data(), data->size());
    const std::size_t end = value.find(L'\0');
    if (end != std::wstring::npos) value.resize(end);
    return value;
}

bool ProfileStore::WriteString(std::wstring_view section, std::wstring_view entry,
                               std::wstring_view value) const {
    if (!IsConfigured()) return false;
    const std::wstring path = BaseKeyPath() + L"\\" + std::wstring(section);
    ScopedRegKey key;
    if (::RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, key.Put(),
                          nullptr) != ERROR_SUCCESS)
        return false;
    const std::wstring name(entry);
    const std::wstring data(value);
    const DWORD bytes = static_cast<DWORD>((data.size() + 1) * sizeof(wchar_t));
    return ::RegSetValueExW(key.Get(), name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(data.c_str()),
                            bytes) == ERROR_SUCCESS;
}

}  // namespace w32

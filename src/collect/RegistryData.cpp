#include "collect/RegistryData.h"

#include "format/RegistryValueText.h"

std::optional<std::vector<std::uint8_t>> ReadRegistryData(HKEY key, const wchar_t* valueName) {
    std::vector<std::uint8_t> data(kRegistryDataCapacity);
    DWORD size = static_cast<DWORD>(data.size());
    // A larger value fails with ERROR_MORE_DATA and is left out like a
    // missing one.
    if (::RegQueryValueExW(key, valueName, nullptr, nullptr, data.data(), &size) != ERROR_SUCCESS) return std::nullopt;
    data.resize(size);
    return data;
}

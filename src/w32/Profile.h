// The application's settings in the registry, kept the classic way:
// HKEY_CURRENT_USER\Software\<registry key>\<application name>\<section>,
// one string value per entry.
#pragma once

#include <string>
#include <string_view>

namespace w32 {

class ProfileStore {
public:
    ProfileStore() = default;
    ProfileStore(std::wstring registryKey, std::wstring applicationName);

    bool IsConfigured() const { return !registryKey_.empty(); }
    // "Software\<registry key>\<application name>"
    std::wstring BaseKeyPath() const;

    // The entry's string value, or `fallback` when it is absent or not a string.
    std::wstring GetString(std::wstring_view section, std::wstring_view entry,
                           std::wstring_view fallback = {}) const;
    // Creates the section when needed; false when the registry refuses.
    bool WriteString(std::wstring_view section, std::wstring_view entry, std::wstring_view value) const;

private:
    std::wstring registryKey_;
    std::wstring applicationName_;
};

}  // namespace w32

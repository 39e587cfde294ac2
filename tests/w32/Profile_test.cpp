#include "w32/Profile.h"

#include <windows.h>

#include <gtest/gtest.h>

#include "w32/Scoped.h"

namespace {
constexpr wchar_t kApp[] = L"ProfileTestApp";

// Each test process has a settings key of its own, so tests that run side
// by side never see, or delete, each other's values.
class ProfileTest : public testing::Test {
protected:
    void TearDown() override { ::RegDeleteTreeW(HKEY_CURRENT_USER, (L"Software\\" + key_).c_str()); }
    // Where the store keeps a section's values.
    std::wstring SectionKey(const std::wstring& section) const {
        return L"Software\\" + key_ + L"\\" + kApp + L"\\" + section;
    }

    const std::wstring key_ = L"Orvane Software V9 Profile Test " + std::to_wstring(::GetCurrentProcessId());
    w32::ProfileStore store_{key_, kApp};
};
}  // namespace

TEST_F(ProfileTest, AbsentEntryGivesTheFallback) {
    EXPECT_EQ(store_.GetString(L"Folder", L"report"), L"");
    EXPECT_EQ(store_.GetString(L"Folder", L"report", L"C:"), L"C:");
}

TEST_F(ProfileTest, WrittenValueIsReadBackUnderTheApplicationKey) {
    ASSERT_TRUE(store_.WriteString(L"Folder", L"report", L"D:\\Work \u00e9t\u00e9"));
    EXPECT_EQ(store_.GetString(L"Folder", L"report"), L"D:\\Work \u00e9t\u00e9");

    w32::ScopedRegKey key;
    ASSERT_EQ(::RegOpenKeyExW(HKEY_CURRENT_USER, SectionKey(L"Folder").c_str(), 0, KEY_READ, key.Put()),
              ERROR_SUCCESS);
    wchar_t data[64] = {};
    DWORD size = sizeof(data);
    DWORD type = 0;
    ASSERT_EQ(::RegQueryValueExW(key.Get(), L"report", nullptr, &type, reinterpret_cast<BYTE*>(data), &size),
              ERROR_SUCCESS);
    EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
    EXPECT_STREQ(data, L"D:\\Work \u00e9t\u00e9");
}

TEST_F(ProfileTest, StringWithoutTerminatorIsReadWhole) {
    w32::ScopedRegKey key;
    ASSERT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, SectionKey(L"System").c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, key.Put(),
                                nullptr),
              ERROR_SUCCESS);
    // The registry adds a terminator when the character after the data is
    // NUL, so a guard character follows the six that are stored.
    const wchar_t raw[] = {L'F', L'R', L'E', L'N', L'C', L'H', L'!'};
    ASSERT_EQ(::RegSetValueExW(key.Get(), L"forcedLocale", 0, REG_SZ, reinterpret_cast<const BYTE*>(raw),
                               6 * sizeof(wchar_t)),
              ERROR_SUCCESS);
    EXPECT_EQ(store_.GetString(L"System", L"forcedLocale"), L"FRENCH");
}

TEST_F(ProfileTest, NonStringValueGivesTheFallback) {
    w32::ScopedRegKey key;
    ASSERT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, SectionKey(L"System").c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, key.Put(),
                                nullptr),
              ERROR_SUCCESS);
    const DWORD number = 7;
    ASSERT_EQ(::RegSetValueExW(key.Get(), L"forcedLocale", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number),
                               sizeof(number)),
              ERROR_SUCCESS);
    EXPECT_EQ(store_.GetString(L"System", L"forcedLocale", L"none"), L"none");
}

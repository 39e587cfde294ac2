#include "collect/FakeSuite.h"

#include <gtest/gtest.h>

#include "collect/ReportTestSupport.h"
#include "support/TempDirectory.h"

namespace {

bool Exists(const std::wstring& path) { return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

void DeleteSuiteKey(REGSAM view) {
    w32::ScopedRegKey software;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software", 0, view | KEY_ALL_ACCESS, software.Put()) == ERROR_SUCCESS)
        ::RegDeleteTreeW(software.Get(), L"Orvane Software");
}

}  // namespace

SuiteFolders MachineSuiteFolders() {
    SuiteFolders folders;
    folders.programFiles = EnvironmentValue(L"ProgramFiles");
    folders.commonAppData = EnvironmentValue(L"ProgramData");
    folders.standard = folders.programFiles + L"\\Orvane Software V9";
    folders.shared = folders.commonAppData + L"\\Orvane Software";
    folders.batch = folders.shared + L"\\Runner";
    return folders;
}

bool SuiteKeyExists(REGSAM view) {
    w32::ScopedRegKey key;
    return ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, kSuiteKey, 0, view | KEY_READ, key.Put()) == ERROR_SUCCESS;
}

bool SuiteAlreadyInstalled(const SuiteFolders& folders) {
    return SuiteKeyExists(0) || SuiteKeyExists(KEY_WOW64_32KEY) || Exists(folders.standard) || Exists(folders.shared);
}

void RemoveSuite(const SuiteFolders& folders) {
    DeleteSuiteKey(0);
    DeleteSuiteKey(KEY_WOW64_32KEY);
    TempDirectory::RemoveTree(folders.standard);
    TempDirectory::RemoveTree(folders.shared);
}

std::wstring VersionFixturePath(const std::wstring& which) {
    return TestProgramDirectory() + L"\\fixture_version_" + which + L".dll";
}

void InstallSuiteFiles(const SuiteFolders& folders) {
    const std::wstring& standard = folders.standard;
    ASSERT_TRUE(::CreateDirectoryW(standard.c_str(), nullptr));
    ASSERT_TRUE(::CopyFileW(VersionFixturePath(L"neutral").c_str(), (standard + L"\\Core.dll").c_str(), FALSE));
    ASSERT_TRUE(::CopyFileW(VersionFixturePath(L"both").c_str(), (standard + L"\\Runner.dll").c_str(), FALSE));
    ASSERT_TRUE(::CopyFileW(VersionFixturePath(L"french").c_str(), (standard + L"\\Legacy.dll").c_str(), FALSE));
    ASSERT_TRUE(TempDirectory::WriteFile(standard + L"\\readme.txt", kSuiteReadme));
    ASSERT_TRUE(::CreateDirectoryW((standard + L"\\Plugins").c_str(), nullptr));
    ASSERT_TRUE(TempDirectory::WriteFile(standard + L"\\Plugins\\inside.txt", "not listed"));
    ASSERT_TRUE(::CreateDirectoryW(folders.shared.c_str(), nullptr));
    ASSERT_TRUE(TempDirectory::WriteFile(folders.shared + L"\\settings.ini", "[System]\r\n"));
    ASSERT_TRUE(::CreateDirectoryW(folders.batch.c_str(), nullptr));
    ASSERT_TRUE(TempDirectory::WriteFile(folders.batch + L"\\nightly.cmd", "@echo off\r\n"));
}

w32::ScopedRegKey CreateSuiteKey(REGSAM view) {
    w32::ScopedRegKey key;
    EXPECT_EQ(::RegCreateKeyExW(HKEY_LOCAL_MACHINE, kSuiteKey, 0, nullptr, 0, view | KEY_ALL_ACCESS, nullptr,
                                key.Put(), nullptr),
              ERROR_SUCCESS);
    return key;
}

void SetValueBytes(HKEY key, const wchar_t* name, DWORD type, const std::vector<BYTE>& data) {
    ASSERT_EQ(::RegSetValueExW(key, name, 0, type, data.data(), static_cast<DWORD>(data.size())), ERROR_SUCCESS);
}

void SetValueString(HKEY key, const wchar_t* name, const std::wstring& text) {
    SetValueBytes(key, name, REG_SZ, StringBytes(text));
}

void SetValueDword(HKEY key, const wchar_t* name, DWORD value) {
    const auto* bytes = reinterpret_cast<const BYTE*>(&value);
    SetValueBytes(key, name, REG_DWORD, {bytes, bytes + sizeof(value)});
}

void InstallSuiteRegistryData(const std::wstring& location) {
    const w32::ScopedRegKey key = CreateSuiteKey();
    SetValueString(key.Get(), L"InstalledComponents", L"Core;Runner");  // written first, reported last
    SetValueString(key.Get(), L"InstallLocation", location);
    SetValueDword(key.Get(), L"VersionMajor", 9);
    SetValueString(key.Get(), L"VersionMinor", L"3");
    SetValueDword(key.Get(), L"VersionRevision", 1);
    SetValueDword(key.Get(), L"VersionBuildReleaseRevision", 1042);
}

// The suite's registry key exists but cannot be opened for reading: its
// access list denies it to everyone, administrators included. The section
// shows the registry heading alone and goes on with the shared directories.
// The test changes HKLM, so it runs alone (tests/CMakeLists.txt).
#include <windows.h>
#include <sddl.h>

#include <gtest/gtest.h>

#include "collect/InstallationCollector.h"
#include "collect/ReportTestSupport.h"
#include "support/Wine.h"
#include "w32/Scoped.h"

namespace {

constexpr wchar_t kSuiteKey[] = L"Software\\Orvane Software";

bool SetKeyDacl(const wchar_t* sddl) {
    w32::ScopedRegKey key;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, kSuiteKey, 0, WRITE_DAC, key.Put()) != ERROR_SUCCESS) return false;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl, SDDL_REVISION_1, &descriptor, nullptr))
        return false;
    const w32::ScopedLocal owner(descriptor);
    return ::RegSetKeySecurity(key.Get(), DACL_SECURITY_INFORMATION, descriptor) == ERROR_SUCCESS;
}

bool Exists(const std::wstring& path) { return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

class UnreadableSuiteKey : public testing::Test {
protected:
    void SetUp() override {
        SKIP_UNLESS_WINE("installs the suite's key in HKLM of the machine");
        w32::ScopedRegKey existing;
        if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, kSuiteKey, 0, KEY_READ, existing.Put()) != ERROR_FILE_NOT_FOUND ||
            Exists(programFiles_ + L"\\Orvane Software V9") || Exists(shared_))
            GTEST_SKIP() << "a suite is already installed on this machine; it is left alone";
        owned_ = true;
        w32::ScopedRegKey key;
        ASSERT_EQ(::RegCreateKeyExW(HKEY_LOCAL_MACHINE, kSuiteKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.Put(),
                                    nullptr),
                  ERROR_SUCCESS);
        const std::wstring location = L"C:\\Elsewhere";
        ASSERT_EQ(::RegSetValueExW(key.Get(), L"InstallLocation", 0, REG_SZ,
                                   reinterpret_cast<const BYTE*>(location.c_str()),
                                   static_cast<DWORD>((location.size() + 1) * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    }
    void TearDown() override {
        if (!owned_) return;
        SetKeyDacl(L"D:P(A;;KA;;;WD)");
        ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, kSuiteKey);
    }

    const std::wstring programFiles_ = EnvironmentValue(L"ProgramFiles");
    const std::wstring shared_ = EnvironmentValue(L"ProgramData") + L"\\Orvane Software";
    bool owned_ = false;
};

}  // namespace

TEST_F(UnreadableSuiteKey, ShowsTheRegistryHeadingAloneAndTheSectionGoesOn) {
    // Reading denied to everyone; the owner may still give the right back.
    ASSERT_TRUE(SetKeyDacl(L"D:P(D;;KR;;;WD)(A;;KA;;;WD)"));
    w32::ScopedRegKey probe;
    const LONG opened = ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, kSuiteKey, 0, KEY_READ, probe.Put());
    if (opened == ERROR_SUCCESS) GTEST_SKIP() << "this system does not apply the key's access list";
    ASSERT_EQ(opened, ERROR_ACCESS_DENIED);

    RecordingSink sink;
    WriteInstallationSection(sink, TestProgramDirectory(), programFiles_, EnvironmentValue(L"ProgramData"));
    PieceCursor cursor(sink.Pieces());
    ASSERT_TRUE(cursor.SkipPast(L"* Registry installation data:\n"));
    // No value line, and no listing of the location the key names.
    EXPECT_EQ(cursor.Next(), L"* Shared parameters directory (" + shared_ + L"):\n");
    EXPECT_TRUE(cursor.TakeEntries().empty());
    EXPECT_EQ(cursor.Next(), L"* Shared Batch directory (" + shared_ + L"\\Runner):\n");
    EXPECT_TRUE(cursor.TakeEntries().empty());
    EXPECT_TRUE(cursor.AtEnd());
}

// The " ACL:" part from security descriptors built in memory: Wine makes up
// a file's DACL from its Unix mode bits, so real files cannot carry these.
#include "collect/DirectoryListing.h"

#include <windows.h>
#include <sddl.h>

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "format/ReportSink.h"
#include "support/TempDirectory.h"
#include "support/Wine.h"
#include "w32/Scoped.h"

namespace {

std::wstring FromSddl(const wchar_t* sddl) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl, SDDL_REVISION_1, &descriptor, nullptr)) {
        ADD_FAILURE() << "cannot parse " << testing::PrintToString(std::wstring(sddl));
        return {};
    }
    const w32::ScopedLocal owner(descriptor);
    return FormatAccessList(descriptor);
}

std::vector<BYTE> SidOf(WELL_KNOWN_SID_TYPE type) {
    std::vector<BYTE> sid(SECURITY_MAX_SID_SIZE);
    DWORD size = static_cast<DWORD>(sid.size());
    ::CreateWellKnownSid(type, nullptr, sid.data(), &size);
    sid.resize(size);
    return sid;
}

// A DACL whose entries are laid out by hand, so that it can hold entries
// that no allow/deny helper makes.
class HandMadeDacl {
public:
    HandMadeDacl() {
        ::InitializeAcl(Acl(), static_cast<DWORD>(buffer_.size()), ACL_REVISION);
        ::InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION);
        ::SetSecurityDescriptorDacl(&descriptor_, TRUE, Acl(), FALSE);
    }
    void Allow(WELL_KNOWN_SID_TYPE who, DWORD mask) {
        std::vector<BYTE> sid = SidOf(who);
        EXPECT_TRUE(::AddAccessAllowedAce(Acl(), ACL_REVISION, mask, sid.data()));
    }
    // An entry of another type with the same layout (header, mask, SID).
    void Add(BYTE aceType, WELL_KNOWN_SID_TYPE who, DWORD mask) {
        const std::vector<BYTE> sid = SidOf(who);
        std::vector<BYTE> ace(sizeof(ACE_HEADER) + sizeof(DWORD) + sid.size());
        auto* header = reinterpret_cast<ACE_HEADER*>(ace.data());
        header->AceType = aceType;
        header->AceFlags = 0;
        header->AceSize = static_cast<WORD>(ace.size());
        std::memcpy(ace.data() + sizeof(ACE_HEADER), &mask, sizeof(mask));
        std::memcpy(ace.data() + sizeof(ACE_HEADER) + sizeof(DWORD), sid.data(), sid.size());
        EXPECT_TRUE(::AddAce(Acl(), ACL_REVISION, MAXDWORD, ace.data(), static_cast<DWORD>(ace.size())));
    }
    std::wstring Format() { return FormatAccessList(&descriptor_); }

private:
    PACL Acl() { return reinterpret_cast<PACL>(buffer_.data()); }
    std::vector<BYTE> buffer_ = std::vector<BYTE>(1024);
    SECURITY_DESCRIPTOR descriptor_{};
};

}  // namespace

TEST(AccessList, NullDaclAllowsAll) {
    SECURITY_DESCRIPTOR descriptor{};
    ASSERT_TRUE(::InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    ASSERT_TRUE(::SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE));
    EXPECT_EQ(FormatAccessList(&descriptor), L" ACL: NULL (Allow All)");
}

TEST(AccessList, EmptyDaclShowsOnlyTheHeading) {
    EXPECT_EQ(FromSddl(L"D:"), L" ACL:");
    HandMadeDacl empty;
    EXPECT_EQ(empty.Format(), L" ACL:");
}

TEST(AccessList, DescriptorWithoutDaclShowsTheLastErrorCode) {
    SECURITY_DESCRIPTOR descriptor{};
    ASSERT_TRUE(::InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    ::SetLastError(1234);
    EXPECT_EQ(FormatAccessList(&descriptor), L" ACL: failed GetSecurityDescriptorDacl (1234)");
}

TEST(AccessList, FullControlForAdministratorsReadsRwx) {
    EXPECT_EQ(FromSddl(L"D:(A;;FA;;;BA)"), L" ACL: Allow BUILTIN\\Administrators [RWX];");
}

TEST(AccessList, AllowReadDataAloneShowsThreeBlanks) {
    EXPECT_EQ(FromSddl(L"D:(A;;0x1;;;WD)"), L" ACL: Allow Everyone [   ];");
}

TEST(AccessList, DenyReadDataShowsReadAndExecute) {
    EXPECT_EQ(FromSddl(L"D:(D;;0x1;;;WD)"), L" ACL: Deny Everyone [R X];");
}

TEST(AccessList, DenyWritingShowsW) {
    EXPECT_EQ(FromSddl(L"D:(D;;FW;;;WD)"), L" ACL: Deny Everyone [ W ];");
}

TEST(AccessList, GenericAllAloneShowsThreeBlanks) {
    EXPECT_EQ(FromSddl(L"D:(A;;GA;;;BU)"), L" ACL: Allow BUILTIN\\Users [   ];");
}

TEST(AccessList, EntriesInTheirOrder) {
    EXPECT_EQ(FromSddl(L"D:(D;;FW;;;WD)(A;;FA;;;SY)(A;;FR;;;AU)(A;;0x1200a9;;;BU)"),
              L" ACL: Deny Everyone [ W ]; Allow NT AUTHORITY\\SYSTEM [RWX];"
              L" Allow NT AUTHORITY\\Authenticated Users [R  ]; Allow BUILTIN\\Users [R X];");
}

TEST(AccessList, UnknownSidLeavesABareSemicolon) {
    EXPECT_EQ(FromSddl(L"D:(A;;FA;;;S-1-5-21-1-2-3-4242)(A;;FA;;;BA)"),
              L" ACL: Allow ; Allow BUILTIN\\Administrators [RWX];");
}

TEST(AccessList, OtherTypeAfterAnAllowEntryShowsThatEntrysAccount) {
    HandMadeDacl dacl;
    dacl.Allow(WinBuiltinAdministratorsSid, FILE_ALL_ACCESS);
    dacl.Add(SYSTEM_AUDIT_ACE_TYPE, WinWorldSid, FILE_ALL_ACCESS);
    EXPECT_EQ(dacl.Format(), L" ACL: Allow BUILTIN\\Administrators [RWX]; Unknown Right BUILTIN\\Administrators [];");
}

TEST(AccessList, OtherTypeBeforeAnyAllowOrDenyHasNoAccount) {
    HandMadeDacl dacl;
    dacl.Add(SYSTEM_AUDIT_ACE_TYPE, WinWorldSid, FILE_ALL_ACCESS);
    dacl.Allow(WinBuiltinUsersSid, FILE_GENERIC_READ | FILE_GENERIC_EXECUTE);
    EXPECT_EQ(dacl.Format(), L" ACL: Unknown Right ; Allow BUILTIN\\Users [R X];");
}

TEST(AccessList, RealDirectoryListedWithItsAccessLists) {
    SKIP_UNLESS_WINE("the access lists are the ones Wine makes up from Unix mode bits");
    // Wine makes every file's DACL up from its Unix mode bits: SYSTEM and the
    // owning user get full control, Everyone reads and executes.
    wchar_t host[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD hostSize = MAX_COMPUTERNAME_LENGTH + 1;
    ASSERT_TRUE(::GetComputerNameW(host, &hostSize));
    wchar_t user[256] = {};
    DWORD userSize = 256;
    ASSERT_TRUE(::GetUserNameW(user, &userSize));
    const std::wstring acl = L" ACL: Allow NT AUTHORITY\\SYSTEM [RWX]; Allow " + std::wstring(host) + L"\\" + user +
                             L" [RWX]; Allow Everyone [R X];\n";

    TempDirectory dir;
    ASSERT_TRUE(TempDirectory::WriteFile(dir / L"file.txt", "x"));
    ASSERT_TRUE(::CreateDirectoryW((dir / L"sub").c_str(), nullptr));
    StringReportSink sink;
    ListDirectory(sink, dir.Path(), true, false);
    const std::vector<std::wstring> lines = SplitLines(sink.Text());
    ASSERT_EQ(lines.size(), 4u) << sink.Text();
    for (const wchar_t* name : {L"file.txt", L"sub", L".", L".."}) {
        const std::wstring line = LineNamed(sink.Text(), name);
        const std::wstring tail = L"\t" + std::wstring(name) + L"\t" + acl;
        ASSERT_GE(line.size(), tail.size()) << sink.Text();
        EXPECT_EQ(line.substr(line.size() - tail.size()), tail);
    }
}

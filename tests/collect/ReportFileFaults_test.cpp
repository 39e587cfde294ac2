// The report file where it cannot be written, or where it is written in an
// unusual way: a read-only file, a file another process holds, a path with no
// backslash at all. A file that cannot be opened is refused whole: nothing of
// it changes. docs/reliability.md lists these cases.
#include "collect/ReportFile.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "diagwin/SaveLocation.h"
#include "format/ReportChecksum.h"
#include "support/LockedFile.h"
#include "support/TempDirectory.h"

namespace {

std::string ReadBytes(const std::wstring& path) {
    std::ifstream in(std::filesystem::path(path), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// Puts the current directory back, whatever the test did.
class CurrentDirectory {
public:
    explicit CurrentDirectory(const std::wstring& directory) {
        previous_.resize(::GetCurrentDirectoryW(0, nullptr));
        previous_.resize(::GetCurrentDirectoryW(static_cast<DWORD>(previous_.size()), previous_.data()));
        changed_ = ::SetCurrentDirectoryW(directory.c_str()) != FALSE;
    }
    ~CurrentDirectory() { ::SetCurrentDirectoryW(previous_.c_str()); }
    bool Changed() const { return changed_; }

private:
    std::wstring previous_;
    bool changed_ = false;
};

}  // namespace

TEST(ReportFileFaults, ReadOnlyFileIsRefusedAndKept) {
    TempDirectory dir;
    const std::wstring path = dir / L"read-only.txt";
    ASSERT_TRUE(TempDirectory::WriteFile(path, "keep me"));
    ASSERT_TRUE(::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_FALSE(WriteReportFile(path, L"AB"));
    EXPECT_EQ(ReadBytes(path), "keep me");
    EXPECT_EQ(::GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_READONLY, DWORD{FILE_ATTRIBUTE_READONLY});
}

TEST(ReportFileFaults, ReadOnlyFileBehindAVeryLongPathIsRefusedToo) {
    TempDirectory dir;
    std::wstring folder = dir.Path();
    while (folder.size() < 300) {
        folder += L"\\" + std::wstring(60, L'd');
        ASSERT_TRUE(::CreateDirectoryW(folder.c_str(), nullptr));
    }
    const std::wstring path = folder + L"\\read-only.txt";
    ASSERT_TRUE(TempDirectory::WriteFile(path, "keep me"));
    ASSERT_TRUE(::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_FALSE(WriteReportFile(path, L"AB"));
    EXPECT_EQ(ReadBytes(path), "keep me");
}

TEST(ReportFileFaults, ReadOnlyFolderAttributeDoesNotStopTheFilesInside) {
    // On a folder the attribute means "customised", not "read-only".
    TempDirectory dir;
    const std::wstring folder = dir / L"customised";
    ASSERT_TRUE(::CreateDirectoryW(folder.c_str(), nullptr));
    ASSERT_TRUE(::SetFileAttributesW(folder.c_str(), FILE_ATTRIBUTE_READONLY));
    const std::wstring path = folder + L"\\report.txt";
    EXPECT_TRUE(WriteReportFile(path, L"AB"));
    EXPECT_EQ(ReadBytes(path), BuildReportFileBytes(u"AB"));
    ::SetFileAttributesW(folder.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(ReportFileFaults, FileHeldByAnotherProcessIsRefusedAndKept) {
    TempDirectory dir;
    const std::wstring path = dir / L"held.txt";
    ASSERT_TRUE(TempDirectory::WriteFile(path, "keep me"));
    {
        const LockedFile held(path);
        ASSERT_TRUE(held.Locked());
        EXPECT_FALSE(WriteReportFile(path, L"AB"));
    }
    EXPECT_EQ(ReadBytes(path), "keep me");
}

TEST(ReportFileFaults, NameWithoutAnyBackslashIsWrittenInTheCurrentDirectory) {
    TempDirectory dir;
    const CurrentDirectory current(dir.Path());
    ASSERT_TRUE(current.Changed());
    EXPECT_EQ(FolderToRemember(L"no-backslash.txt"), std::nullopt);
    ASSERT_TRUE(WriteReportFile(L"no-backslash.txt", L"AB"));
    EXPECT_EQ(ReadBytes(dir / L"no-backslash.txt"), BuildReportFileBytes(u"AB"));
}

TEST(ReportFileFaults, PathWithForwardSlashesOnlyIsWrittenButNotRemembered) {
    TempDirectory dir;
    std::wstring path = dir / L"forward.txt";
    std::replace(path.begin(), path.end(), L'\\', L'/');
    EXPECT_EQ(FolderToRemember(path), std::nullopt);
    ASSERT_TRUE(WriteReportFile(path, L"AB"));
    EXPECT_EQ(ReadBytes(dir / L"forward.txt"), BuildReportFileBytes(u"AB"));
}

TEST(ReportFileFaults, OverwritingALongerReportLeavesNothingOfIt) {
    TempDirectory dir;
    const std::wstring path = dir / L"report.txt";
    ASSERT_TRUE(WriteReportFile(path, std::wstring(100000, L'x')));
    ASSERT_TRUE(WriteReportFile(path, L"AB"));
    EXPECT_EQ(ReadBytes(path), BuildReportFileBytes(u"AB"));
}

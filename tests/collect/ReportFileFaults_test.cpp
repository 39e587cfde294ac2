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
#include <vector>

#include "diagwin/SaveLocation.h"
#include "format/ReportChecksum.h"
#include "support/LockedFile.h"
#include "support/TempDirectory.h"

namespace {

std::string ReadBytes(const std::wstring& path) {
    std::ifstream in(std::filesystem::path(path), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// The names in a folder, "." and ".." left out.
std::vector<std::wstring> NamesIn(const std::wstring& folder) {
    std::vector<std::wstring> names;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(folder)))
        names.push_back(entry.path().filename().wstring());
    std::sort(names.begin(), names.end());
    return names;
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
    EXPECT_EQ(WriteReportFile(path, L"AB"), ReportFileOutcome::kCannotOpen);
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
    EXPECT_EQ(WriteReportFile(path, L"AB"), ReportFileOutcome::kCannotOpen);
    EXPECT_EQ(ReadBytes(path), "keep me");
}

TEST(ReportFileFaults, ReadOnlyFolderAttributeDoesNotStopTheFilesInside) {
    // On a folder the attribute means "customised", not "read-only".
    TempDirectory dir;
    const std::wstring folder = dir / L"customised";
    ASSERT_TRUE(::CreateDirectoryW(folder.c_str(), nullptr));
    ASSERT_TRUE(::SetFileAttributesW(folder.c_str(), FILE_ATTRIBUTE_READONLY));
    const std::wstring path = folder + L"\\report.txt";
    EXPECT_EQ(WriteReportFile(path, L"AB"), ReportFileOutcome::kWritten);
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
        EXPECT_EQ(WriteReportFile(path, L"AB"), ReportFileOutcome::kCannotOpen);
    }
    EXPECT_EQ(ReadBytes(path), "keep me");
    EXPECT_EQ(NamesIn(dir.Path()), std::vector<std::wstring>{L"held.txt"}) << "no temporary file left";
}

TEST(ReportFileFaults, NameWithoutAnyBackslashIsWrittenInTheCurrentDirectory) {
    TempDirectory dir;
    const CurrentDirectory current(dir.Path());
    ASSERT_TRUE(current.Changed());
    EXPECT_EQ(FolderToRemember(L"no-backslash.txt"), std::nullopt);
    ASSERT_EQ(WriteReportFile(L"no-backslash.txt", L"AB"), ReportFileOutcome::kWritten);
    EXPECT_EQ(ReadBytes(dir / L"no-backslash.txt"), BuildReportFileBytes(u"AB"));
}

TEST(ReportFileFaults, PathWithForwardSlashesOnlyIsWrittenButNotRemembered) {
    TempDirectory dir;
    std::wstring path = dir / L"forward.txt";
    std::replace(path.begin(), path.end(), L'\\', L'/');
    EXPECT_EQ(FolderToRemember(path), std::nullopt);
    ASSERT_EQ(WriteReportFile(path, L"AB"), ReportFileOutcome::kWritten);
    EXPECT_EQ(ReadBytes(dir / L"forward.txt"), BuildReportFileBytes(u"AB"));
}

TEST(ReportFileFaults, OverwritingALongerReportLeavesNothingOfIt) {
    TempDirectory dir;
    const std::wstring path = dir / L"report.txt";
    ASSERT_EQ(WriteReportFile(path, std::wstring(100000, L'x')), ReportFileOutcome::kWritten);
    ASSERT_EQ(WriteReportFile(path, L"AB"), ReportFileOutcome::kWritten);
    EXPECT_EQ(ReadBytes(path), BuildReportFileBytes(u"AB"));
}

TEST(ReportFileFaults, FolderThatDoesNotExistIsRefusedAndNothingIsMade) {
    TempDirectory dir;
    EXPECT_EQ(WriteReportFile(dir / L"no such folder\\report.txt", L"AB"), ReportFileOutcome::kCannotOpen);
    EXPECT_EQ(NamesIn(dir.Path()), std::vector<std::wstring>{});
}

TEST(ReportFileFaults, FolderInPlaceOfTheFileIsRefusedAndKept) {
    TempDirectory dir;
    ASSERT_TRUE(::CreateDirectoryW((dir / L"report.txt").c_str(), nullptr));
    EXPECT_EQ(WriteReportFile(dir / L"report.txt", L"AB"), ReportFileOutcome::kCannotOpen);
    EXPECT_EQ(::GetFileAttributesW((dir / L"report.txt").c_str()) & FILE_ATTRIBUTE_DIRECTORY,
              DWORD{FILE_ATTRIBUTE_DIRECTORY});
    EXPECT_EQ(NamesIn(dir.Path()), std::vector<std::wstring>{L"report.txt"});
}

TEST(ReportFileWriter, PiecesMakeTheBytesOfTheWholeAndNothingElseIsLeft) {
    TempDirectory dir;
    const std::wstring path = dir / L"report.txt";
    ASSERT_TRUE(TempDirectory::WriteFile(path, "an earlier report"));
    // More than one chunk of the writer, cut where a code unit pair would not be.
    const std::wstring piece = L"\t00000020       4753\t\u00e9\u20ac tool.dll\r\n";
    std::wstring whole;
    {
        ReportFileWriter file(path);
        ASSERT_TRUE(file.Opened());
        while (whole.size() < 100000) {
            file.Append(piece);
            whole += piece;
        }
        EXPECT_EQ(ReadBytes(path), "an earlier report") << "the target is replaced only at the end";
        EXPECT_EQ(NamesIn(dir.Path()).size(), 2u) << "the temporary file beside it";
        EXPECT_EQ(file.Commit(), ReportFileOutcome::kWritten);
    }
    EXPECT_EQ(ReadBytes(path), BuildReportFileBytes(AsUtf16(whole)));
    EXPECT_EQ(NamesIn(dir.Path()), std::vector<std::wstring>{L"report.txt"});
}

TEST(ReportFileWriter, WithoutCommitNothingChanges) {
    TempDirectory dir;
    const std::wstring path = dir / L"report.txt";
    ASSERT_TRUE(TempDirectory::WriteFile(path, "an earlier report"));
    {
        ReportFileWriter file(path);
        ASSERT_TRUE(file.Opened());
        file.Append(L"half a report");
    }
    EXPECT_EQ(ReadBytes(path), "an earlier report");
    EXPECT_EQ(NamesIn(dir.Path()), std::vector<std::wstring>{L"report.txt"});
}

TEST(ReportFileWriter, FailuresAreToldInBothLanguages) {
    EXPECT_EQ(std::wstring(ReportFileFailureMessage(ReportFileOutcome::kCannotOpen).english), L"Unable to open file!");
    EXPECT_EQ(std::wstring(ReportFileFailureMessage(ReportFileOutcome::kCannotOpen).french),
              L"Impossible d'ouvrir le fichier !");
    EXPECT_EQ(std::wstring(ReportFileFailureMessage(ReportFileOutcome::kCannotWrite).english),
              L"Unable to write the file!");
    EXPECT_EQ(std::wstring(ReportFileFailureMessage(ReportFileOutcome::kCannotWrite).french),
              L"Impossible d'\u00e9crire le fichier !");
}

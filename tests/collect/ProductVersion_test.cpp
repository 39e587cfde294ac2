// Product versions read from resource-only DLLs that the build makes from
// tests/report/fixtures/*.rc and puts next to the test program.
#include "collect/DirectoryListing.h"

#include <windows.h>

#include <gtest/gtest.h>

#include "format/ReportSink.h"
#include "support/TempDirectory.h"
#include "w32/Scoped.h"
#include "w32/Text.h"

namespace {
std::wstring Fixture(const wchar_t* name) {
    const std::wstring program = w32::GetModulePath(nullptr);
    return program.substr(0, program.find_last_of(L"\\/")) + L"\\fixture_version_" + name + L".dll";
}
}  // namespace

TEST(ProductVersion, NeutralUnicodeBlock) {
    // "3, 2, 1, 0" in block 000004b0.
    EXPECT_EQ(ReadProductVersion(Fixture(L"neutral")), L"3.2.1.0");
}

TEST(ProductVersion, UsEnglishBlockIsTheFallback) {
    // "3, 2, 1, 0" only in block 040904b0.
    EXPECT_EQ(ReadProductVersion(Fixture(L"english")), L"3.2.1.0");
}

TEST(ProductVersion, NeutralBlockComesFirst) {
    // "1, 4, 0, 12" in 000004b0 and "9, 9, 9, 9" in 040904b0.
    EXPECT_EQ(ReadProductVersion(Fixture(L"both")), L"1.4.0.12");
}

TEST(ProductVersion, OtherLanguagesAreNotRead) {
    // "3, 2, 1, 0" only in the French block 040c04b0, listed in the translation table.
    EXPECT_EQ(ReadProductVersion(Fixture(L"french")), L"");
}

TEST(ProductVersion, BlanksRemovedAndCommasTurnedIntoFullStops) {
    // " 10 , 2 ,3,4 build 5".
    EXPECT_EQ(ReadProductVersion(Fixture(L"blanks")), L"10.2.3.4build5");
}

TEST(ProductVersion, FileWithoutVersionResourceOrMissingGivesNothing) {
    TempDirectory dir;
    ASSERT_TRUE(TempDirectory::WriteFile(dir / L"plain.txt", "no resources here"));
    EXPECT_EQ(ReadProductVersion(dir / L"plain.txt"), L"");
    EXPECT_EQ(ReadProductVersion(dir / L"missing.dll"), L"");
}

TEST(ProductVersion, ShownAtTheEndOfTheEntryLine) {
    TempDirectory dir;
    ASSERT_TRUE(::CopyFileW(Fixture(L"neutral").c_str(), (dir / L"neutral.dll").c_str(), FALSE));
    ASSERT_TRUE(::CopyFileW(Fixture(L"french").c_str(), (dir / L"french.dll").c_str(), FALSE));
    StringReportSink sink;
    ListDirectory(sink, dir.Path(), false, false);
    const std::wstring neutral = LineNamed(sink.Text(), L"neutral.dll");
    const std::wstring french = LineNamed(sink.Text(), L"french.dll");
    ASSERT_GT(neutral.size(), 22u);
    EXPECT_EQ(neutral.substr(neutral.size() - 21), L"\tneutral.dll\t3.2.1.0\n");
    EXPECT_EQ(french.substr(french.size() - 13), L"\tfrench.dll\t\n");
}

namespace {
WIN32_FIND_DATAW FindEntry(const std::wstring& path) {
    WIN32_FIND_DATAW entry{};
    const w32::ScopedFind search(::FindFirstFileW(path.c_str(), &entry));
    EXPECT_TRUE(search) << "no entry for the file";
    return entry;
}
}  // namespace

TEST(ProductVersionMemo, SameFileIsReadOnce) {
    TempDirectory dir;
    const std::wstring path = dir / L"neutral.dll";
    ASSERT_TRUE(::CopyFileW(Fixture(L"neutral").c_str(), path.c_str(), FALSE));
    const WIN32_FIND_DATAW entry = FindEntry(path);
    ProductVersionMemo memo;
    EXPECT_EQ(memo.Read(path, entry), L"3.2.1.0");
    // Gone from the disk: only the memo can still give its version.
    ASSERT_TRUE(::DeleteFileW(path.c_str()));
    EXPECT_EQ(memo.Read(path, entry), L"3.2.1.0");
}

TEST(ProductVersionMemo, ChangedFileIsReadAgain) {
    TempDirectory dir;
    const std::wstring path = dir / L"library.dll";
    ASSERT_TRUE(::CopyFileW(Fixture(L"neutral").c_str(), path.c_str(), FALSE));
    WIN32_FIND_DATAW entry = FindEntry(path);
    ProductVersionMemo memo;
    EXPECT_EQ(memo.Read(path, entry), L"3.2.1.0");

    // Replaced by another build: a size, a last write time or a creation
    // time of its own each make the memo read the file again.
    ASSERT_TRUE(::CopyFileW(Fixture(L"both").c_str(), path.c_str(), FALSE));
    WIN32_FIND_DATAW resized = entry;
    ++resized.nFileSizeLow;
    EXPECT_EQ(memo.Read(path, resized), L"1.4.0.12");

    ASSERT_TRUE(::CopyFileW(Fixture(L"neutral").c_str(), path.c_str(), FALSE));
    WIN32_FIND_DATAW rewritten = resized;
    ++rewritten.ftLastWriteTime.dwLowDateTime;
    EXPECT_EQ(memo.Read(path, rewritten), L"3.2.1.0");

    ASSERT_TRUE(::CopyFileW(Fixture(L"both").c_str(), path.c_str(), FALSE));
    WIN32_FIND_DATAW recreated = rewritten;
    ++recreated.ftCreationTime.dwHighDateTime;
    EXPECT_EQ(memo.Read(path, recreated), L"1.4.0.12");
}

TEST(ProductVersionMemo, ListingWithAMemoGivesTheSameLines) {
    TempDirectory dir;
    ASSERT_TRUE(::CopyFileW(Fixture(L"neutral").c_str(), (dir / L"neutral.dll").c_str(), FALSE));
    ASSERT_TRUE(::CopyFileW(Fixture(L"blanks").c_str(), (dir / L"blanks.dll").c_str(), FALSE));
    ASSERT_TRUE(TempDirectory::WriteFile(dir / L"notes.txt", "MZ but not an image"));
    StringReportSink without;
    ListDirectory(without, dir.Path(), false, false);
    ProductVersionMemo memo;
    StringReportSink first;
    StringReportSink second;
    ListDirectory(first, dir.Path(), false, false, &memo);
    ListDirectory(second, dir.Path(), false, false, &memo);
    EXPECT_EQ(first.Text(), without.Text());
    EXPECT_EQ(second.Text(), without.Text());
    EXPECT_NE(LineNamed(without.Text(), L"blanks.dll").find(L"\t10.2.3.4build5"), std::wstring::npos);
}

TEST(ProductVersionMemo, FilesThatCannotBeImagesAreNotKept) {
    TempDirectory dir;
    const std::wstring path = dir / L"notes.txt";
    ASSERT_TRUE(TempDirectory::WriteFile(path, "plain text"));
    const WIN32_FIND_DATAW entry = FindEntry(path);
    ProductVersionMemo memo;
    EXPECT_EQ(memo.Read(path, entry), L"");
    // Replaced by a library of the same size and times: read again, since
    // only the version library's answers are remembered.
    ASSERT_TRUE(::CopyFileW(Fixture(L"neutral").c_str(), path.c_str(), FALSE));
    EXPECT_EQ(memo.Read(path, entry), L"3.2.1.0");
}

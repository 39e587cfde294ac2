// Directory listing on real files: entries, sizes, content excerpts, paths.
#include "collect/DirectoryListing.h"

#include <windows.h>
#include <winioctl.h>

#include <gtest/gtest.h>

#include "format/ReportSink.h"
#include "support/TempDirectory.h"
#include "w32/Scoped.h"
#include "w32/Text.h"

namespace {

std::wstring List(const std::wstring& directory, bool withAcl, bool withContent) {
    StringReportSink sink;
    ListDirectory(sink, directory, withAcl, withContent);
    return sink.Text();
}

WIN32_FILE_ATTRIBUTE_DATA AttributesOf(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    ::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data);
    return data;
}

// "\t%08x %10d\t" as the C runtime writes it for the path's attributes and size.
std::wstring HeadOf(const std::wstring& path) {
    const WIN32_FILE_ATTRIBUTE_DATA data = AttributesOf(path);
    wchar_t text[32] = {};
    std::swprintf(text, 32, L"\t%08x %10d\t", static_cast<unsigned>(data.dwFileAttributes),
                  static_cast<int>(data.nFileSizeLow));
    return text;
}

// "\t%08x" alone.
std::wstring AttributeText(const std::wstring& path) { return HeadOf(path).substr(0, 9); }

// The two times of the line, as the listing writes them.
std::wstring TimesOf(const std::wstring& path) {
    const WIN32_FILE_ATTRIBUTE_DATA data = AttributesOf(path);
    return FormatFileTime(data.ftCreationTime) + L"\t" + FormatFileTime(data.ftLastWriteTime);
}

// A sparse file of `size` bytes: no data is written.
bool MakeSparseFile(const std::wstring& path, long long size) {
    const w32::ScopedHandle file(
        ::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    if (!file) return false;
    DWORD returned = 0;
    ::DeviceIoControl(file.Get(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &returned, nullptr);
    LARGE_INTEGER end{};
    end.QuadPart = size;
    return ::SetFilePointerEx(file.Get(), end, nullptr, FILE_BEGIN) && ::SetEndOfFile(file.Get());
}

unsigned long long FreeBytes(const std::wstring& directory) {
    ULARGE_INTEGER available{};
    ::GetDiskFreeSpaceExW(directory.c_str(), &available, nullptr, nullptr);
    return available.QuadPart;
}

std::wstring ModuleDirectory() {
    const std::wstring path = w32::GetModulePath(nullptr);
    return path.substr(0, path.find_last_of(L"\\/"));
}

}  // namespace

TEST(ListDirectory, EveryEntryOnceIncludingDotsAndSubdirectoriesNotEntered) {
    TempDirectory dir;
    ASSERT_TRUE(TempDirectory::WriteFile(dir / L"note.txt", "hello"));
    ASSERT_TRUE(::CreateDirectoryW((dir / L"sub").c_str(), nullptr));
    ASSERT_TRUE(TempDirectory::WriteFile(dir / L"sub\\inner.txt", "inside"));

    const std::wstring listing = List(dir.Path(), false, false);
    const std::vector<std::wstring> lines = SplitLines(listing);
    ASSERT_EQ(lines.size(), 4u) << listing;
    EXPECT_EQ(listing.find(L"inner.txt"), std::wstring::npos);
    EXPECT_EQ(LineNamed(listing, L"note.txt"), AttributeText(dir / L"note.txt") + L"          5\t" +
                                                   TimesOf(dir / L"note.txt") + L"\tnote.txt\t\n");
    EXPECT_EQ(LineNamed(listing, L"sub"), L"\t00000010          0\t" + TimesOf(dir / L"sub") + L"\tsub\t\n");
    EXPECT_EQ(LineNamed(listing, L"."), L"\t00000010          0\t" + TimesOf(dir.Path()) + L"\t.\t\n");
    // The parent's times move while other tests work in it: only the frame is compared.
    const std::wstring parent = LineNamed(listing, L"..");
    EXPECT_EQ(parent.substr(0, 21), L"\t00000010          0\t");
    EXPECT_EQ(parent.substr(parent.size() - 5), L"\t..\t\n");
}

TEST(ListDirectory, MissingDirectoryGivesNoLineAndNoError) {
    TempDirectory dir;
    EXPECT_EQ(List(dir / L"does-not-exist", true, true), L"");
}

TEST(ListDirectory, SparseFilesShowTheLowThirtyTwoBitsAsSigned) {
    TempDirectory dir;
    const unsigned long long freeBefore = FreeBytes(dir.Path());
    ASSERT_TRUE(MakeSparseFile(dir / L"three-billion.bin", 3000000000LL));
    ASSERT_TRUE(MakeSparseFile(dir / L"four-gib-plus-one.bin", 4294967297LL));
    // Sparse on the host's side too: the seven gigabytes were not written.
    const unsigned long long freeAfter = FreeBytes(dir.Path());
    EXPECT_LT(freeBefore > freeAfter ? freeBefore - freeAfter : 0, 1ull << 30);

    const std::wstring listing = List(dir.Path(), false, false);
    const std::wstring threeBillion = AttributeText(dir / L"three-billion.bin") + L" -1294967296\t";
    const std::wstring fourGibPlusOne = AttributeText(dir / L"four-gib-plus-one.bin") + L"          1\t";
    EXPECT_EQ(LineNamed(listing, L"three-billion.bin").substr(0, threeBillion.size()), threeBillion);
    EXPECT_EQ(LineNamed(listing, L"four-gib-plus-one.bin").substr(0, fourGibPlusOne.size()), fourGibPlusOne);
}

TEST(ListDirectory, ContentExcerptOfEveryKindOfEntry) {
    ASSERT_EQ(::GetACP(), 1252u) << "the expected texts assume the Western European ANSI code page";
    TempDirectory dir;
    ASSERT_TRUE(TempDirectory::WriteFile(dir / L"crlf.txt", "abc\r\nsecond line\r\n"));
    ASSERT_TRUE(TempDirectory::WriteFile(dir / L"empty.txt", ""));
    ASSERT_TRUE(TempDirectory::WriteFile(dir / L"high.txt", "caf\xe9 \x80\xff\tend\n"));
    ASSERT_TRUE(TempDirectory::WriteFile(dir / L"long.txt", std::string(100, 'a') + "\n"));
    ASSERT_TRUE(TempDirectory::WriteFile(dir / L"zero-byte.txt", std::string("ab\0cd\n", 6)));
    ASSERT_TRUE(::CreateDirectoryW((dir / L"sub").c_str(), nullptr));

    const std::wstring listing = List(dir.Path(), false, true);
    const auto endsWith = [&listing](std::wstring_view name, const std::wstring& tail) {
        const std::wstring line = LineNamed(listing, name);
        return line.size() >= tail.size() && line.compare(line.size() - tail.size(), tail.size(), tail) == 0;
    };
    EXPECT_TRUE(endsWith(L"crlf.txt", L"\tcrlf.txt\t\n\t\t\t\tContent:\"abc??\"\n")) << listing;
    EXPECT_TRUE(endsWith(L"empty.txt", L"\tempty.txt\t\n\t\t\t\tContent:\"\"\n")) << listing;
    EXPECT_TRUE(endsWith(L"high.txt", L"\thigh.txt\t\n\t\t\t\tContent:\"caf\u00e9 \u20ac\u00ff?end?\"\n")) << listing;
    EXPECT_TRUE(endsWith(L"long.txt", L"\tlong.txt\t\n\t\t\t\tContent:\"" + std::wstring(79, L'a') + L"\"\n"))
        << listing;
    EXPECT_TRUE(endsWith(L"zero-byte.txt", L"\tzero-byte.txt\t\n\t\t\t\tContent:\"ab\"\n")) << listing;
    EXPECT_TRUE(endsWith(L"sub", L"\tsub\t\n\t\t\t\tContent:\"!!!unable to open file!!!\"\n")) << listing;
    // "." and ".." get no content part at all.
    EXPECT_TRUE(endsWith(L".", L"\t.\t\n")) << listing;
    EXPECT_TRUE(endsWith(L"..", L"\t..\t\n")) << listing;
}

TEST(ListDirectory, PathsLongerThanTwoHundredSixtyFourCharactersAreListedWhole) {
    TempDirectory dir;
    std::wstring deep = dir.Path();
    while (deep.size() < 300) {
        deep += L"\\" + std::wstring(40, L'd');
        ASSERT_TRUE(::CreateDirectoryW(deep.c_str(), nullptr)) << deep.size();
    }
    ASSERT_TRUE(TempDirectory::WriteFile(deep + L"\\note.txt", "deep\n"));
    const std::wstring fixture = ModuleDirectory() + L"\\fixture_version_neutral.dll";
    ASSERT_TRUE(::CopyFileW(fixture.c_str(), (deep + L"\\neutral.dll").c_str(), FALSE));
    ASSERT_GT((deep + L"/neutral.dll").size(), 264u);

    const std::wstring listing = List(deep, false, false);
    EXPECT_EQ(SplitLines(listing).size(), 4u) << listing;
    EXPECT_EQ(LineNamed(listing, L"neutral.dll"),
              HeadOf(deep + L"\\neutral.dll") + TimesOf(deep + L"\\neutral.dll") + L"\tneutral.dll\t3.2.1.0\n");
    const std::wstring withContent = List(deep, false, true);
    EXPECT_EQ(LineNamed(withContent, L"note.txt"), HeadOf(deep + L"\\note.txt") + TimesOf(deep + L"\\note.txt") +
                                                        L"\tnote.txt\t\n\t\t\t\tContent:\"deep?\"\n");
}

TEST(FormatFileEntry, VanishedEntryReportsEveryFailureInItsText) {
    TempDirectory dir;
    WIN32_FIND_DATAW entry{};
    entry.dwFileAttributes = FILE_ATTRIBUTE_ARCHIVE;
    entry.nFileSizeLow = 42;
    std::wcscpy(entry.cFileName, L"gone.txt");
    const std::wstring noTime = FormatFileTime(FILETIME{});
    EXPECT_EQ(FormatFileEntry(dir.Path(), entry, true, true),
              L"00000020         42\t" + noTime + L"\t" + noTime +
                  L"\tgone.txt\t ACL: failed GetFileSecurity (2)\n\t\t\t\tContent:\"!!!unable to open file!!!\"");
}

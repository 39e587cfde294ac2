// Directory listings of the entries that machines in trouble hold: names of
// 255 characters, names outside the ANSI code page, ten thousand entries,
// entries that vanish while the listing runs, files another process holds
// without sharing, empty and binary files; and a network listing far beyond
// 64 KiB on its way into the report. The listing must go on to its end and
// show every failure in its text. docs/reliability.md lists these cases.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <random>
#include <set>

#include "collect/DirectoryListing.h"
#include "diagwin/ReportView.h"
#include "format/AdapterText.h"
#include "format/ReportSink.h"
#include "format/ViewText.h"
#include "resource.h"
#include "support/LockedFile.h"
#include "support/TempDirectory.h"
#include "w32/Dialog.h"
#include "w32/Text.h"

namespace {


std::wstring List(const std::wstring& directory, bool withAcl, bool withContent) {
    StringReportSink sink;
    ListDirectory(sink, directory, withAcl, withContent);
    return sink.Text();
}

std::wstring FixturePath(const wchar_t* name) {
    const std::wstring program = w32::GetModulePath(nullptr);
    return program.substr(0, program.find_last_of(L"\\/")) + L"\\fixture_version_" + name + L".dll";
}

bool EndsWith(const std::wstring& text, const std::wstring& tail) {
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

// The fields of a line without a content part: name, version and the rest.
struct LineFields {
    std::wstring name;
    std::wstring tail;  // version, then the access list if any
};
LineFields FieldsOf(const std::wstring& line) {
    std::vector<std::wstring> fields;
    std::size_t start = 1;  // after the leading tab
    for (std::size_t i = 1; i < line.size(); ++i) {
        if (line[i] != L'\t' && line[i] != L'\n') continue;
        fields.push_back(line.substr(start, i - start));
        start = i + 1;
        if (line[i] == L'\n') break;
    }
    if (fields.size() < 5) return {};
    return {fields[3], fields[4]};
}

std::wstring ContentOf(const std::wstring& line) {
    const std::wstring marker = L"\n\t\t\t\tContent:\"";
    const std::size_t at = line.find(marker);
    if (at == std::wstring::npos) return L"<no content part>";
    return line.substr(at + marker.size(), line.size() - at - marker.size() - 2);  // without "\"\n"
}

// The Diagnostics window's template, to see what the user's view makes of
// a long listing.
class ViewHost : public w32::Dialog {
public:
    ViewHost() { Create(IDD_DIAGNOSTICS, nullptr); }
};

}  // namespace

// --- Directories

TEST(HostileDirectory, NamesOf255CharactersAreListedWholeWithVersionAccessListAndContent) {
    TempDirectory dir;
    const std::wstring library = std::wstring(251, L'v') + L".dll";
    const std::wstring text = std::wstring(251, L't') + L".txt";
    const std::wstring folder(255, L'f');
    ASSERT_EQ(library.size(), 255u);
    ASSERT_TRUE(::CopyFileW(FixturePath(L"neutral").c_str(), (dir / library).c_str(), FALSE)) << ::GetLastError();
    ASSERT_TRUE(TempDirectory::WriteFile(dir / text, "first line\r\nsecond\r\n"));
    ASSERT_TRUE(::CreateDirectoryW((dir / folder).c_str(), nullptr));
    ASSERT_TRUE(TempDirectory::WriteFile(dir / folder + L"\\" + text, "inside\n"));
    // A name one character longer is refused by the file system itself.
    EXPECT_FALSE(TempDirectory::WriteFile(dir / (std::wstring(256, L'x')), "x"));

    const std::wstring listing = List(dir.Path(), true, true);
    ASSERT_EQ(SplitLines(listing).size(), 5u) << listing;
    const std::wstring libraryLine = LineNamed(listing, library);
    EXPECT_EQ(FieldsOf(libraryLine).tail.substr(0, 12), L"3.2.1.0 ACL:") << libraryLine;
    EXPECT_EQ(libraryLine.find(L"failed"), std::wstring::npos) << libraryLine;
    EXPECT_EQ(ContentOf(libraryLine).substr(0, 2), L"MZ");
    const std::wstring textLine = LineNamed(listing, text);
    EXPECT_EQ(textLine.find(L"failed"), std::wstring::npos) << textLine;
    EXPECT_EQ(ContentOf(textLine), L"first line??");
    EXPECT_EQ(ContentOf(LineNamed(listing, folder)), L"!!!unable to open file!!!");

    // The folder of 255 characters listed itself: its paths pass 264 characters.
    const std::wstring inner = List(dir / folder, true, true);
    ASSERT_GT((dir / folder + L"/" + text).size(), 264u);
    ASSERT_EQ(SplitLines(inner).size(), 3u) << inner;
    EXPECT_EQ(ContentOf(LineNamed(inner, text)), L"inside?");
    EXPECT_EQ(LineNamed(inner, text).find(L"failed"), std::wstring::npos);
}

TEST(HostileDirectory, NamesOutsideTheAnsiCodePageAreListedAsTheyAre) {
    ASSERT_EQ(::GetACP(), 1252u) << "the names below are chosen outside the Western European code page";
    TempDirectory dir;
    const std::vector<std::wstring> names{
        L"\u03a9\u03bc\u03ad\u03b3\u03b1.txt",           // Greek
        L"\u65e5\u672c\u8a9e \u30c6\u30b9\u30c8.txt",    // Japanese, with a blank
        L"smile \U0001F600.txt",                         // outside the BMP: a surrogate pair
        L"\u0142\u00f3d\u017a \u20ac.dll",               // Polish letters and the euro sign
    };
    for (const std::wstring& name : names) {
        if (name.ends_with(L".dll")) {
            ASSERT_TRUE(::CopyFileW(FixturePath(L"neutral").c_str(), (dir / name).c_str(), FALSE));
        } else {
            ASSERT_TRUE(TempDirectory::WriteFile(dir / name, "\xce\xa9 bytes stay bytes\n"));
        }
    }
    const std::wstring folder = L"\u0416\u0443\u0440\u043d\u0430\u043b";  // Cyrillic
    ASSERT_TRUE(::CreateDirectoryW((dir / folder).c_str(), nullptr));
    ASSERT_TRUE(TempDirectory::WriteFile(dir / folder + L"\\" + names[0], "inner\n"));

    const std::wstring listing = List(dir.Path(), true, true);
    ASSERT_EQ(SplitLines(listing).size(), 2 + names.size() + 1) << listing;
    for (const std::wstring& name : names) {
        const std::wstring line = LineNamed(listing, name);
        ASSERT_FALSE(line.empty()) << testing::PrintToString(name);
        EXPECT_EQ(line.find(L"failed"), std::wstring::npos) << testing::PrintToString(line);
        if (name.ends_with(L".dll")) {
            EXPECT_EQ(FieldsOf(line).tail.substr(0, 7), L"3.2.1.0");
        } else {
            // The excerpt's bytes go through the ANSI code page, like every narrow piece.
            EXPECT_EQ(ContentOf(line), L"\u00ce\u00a9 bytes stay bytes?");
        }
    }
    const std::wstring inner = List(dir / folder, false, true);
    EXPECT_EQ(ContentOf(LineNamed(inner, names[0])), L"inner?");
}

TEST(HostileDirectory, TenThousandEntriesAreListedOnceEachAndTheViewHoldsThemAll) {
    TempDirectory dir;
    constexpr int kEntries = 10000;
    for (int i = 0; i < kEntries; ++i) {
        wchar_t name[32];
        std::swprintf(name, 32, L"entry-%05d.txt", i);
        ASSERT_TRUE(TempDirectory::WriteFile(dir / name, "")) << i;
    }

    const std::wstring listing = List(dir.Path(), false, false);
    const std::vector<std::wstring> lines = SplitLines(listing);
    ASSERT_EQ(lines.size(), kEntries + 2u);
    std::set<std::wstring> names;
    for (const std::wstring& line : lines) {
        EXPECT_EQ(line.front(), L'\t');
        names.insert(NameOfLine(line));
    }
    EXPECT_EQ(names.size(), kEntries + 2u) << "an entry came twice";
    EXPECT_TRUE(names.count(L"entry-00000.txt") && names.count(L"entry-09999.txt") && names.count(L".."));

    // The same listing in the Diagnostics window's view, one line at a time
    // as the report appends it.
    ViewHost host;
    ASSERT_NE(host.Hwnd(), nullptr);
    ReportView view;
    view.Attach(host.Item(IDC_REPORT_VIEW));
    view.SetReportFormat();
    view.Clear();
    ListDirectory(view, dir.Path(), false, false);
    // The directory and its parent belong to this test alone: the second
    // listing sees the same times as the first.
    EXPECT_EQ(view.Text(), AsViewText(listing));
}

TEST(HostileDirectory, EntriesDeletedWhileTheListingRunsShowTheirFailuresAndTheListingGoesOn) {
    TempDirectory dir;
    constexpr int kEntries = 200;
    std::set<std::wstring> remaining;
    for (int i = 0; i < kEntries; ++i) {
        wchar_t name[32];
        std::swprintf(name, 32, L"file-%03d.txt", i);
        ASSERT_TRUE(TempDirectory::WriteFile(dir / name, "x\n"));
        remaining.insert(name);
    }

    // Each line that arrives deletes the next file that has not been listed.
    class DeletingSink final : public ReportSink {
    public:
        DeletingSink(const TempDirectory& dir, std::set<std::wstring>& remaining) : dir_(dir), remaining_(remaining) {}
        void Append(std::wstring_view text) override {
            const std::wstring line(text);
            lines.push_back(line);
            remaining_.erase(FieldsOf(line).name);
            if (remaining_.empty()) return;
            const std::wstring next = *remaining_.begin();
            if (::DeleteFileW((dir_ / next).c_str())) deleted.insert(next);
            remaining_.erase(remaining_.begin());
        }
        std::vector<std::wstring> lines;
        std::set<std::wstring> deleted;

    private:
        const TempDirectory& dir_;
        std::set<std::wstring>& remaining_;
    };
    DeletingSink sink(dir, remaining);
    ListDirectory(sink, dir.Path(), true, true);

    ASSERT_FALSE(sink.deleted.empty());
    std::set<std::wstring> seen;
    int vanished = 0;
    for (const std::wstring& line : sink.lines) {
        ASSERT_TRUE(line.size() > 2 && line.front() == L'\t' && line.back() == L'\n') << testing::PrintToString(line);
        const std::wstring name = FieldsOf(line).name;
        EXPECT_TRUE(seen.insert(name).second) << "listed twice: " << testing::PrintToString(name);
        if (name == L"." || name == L"..") continue;
        if (sink.deleted.count(name)) {
            // Gone between the directory read and the entry's own look: every
            // failure is in the line.
            ++vanished;
            EXPECT_TRUE(EndsWith(line, L"\t ACL: failed GetFileSecurity (2)\n\t\t\t\tContent:\"!!!unable to open file!!!\"\n"))
                << testing::PrintToString(line);
        } else {
            EXPECT_EQ(ContentOf(line), L"x?") << testing::PrintToString(line);
        }
    }
    // Every file is listed or was deleted before the directory was read that far.
    EXPECT_EQ(seen.size() - 2 + (sink.deleted.size() - vanished), static_cast<std::size_t>(kEntries));
    std::cout << "[          ] " << sink.deleted.size() << " deleted during the listing, " << vanished
              << " of them still listed\n";
}

TEST(HostileDirectory, FilesHeldByAnotherProcessWithoutSharingShowTheirFailureInTheLine) {
    TempDirectory dir;
    ASSERT_TRUE(TempDirectory::WriteFile(dir / L"held.txt", "secret\n"));
    ASSERT_TRUE(::CopyFileW(FixturePath(L"neutral").c_str(), (dir / L"held.dll").c_str(), FALSE));
    const LockedFile heldText(dir / L"held.txt");
    const LockedFile heldLibrary(dir / L"held.dll");
    ASSERT_TRUE(heldText.Locked() && heldLibrary.Locked());

    const std::wstring listing = List(dir.Path(), true, true);
    ASSERT_EQ(SplitLines(listing).size(), 4u) << listing;
    const std::wstring text = LineNamed(listing, L"held.txt");
    EXPECT_EQ(ContentOf(text), L"!!!unable to open file!!!");
    // The security descriptor needs no access to the data: it is read.
    EXPECT_EQ(FieldsOf(text).tail.substr(0, 5), L" ACL:");
    EXPECT_EQ(text.find(L"failed"), std::wstring::npos) << testing::PrintToString(text);
    // The version resource cannot be read while the file is held: no version.
    const std::wstring library = LineNamed(listing, L"held.dll");
    EXPECT_EQ(FieldsOf(library).tail.substr(0, 5), L" ACL:") << testing::PrintToString(library);
    EXPECT_EQ(ContentOf(library), L"!!!unable to open file!!!");
}

TEST(HostileDirectory, EmptyAndBinaryFilesGiveAnExcerptOnOneLine) {
    ASSERT_EQ(::GetACP(), 1252u);
    TempDirectory dir;
    std::string everyByte;
    for (int i = 255; i >= 0; --i) everyByte.push_back(static_cast<char>(i));
    std::string noise(1 << 20, '\0');
    std::mt19937 random(4711);
    std::generate(noise.begin(), noise.end(), [&random] { return static_cast<char>(0x80 | (random() & 0x7F)); });
    ASSERT_TRUE(TempDirectory::WriteFile(dir / L"empty.bin", ""));
    ASSERT_TRUE(TempDirectory::WriteFile(dir / L"every-byte.bin", everyByte));
    ASSERT_TRUE(TempDirectory::WriteFile(dir / L"noise.bin", noise));
    ASSERT_TRUE(::CopyFileW(FixturePath(L"neutral").c_str(), (dir / L"library.dll").c_str(), FALSE));

    const std::wstring listing = List(dir.Path(), true, true);
    ASSERT_EQ(SplitLines(listing).size(), 6u) << listing;
    EXPECT_EQ(ContentOf(LineNamed(listing, L"empty.bin")), L"");
    // The first 79 bytes (255 down to 177) are kept and go through the code
    // page; the buffer holds no more.
    const std::wstring everyExcerpt = ContentOf(LineNamed(listing, L"every-byte.bin"));
    EXPECT_EQ(everyExcerpt, w32::AnsiToWide(everyByte.substr(0, 79)));
    const std::wstring noiseExcerpt = ContentOf(LineNamed(listing, L"noise.bin"));
    EXPECT_EQ(noiseExcerpt, w32::AnsiToWide(noise.substr(0, 79)));
    // A program: "MZ" and the bytes up to the first NUL.
    EXPECT_EQ(ContentOf(LineNamed(listing, L"library.dll")).substr(0, 2), L"MZ");
    for (const std::wstring& line : SplitLines(listing)) {
        const std::wstring excerpt = ContentOf(line);
        EXPECT_EQ(std::count_if(excerpt.begin(), excerpt.end(), [](wchar_t c) { return c < 32; }), 0)
            << testing::PrintToString(line);
    }
}

// --- Network

TEST(HugeNetworkListing, BeyondSixtyFourKibibytesReachesTheReportWhole) {
    AdapterRecord adapter;
    adapter.adapterName = "{4D36E972-E325-11CE-BFC1-08002BE10318}";
    adapter.description = "Intel(R) Ethernet Connection (7) I219-LM \xe9\xe8";  // é è in the ANSI code page
    adapter.friendlyName = "Ethernet";
    adapter.physicalAddress = {0x00, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E};
    std::string listing(kAdaptersHeading);
    while (listing.size() <= 3 * 65536) AppendAdapterBlock(listing, adapter);
    std::string last;
    AppendAdapterBlock(last, adapter);
    ASSERT_EQ(listing.compare(listing.size() - last.size(), last.size(), last), 0);

    // What the Network section appends: the whole listing, converted once.
    const std::wstring wide = w32::AnsiToWide(listing);
    ASSERT_EQ(wide.size(), listing.size());
    EXPECT_EQ(wide.substr(wide.size() - 2), L"\n\n");
    EXPECT_EQ(std::count(wide.begin(), wide.end(), L'\u00e9'), std::count(listing.begin(), listing.end(), '\xe9'));
    EXPECT_NE(wide.find(L"\tDescription: Intel(R) Ethernet Connection (7) I219-LM \u00e9\u00e8\n", wide.size() - 2000),
              std::wstring::npos);
}

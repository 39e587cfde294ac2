// The installation section and its entry lines from plain records: every
// line form with its exact text, and the pieces of the section in order.
// Runs natively (under the sanitizers) and under Wine.
#include "format/InstallationRecord.h"

#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Pieces = std::vector<std::wstring>;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kDirectory = 0x10;
constexpr std::uint32_t kArchive = 0x20;

DirectoryEntryRecord Entry(std::wstring name, std::uint32_t attributes = kArchive, std::uint32_t size = 0,
                           std::wstring version = L"") {
    DirectoryEntryRecord entry;
    entry.attributes = attributes;
    entry.sizeLow = size;
    entry.created = {7, 3, 2021, 14, 5, 9};
    entry.written = {31, 12, 2022, 23, 59, 0};
    entry.name = std::move(name);
    entry.productVersion = std::move(version);
    return entry;
}

// The line head and times that Entry() gives, for a size of 0.
constexpr wchar_t kDefaultHead[] = L"00000020          0\t07/03/2021  14:05:09\t31/12/2022  23:59:00\t";

AccessListRecord ReadList(std::vector<AccessEntryRecord> entries) {
    return AccessListRecord{AccessListState::kRead, 0, std::move(entries)};
}

AccessEntryRecord Ace(AceKind kind, std::wstring domain, std::wstring name, std::uint32_t mask) {
    return AccessEntryRecord{true, kind, AccountName{std::move(domain), std::move(name)}, mask};
}

Bytes Utf16(std::wstring_view text) {
    Bytes bytes;
    for (wchar_t unit : text) {
        bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>((unit >> 8) & 0xFF));
    }
    bytes.insert(bytes.end(), {0, 0});
    return bytes;
}

Bytes Dword(std::uint32_t value) {
    return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
            static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
}

RegistryValueRecord Value(std::wstring_view name, Bytes data) {
    for (const InstallationValue& value : kInstallationValues)
        if (value.name == name) return {value, std::move(data)};
    throw std::invalid_argument("no such installation value");
}

Pieces Rendered(const InstallationRecord& record, CollectedEntries& entries) {
    RecordingSink sink;
    RenderInstallationSection(record, entries, sink);
    return sink.Pieces();
}

}  // namespace

// --- Entry lines

TEST(EntryRecord, PlainFileWithoutVersionEndsWithTheNameTab) {
    EXPECT_EQ(RenderEntryText(Entry(L"readme.txt", kArchive, 20)),
              L"00000020         20\t07/03/2021  14:05:09\t31/12/2022  23:59:00\treadme.txt\t");
}

TEST(EntryRecord, VersionFollowsTheName) {
    EXPECT_EQ(RenderEntryText(Entry(L"Core.dll", kArchive, 40960, L"3.2.1.0")),
              L"00000020      40960\t07/03/2021  14:05:09\t31/12/2022  23:59:00\tCore.dll\t3.2.1.0");
}

TEST(EntryRecord, DotEntriesAreLikeAnyOther) {
    EXPECT_EQ(RenderEntryText(Entry(L".", kDirectory)),
              L"00000010          0\t07/03/2021  14:05:09\t31/12/2022  23:59:00\t.\t");
    EXPECT_EQ(RenderEntryText(Entry(L"..", kDirectory)),
              L"00000010          0\t07/03/2021  14:05:09\t31/12/2022  23:59:00\t..\t");
}

TEST(EntryRecord, SizesFromTwoGibibytesAreNegative) {
    EXPECT_EQ(RenderEntryText(Entry(L"big", kArchive, 3000000000u)).substr(0, 21), L"00000020 -1294967296\t");
    EXPECT_EQ(RenderEntryText(Entry(L"big", kArchive, 0xFFFFFFFFu)).substr(0, 20), L"00000020         -1\t");
}

TEST(EntryRecord, ZeroedTimesShowZeroedFields) {
    DirectoryEntryRecord entry = Entry(L"x");
    entry.created = {};
    entry.written = {};
    EXPECT_EQ(RenderEntryText(entry), L"00000020          0\t00/00/0000  00:00:00\t00/00/0000  00:00:00\tx\t");
}

TEST(EntryRecord, LineIsOnePieceWithTabAndLineFeed) {
    RecordingSink sink;
    RenderEntryLine(Entry(L"a.txt"), sink);
    EXPECT_EQ(sink.Pieces(), (Pieces{std::wstring(L"\t") + kDefaultHead + L"a.txt\t\n"}));
}

// --- Access lists

TEST(AccessListRecord, EntriesOfEveryKind) {
    const AccessListRecord list = ReadList({
        Ace(AceKind::Allow, L"BUILTIN", L"Administrators", 0x1F01FF),
        Ace(AceKind::Deny, L"", L"Everyone", 0x116),
        Ace(AceKind::Other, L"", L"Everyone", 0x116),
    });
    EXPECT_EQ(RenderAccessList(list),
              L" ACL: Allow BUILTIN\\Administrators [RWX]; Deny Everyone [ W ]; Unknown Right Everyone [];");
}

TEST(AccessListRecord, AllowNeedsEveryBitDenyAnyBit) {
    EXPECT_EQ(RenderAccessList(ReadList({Ace(AceKind::Allow, L"D", L"u", 0x01), Ace(AceKind::Deny, L"D", L"u", 0x01)})),
              L" ACL: Allow D\\u [   ]; Deny D\\u [R X];");
}

TEST(AccessListRecord, UnknownAccountAndUnreadableEntry) {
    const AccessListRecord list = ReadList({
        AccessEntryRecord{true, AceKind::Allow, std::nullopt, 0x1F01FF},
        AccessEntryRecord{false, AceKind::Allow, AccountName{L"D", L"u"}, 0x1F01FF},
        AccessEntryRecord{true, AceKind::Other, std::nullopt, 0},
    });
    EXPECT_EQ(RenderAccessList(list), L" ACL: Allow ;; Unknown Right ;");
}

TEST(AccessListRecord, EmptyListShowsTheHeadingAlone) { EXPECT_EQ(RenderAccessList(ReadList({})), L" ACL:"); }

TEST(AccessListRecord, NullList) {
    EXPECT_EQ(RenderAccessList(AccessListRecord{AccessListState::kNullList, 0, {}}), L" ACL: NULL (Allow All)");
}

TEST(AccessListRecord, Failures) {
    EXPECT_EQ(RenderAccessList(AccessListRecord{AccessListState::kSecurityUnreadable, 5, {}}),
              L" ACL: failed GetFileSecurity (5)");
    EXPECT_EQ(RenderAccessList(AccessListRecord{AccessListState::kDaclUnreadable, 1234, {}}),
              L" ACL: failed GetSecurityDescriptorDacl (1234)");
    EXPECT_EQ(RenderAccessList(AccessListRecord{AccessListState::kSecurityUnreadable, 0xFFFFFFFFu, {}}),
              L" ACL: failed GetFileSecurity (-1)");
}

TEST(EntryRecord, AccessListFollowsTheVersion) {
    DirectoryEntryRecord entry = Entry(L"Core.dll", kArchive, 0, L"3.2.1.0");
    entry.accessList = AccessListRecord{AccessListState::kNullList, 0, {}};
    EXPECT_EQ(RenderEntryText(entry), std::wstring(kDefaultHead) + L"Core.dll\t3.2.1.0 ACL: NULL (Allow All)");
}

// --- Content excerpts

TEST(EntryRecord, ContentLineOfAFile) {
    DirectoryEntryRecord entry = Entry(L"readme.txt");
    entry.content = ContentExcerptRecord{true, L"abc??"};
    EXPECT_EQ(RenderEntryText(entry), std::wstring(kDefaultHead) + L"readme.txt\t\n\t\t\t\tContent:\"abc??\"");
}

TEST(EntryRecord, ContentOfAnEmptyFileIsEmptyQuotes) {
    DirectoryEntryRecord entry = Entry(L"empty");
    entry.content = ContentExcerptRecord{true, L""};
    EXPECT_EQ(RenderEntryText(entry), std::wstring(kDefaultHead) + L"empty\t\n\t\t\t\tContent:\"\"");
}

TEST(EntryRecord, ContentThatCannotBeOpened) {
    DirectoryEntryRecord entry = Entry(L"Plugins", kDirectory);
    entry.content = ContentExcerptRecord{false, L"ignored"};
    EXPECT_EQ(RenderEntryText(entry), L"00000010          0\t07/03/2021  14:05:09\t31/12/2022  23:59:00\tPlugins\t"
                                      L"\n\t\t\t\tContent:\"!!!unable to open file!!!\"");
}

TEST(EntryRecord, AccessListComesBeforeTheContent) {
    DirectoryEntryRecord entry = Entry(L"locked");
    entry.accessList = AccessListRecord{AccessListState::kSecurityUnreadable, 32, {}};
    entry.content = ContentExcerptRecord{false, L""};
    RecordingSink sink;
    RenderEntryLine(entry, sink);
    EXPECT_EQ(sink.Pieces(), (Pieces{std::wstring(L"\t") + kDefaultHead +
                                   L"locked\t ACL: failed GetFileSecurity (32)\n\t\t\t\tContent:\"!!!unable to open "
                                   L"file!!!\"\n"}));
}

// --- The record of the section

TEST(InstallationRecordMaking, DirectoriesFromTheFolders) {
    const InstallationRecord record =
        MakeInstallationRecord(L"C:\\tools", L"C:\\Program Files", L"C:\\ProgramData", {});
    EXPECT_EQ(record.currentDirectory, L"C:\\tools");
    EXPECT_EQ(record.standardDirectory, L"C:\\Program Files\\Orvane Software V9");
    EXPECT_TRUE(record.registryValues.empty());
    EXPECT_FALSE(record.registryDirectory);
    EXPECT_EQ(record.sharedParametersDirectory, L"C:\\ProgramData\\Orvane Software");
    EXPECT_EQ(record.sharedBatchDirectory, L"C:\\ProgramData\\Orvane Software\\Runner");
}

TEST(InstallationRecordMaking, EmptyFoldersGiveRootedPaths) {
    const InstallationRecord record = MakeInstallationRecord(L"", L"", L"", {});
    EXPECT_EQ(record.standardDirectory, L"\\Orvane Software V9");
    EXPECT_EQ(record.sharedParametersDirectory, L"\\Orvane Software");
    EXPECT_EQ(record.sharedBatchDirectory, L"\\Orvane Software\\Runner");
}

TEST(InstallationRecordMaking, AnotherLocationIsListed) {
    const InstallationRecord record = MakeInstallationRecord(L"C:\\tools", L"C:\\Program Files", L"C:\\ProgramData",
                                                             {Value(L"InstallLocation", Utf16(L"D:\\Orvane"))});
    EXPECT_EQ(record.registryDirectory, std::optional<std::wstring>(L"D:\\Orvane"));
}

TEST(InstallationRecordMaking, LocationAlreadyListedOrEmptyIsNotListedAgain) {
    const auto registryDirectory = [](std::wstring_view location) {
        return MakeInstallationRecord(L"C:\\tools", L"C:\\Program Files", L"C:\\ProgramData",
                                      {Value(L"InstallLocation", Utf16(location))})
            .registryDirectory;
    };
    EXPECT_FALSE(registryDirectory(L"C:\\Program Files\\Orvane Software V9"));
    EXPECT_FALSE(registryDirectory(L"C:\\tools"));
    EXPECT_FALSE(registryDirectory(L""));
    // The comparison is exact.
    EXPECT_EQ(registryDirectory(L"C:\\program files\\Orvane Software V9"),
              std::optional<std::wstring>(L"C:\\program files\\Orvane Software V9"));
    EXPECT_EQ(registryDirectory(L"C:\\tools\\"), std::optional<std::wstring>(L"C:\\tools\\"));
}

TEST(InstallationRecordMaking, OnlyInstallLocationNamesTheDirectory) {
    const InstallationRecord record = MakeInstallationRecord(L"C:\\tools", L"C:\\Program Files", L"C:\\ProgramData",
                                                             {Value(L"VersionBuild", Utf16(L"D:\\Orvane"))});
    EXPECT_FALSE(record.registryDirectory);
}

// --- The section

TEST(InstallationSectionRecord, NothingInstalledShowsHeadingsAndTheProgramDirectory) {
    const InstallationRecord record =
        MakeInstallationRecord(L"C:\\tools", L"C:\\Program Files", L"C:\\ProgramData", {});
    CollectedEntries entries;
    entries.directories[L"C:\\tools"] = {Entry(L".", kDirectory), Entry(L"..", kDirectory),
                                         Entry(L"OrvaneDiagnostics.exe", kArchive, 1024, L"9.3.1.1042")};
    EXPECT_EQ(Rendered(record, entries),
              (Pieces{
                  L"\nOrvane Software installation:\n",
                  L"* Current directory (C:\\tools):\n",
                  L"\t00000010          0\t07/03/2021  14:05:09\t31/12/2022  23:59:00\t.\t\n",
                  L"\t00000010          0\t07/03/2021  14:05:09\t31/12/2022  23:59:00\t..\t\n",
                  L"\t00000020       1024\t07/03/2021  14:05:09\t31/12/2022  23:59:00\tOrvaneDiagnostics.exe\t"
                  L"9.3.1.1042\n",
                  L"* Standard installation directory (C:\\Program Files\\Orvane Software V9):\n",
                  L"* Registry installation data:\n",
                  L"* Shared parameters directory (C:\\ProgramData\\Orvane Software):\n",
                  L"* Shared Batch directory (C:\\ProgramData\\Orvane Software\\Runner):\n",
              }));
}

TEST(InstallationSectionRecord, EverySectionPartInOrder) {
    std::vector<RegistryValueRecord> values{
        Value(L"InstallLocation", Utf16(L"D:\\Orvane")),
        Value(L"VersionMajor", Dword(9)),
        Value(L"VersionMinor", Utf16(L"3")),  // a string read as a number: its first four bytes
        Value(L"VersionRevision", Dword(1)),
        Value(L"VersionBuildReleaseRevision", Dword(0xFFFFFFFFu)),
        Value(L"InstalledComponents", Utf16(L"Core;Runner")),
    };
    const InstallationRecord record =
        MakeInstallationRecord(L"C:\\tools", L"C:\\Program Files", L"C:\\ProgramData", std::move(values));
    CollectedEntries entries;
    entries.directories[L"C:\\tools"] = {Entry(L"t")};
    entries.directories[L"C:\\Program Files\\Orvane Software V9"] = {Entry(L"s")};
    entries.directories[L"D:\\Orvane"] = {Entry(L"r1"), Entry(L"r2")};
    entries.directories[L"C:\\ProgramData\\Orvane Software"] = {Entry(L"p")};
    entries.directories[L"C:\\ProgramData\\Orvane Software\\Runner"] = {Entry(L"b")};
    const std::wstring head = std::wstring(L"\t") + kDefaultHead;
    EXPECT_EQ(Rendered(record, entries),
              (Pieces{
                  L"\nOrvane Software installation:\n",
                  L"* Current directory (C:\\tools):\n",
                  head + L"t\t\n",
                  L"* Standard installation directory (C:\\Program Files\\Orvane Software V9):\n",
                  head + L"s\t\n",
                  L"* Registry installation data:\n",
                  L"\tInstallLocation: D:\\Orvane\n",
                  L"\tVersionMajor: 9\n",
                  L"\tVersionMinor: 51\n",
                  L"\tVersionRevision: 1\n",
                  L"\tVersionBuildReleaseRevision: -1\n",
                  L"\tInstalledComponents: Core;Runner\n",
                  L"* Registry installation directory:\n",
                  head + L"r1\t\n",
                  head + L"r2\t\n",
                  L"* Shared parameters directory (C:\\ProgramData\\Orvane Software):\n",
                  head + L"p\t\n",
                  L"* Shared Batch directory (C:\\ProgramData\\Orvane Software\\Runner):\n",
                  head + L"b\t\n",
              }));
}

TEST(InstallationSectionRecord, MissingRegistryDirectoryShowsItsHeadingAlone) {
    const InstallationRecord record = MakeInstallationRecord(L"C:\\tools", L"C:\\Program Files", L"C:\\ProgramData",
                                                             {Value(L"InstallLocation", Utf16(L"E:\\gone"))});
    CollectedEntries entries;
    EXPECT_EQ(Rendered(record, entries),
              (Pieces{
                  L"\nOrvane Software installation:\n",
                  L"* Current directory (C:\\tools):\n",
                  L"* Standard installation directory (C:\\Program Files\\Orvane Software V9):\n",
                  L"* Registry installation data:\n",
                  L"\tInstallLocation: E:\\gone\n",
                  L"* Registry installation directory:\n",
                  L"* Shared parameters directory (C:\\ProgramData\\Orvane Software):\n",
                  L"* Shared Batch directory (C:\\ProgramData\\Orvane Software\\Runner):\n",
              }));
}

TEST(InstallationSectionRecord, ProgramInTheStandardDirectoryIsListedTwiceButNotAThirdTime) {
    const InstallationRecord record =
        MakeInstallationRecord(L"C:\\Program Files\\Orvane Software V9", L"C:\\Program Files", L"C:\\ProgramData",
                               {Value(L"InstallLocation", Utf16(L"C:\\Program Files\\Orvane Software V9")),
                                Value(L"VersionBuild", Utf16(L"1042"))});
    CollectedEntries entries;
    entries.directories[L"C:\\Program Files\\Orvane Software V9"] = {Entry(L"s")};
    const std::wstring line = std::wstring(L"\t") + kDefaultHead + L"s\t\n";
    EXPECT_EQ(Rendered(record, entries),
              (Pieces{
                  L"\nOrvane Software installation:\n",
                  L"* Current directory (C:\\Program Files\\Orvane Software V9):\n",
                  line,
                  L"* Standard installation directory (C:\\Program Files\\Orvane Software V9):\n",
                  line,
                  L"* Registry installation data:\n",
                  L"\tInstallLocation: C:\\Program Files\\Orvane Software V9\n",
                  L"\tVersionBuild: 1042\n",
                  L"* Shared parameters directory (C:\\ProgramData\\Orvane Software):\n",
                  L"* Shared Batch directory (C:\\ProgramData\\Orvane Software\\Runner):\n",
              }));
}

TEST(InstallationSectionRecord, EntriesWithAccessListsAndExcerptsStayOnePieceEach) {
    const InstallationRecord record =
        MakeInstallationRecord(L"C:\\tools", L"C:\\Program Files", L"C:\\ProgramData", {});
    DirectoryEntryRecord file = Entry(L"a.txt");
    file.accessList = AccessListRecord{AccessListState::kRead, 0, {Ace(AceKind::Allow, L"", L"Everyone", 0x1F01FF)}};
    file.content = ContentExcerptRecord{true, L"hello?"};
    CollectedEntries entries;
    entries.directories[L"C:\\tools"] = {file};
    const Pieces pieces = Rendered(record, entries);
    ASSERT_EQ(pieces.size(), 7u);
    EXPECT_EQ(pieces[2], std::wstring(L"\t") + kDefaultHead +
                             L"a.txt\t ACL: Allow Everyone [RWX];\n\t\t\t\tContent:\"hello?\"\n");
}

// The installation section with the suite installed for real: files under
// Program Files and ProgramData, installation data under HKLM. These tests
// change the machine, so they run alone (RUN_SERIAL) and take everything
// away again in TearDown.
#include "collect/InstallationCollector.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "collect/FakeSuite.h"
#include "collect/ReportTestSupport.h"
#include "collect/SystemReport.h"
#include "support/TempDirectory.h"
#include "support/Wine.h"
#include "w32/Scoped.h"

namespace {

// What a test expects of one listed entry.
struct Expected {
    std::wstring name;
    std::wstring version;
    bool directory = false;
    auto operator<=>(const Expected&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Expected& e) {
    return out << testing::PrintToString(e.name) << " " << testing::PrintToString(e.version)
               << (e.directory ? " <dir>" : "");
}

// The listing in the order the file system gave it does not matter; what
// is in it does.
std::vector<Expected> Listed(const std::vector<std::wstring>& lines) {
    std::vector<Expected> listed;
    for (const ListedEntry& entry : ParseEntryLines(lines))
        listed.push_back({entry.name, entry.version, (entry.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0});
    std::sort(listed.begin(), listed.end());
    return listed;
}

std::vector<Expected> Sorted(std::vector<Expected> entries) {
    std::sort(entries.begin(), entries.end());
    return entries;
}

class SuiteInstallation : public testing::Test {
protected:
    void SetUp() override {
        SKIP_UNLESS_WINE("installs a suite under Program Files, ProgramData and HKLM of the machine");
        if (SuiteAlreadyInstalled(folders_))
            GTEST_SKIP() << "a suite is already installed on this machine; it is left alone";
        owned_ = true;
    }

    void TearDown() override {
        if (!owned_) return;
        RemoveSuite(folders_);
        TempDirectory::RemoveTree(elsewhere_);
    }

    static std::vector<Expected> StandardEntries() {
        return Sorted({{L".", L"", true},
                       {L"..", L"", true},
                       {L"Core.dll", L"3.2.1.0"},
                       {L"Runner.dll", L"1.4.0.12"},
                       {L"Legacy.dll", L""},
                       {L"readme.txt", L""},
                       {L"Plugins", L"", true}});
    }
    static std::vector<Expected> SharedEntries() {
        return Sorted({{L".", L"", true}, {L"..", L"", true}, {L"settings.ini", L""}, {L"Runner", L"", true}});
    }
    static std::vector<Expected> BatchEntries() {
        return Sorted({{L".", L"", true}, {L"..", L"", true}, {L"nightly.cmd", L""}});
    }

    RecordingSink WriteSection() const {
        RecordingSink sink;
        WriteInstallationSection(sink, programDirectory_, programFiles_, commonAppData_);
        return sink;
    }

    // Checks the section up to the registry data heading included.
    void ExpectOpening(PieceCursor& cursor, const std::vector<Expected>& standardEntries) const {
        EXPECT_EQ(cursor.Next(), L"\nOrvane Software installation:\n");
        EXPECT_EQ(cursor.Next(), L"* Current directory (" + programDirectory_ + L"):\n");
        const std::vector<Expected> program = Listed(cursor.TakeEntries());
        EXPECT_TRUE(std::binary_search(program.begin(), program.end(),
                                       Expected{L"report_tests.exe", FixedProductVersion(TestProgramPath())}));
        EXPECT_TRUE(std::binary_search(program.begin(), program.end(), Expected{L"..", L"", true}));
        EXPECT_EQ(cursor.Next(), L"* Standard installation directory (" + standard_ + L"):\n");
        EXPECT_EQ(Listed(cursor.TakeEntries()), standardEntries);
        EXPECT_EQ(cursor.Next(), L"* Registry installation data:\n");
    }

    void ExpectSharedDirectories(PieceCursor& cursor, const std::vector<Expected>& shared,
                                 const std::vector<Expected>& batch) const {
        EXPECT_EQ(cursor.Next(), L"* Shared parameters directory (" + shared_ + L"):\n");
        EXPECT_EQ(Listed(cursor.TakeEntries()), shared);
        EXPECT_EQ(cursor.Next(), L"* Shared Batch directory (" + batch_ + L"):\n");
        EXPECT_EQ(Listed(cursor.TakeEntries()), batch);
        EXPECT_TRUE(cursor.AtEnd()) << testing::PrintToString(cursor.Peek());
    }

    void ExpectRegistryLines(PieceCursor& cursor, const std::wstring& location) const {
        EXPECT_EQ(cursor.Next(), L"\tInstallLocation: " + location + L"\n");
        EXPECT_EQ(cursor.Next(), L"\tVersionMajor: 9\n");
        EXPECT_EQ(cursor.Next(), L"\tVersionMinor: 51\n");  // "3" is 33 00 00 00
        EXPECT_EQ(cursor.Next(), L"\tVersionRevision: 1\n");
        EXPECT_EQ(cursor.Next(), L"\tVersionBuildReleaseRevision: 1042\n");
        EXPECT_EQ(cursor.Next(), L"\tInstalledComponents: Core;Runner\n");
    }

    // A second listing of the standard directory under the registry's own
    // heading, for a location that names it in another spelling.
    void ExpectListedAgain(const std::wstring& location) {
        InstallSuiteFiles(folders_);
        InstallSuiteRegistryData(location);
        const RecordingSink sink = WriteSection();
        PieceCursor cursor(sink.Pieces());
        ExpectOpening(cursor, StandardEntries());
        ExpectRegistryLines(cursor, location);
        EXPECT_EQ(cursor.Next(), L"* Registry installation directory:\n");
        EXPECT_EQ(Listed(cursor.TakeEntries()), StandardEntries());
        ExpectSharedDirectories(cursor, SharedEntries(), BatchEntries());
    }

    const std::wstring programDirectory_ = TestProgramDirectory();
    const SuiteFolders folders_ = MachineSuiteFolders();
    const std::wstring& programFiles_ = folders_.programFiles;
    const std::wstring& commonAppData_ = folders_.commonAppData;
    const std::wstring& standard_ = folders_.standard;
    const std::wstring& shared_ = folders_.shared;
    const std::wstring& batch_ = folders_.batch;
    std::wstring elsewhere_;
    bool owned_ = false;
};

}  // namespace

TEST_F(SuiteInstallation, MachineWithoutTheSuiteShowsHeadingsAndTheProgramDirectory) {
    const RecordingSink sink = WriteSection();
    PieceCursor cursor(sink.Pieces());
    ExpectOpening(cursor, {});
    ExpectSharedDirectories(cursor, {}, {});
}

TEST_F(SuiteInstallation, EveryDirectoryAndValueInOrder) {
    InstallSuiteFiles(folders_);
    InstallSuiteRegistryData(standard_);
    const RecordingSink sink = WriteSection();
    PieceCursor cursor(sink.Pieces());
    ExpectOpening(cursor, StandardEntries());
    // VersionBuild is missing: no line. The location is the standard
    // directory exactly: not listed a second time.
    ExpectRegistryLines(cursor, standard_);
    ExpectSharedDirectories(cursor, SharedEntries(), BatchEntries());
}

TEST_F(SuiteInstallation, LocationDifferingByLetterCaseIsListedAgain) {
    std::wstring lower = standard_;
    std::transform(lower.begin(), lower.end(), lower.begin(), ::towlower);
    ASSERT_NE(lower, standard_);
    ExpectListedAgain(lower);
}

TEST_F(SuiteInstallation, LocationWithATrailingBackslashIsListedAgain) { ExpectListedAgain(standard_ + L"\\"); }

TEST_F(SuiteInstallation, LocationEqualToTheProgramDirectoryIsNotListedTwice) {
    InstallSuiteFiles(folders_);
    InstallSuiteRegistryData(programDirectory_);
    const RecordingSink sink = WriteSection();
    PieceCursor cursor(sink.Pieces());
    ExpectOpening(cursor, StandardEntries());
    ExpectRegistryLines(cursor, programDirectory_);
    ExpectSharedDirectories(cursor, SharedEntries(), BatchEntries());
}

TEST_F(SuiteInstallation, LocationElsewhereIsListedUnderItsHeading) {
    elsewhere_ = L"C:\\Orvane Elsewhere";
    ASSERT_TRUE(::CreateDirectoryW(elsewhere_.c_str(), nullptr));
    ASSERT_TRUE(::CopyFileW(VersionFixturePath(L"english").c_str(), (elsewhere_ + L"\\Tools.dll").c_str(), FALSE));
    InstallSuiteFiles(folders_);
    InstallSuiteRegistryData(elsewhere_);
    const RecordingSink sink = WriteSection();
    PieceCursor cursor(sink.Pieces());
    ExpectOpening(cursor, StandardEntries());
    ExpectRegistryLines(cursor, elsewhere_);
    EXPECT_EQ(cursor.Next(), L"* Registry installation directory:\n");
    EXPECT_EQ(Listed(cursor.TakeEntries()),
              Sorted({{L".", L"", true}, {L"..", L"", true}, {L"Tools.dll", L"3.2.1.0"}}));
    ExpectSharedDirectories(cursor, SharedEntries(), BatchEntries());
}

TEST_F(SuiteInstallation, LocationThatDoesNotExistShowsItsHeadingAlone) {
    InstallSuiteRegistryData(L"D:\\Gone");
    const RecordingSink sink = WriteSection();
    PieceCursor cursor(sink.Pieces());
    ExpectOpening(cursor, {});
    ExpectRegistryLines(cursor, L"D:\\Gone");
    EXPECT_EQ(cursor.Next(), L"* Registry installation directory:\n");
    EXPECT_TRUE(cursor.TakeEntries().empty());
    ExpectSharedDirectories(cursor, {}, {});
}

TEST_F(SuiteInstallation, EmptyLocationIsPrintedButNotListed) {
    const w32::ScopedRegKey key = CreateSuiteKey();
    SetValueString(key.Get(), L"InstallLocation", L"");
    SetValueString(key.Get(), L"VersionBuild", L"1042");
    const RecordingSink sink = WriteSection();
    PieceCursor cursor(sink.Pieces());
    ExpectOpening(cursor, {});
    EXPECT_EQ(cursor.Next(), L"\tInstallLocation: \n");
    EXPECT_EQ(cursor.Next(), L"\tVersionBuild: 1042\n");
    ExpectSharedDirectories(cursor, {}, {});
}

TEST_F(SuiteInstallation, KeyWithoutValuesShowsTheHeadingAlone) {
    CreateSuiteKey();
    const RecordingSink sink = WriteSection();
    PieceCursor cursor(sink.Pieces());
    ExpectOpening(cursor, {});
    ExpectSharedDirectories(cursor, {}, {});
}

TEST_F(SuiteInstallation, KeyInThe32BitViewOnlyIsNotRead) {
    {
        const w32::ScopedRegKey key = CreateSuiteKey(KEY_WOW64_32KEY);
        SetValueDword(key.Get(), L"VersionMajor", 9);
    }
    ASSERT_FALSE(SuiteKeyExists(KEY_WOW64_64KEY)) << "this registry has no separate 32-bit view";
    const RecordingSink sink = WriteSection();
    PieceCursor cursor(sink.Pieces());
    ExpectOpening(cursor, {});
    ExpectSharedDirectories(cursor, {}, {});
}

TEST_F(SuiteInstallation, TypesAreNotCheckedAndShortNumbersAreZeroFilled) {
    const w32::ScopedRegKey key = CreateSuiteKey();
    SetValueString(key.Get(), L"VersionMajor", L"12");                     // 31 00 32 00
    SetValueBytes(key.Get(), L"VersionMinor", REG_BINARY, {0x07});          // one byte only
    SetValueBytes(key.Get(), L"VersionRevision", REG_NONE, {});             // no data at all
    SetValueDword(key.Get(), L"VersionBuildReleaseRevision", 0xFFFFFFFF);   // signed
    SetValueDword(key.Get(), L"VersionBuild", 0x00420041);                  // "AB" as text
    SetValueBytes(key.Get(), L"InstalledComponents", REG_MULTI_SZ, StringBytes(std::wstring(L"Core\0Runner\0", 12)));
    const RecordingSink sink = WriteSection();
    PieceCursor cursor(sink.Pieces());
    ExpectOpening(cursor, {});
    EXPECT_EQ(cursor.Next(), L"\tVersionMajor: 3276849\n");
    EXPECT_EQ(cursor.Next(), L"\tVersionMinor: 7\n");
    EXPECT_EQ(cursor.Next(), L"\tVersionRevision: 0\n");
    EXPECT_EQ(cursor.Next(), L"\tVersionBuildReleaseRevision: -1\n");
    EXPECT_EQ(cursor.Next(), L"\tVersionBuild: AB\n");
    EXPECT_EQ(cursor.Next(), L"\tInstalledComponents: Core\n");
    ExpectSharedDirectories(cursor, {}, {});
}

TEST_F(SuiteInstallation, ValueLargerThanTheBufferGivesNoLine) {
    const w32::ScopedRegKey key = CreateSuiteKey();
    SetValueString(key.Get(), L"InstalledComponents", std::wstring(2048, L'c'));  // 4098 bytes with its terminator
    SetValueString(key.Get(), L"VersionBuild", L"1042");
    const RecordingSink sink = WriteSection();
    PieceCursor cursor(sink.Pieces());
    ExpectOpening(cursor, {});
    EXPECT_EQ(cursor.Next(), L"\tVersionBuild: 1042\n");
    ExpectSharedDirectories(cursor, {}, {});
}

TEST_F(SuiteInstallation, StringFillingTheBufferWithoutTerminatorIsReadWhole) {
    ASSERT_TRUE(SetUnterminatedString(HKEY_LOCAL_MACHINE, kSuiteKey, L"InstalledComponents", std::wstring(2048, L'c')));
    ASSERT_EQ(StoredValueSize(HKEY_LOCAL_MACHINE, kSuiteKey, L"InstalledComponents"), 4096u);
    const RecordingSink sink = WriteSection();
    PieceCursor cursor(sink.Pieces());
    ExpectOpening(cursor, {});
    EXPECT_EQ(cursor.Next(), L"\tInstalledComponents: " + std::wstring(2048, L'c') + L"\n");
    ExpectSharedDirectories(cursor, {}, {});
}

TEST_F(SuiteInstallation, WholeReportEndsWithTheSectionForItsOwnFolders) {
    InstallSuiteFiles(folders_);
    InstallSuiteRegistryData(standard_);
    RecordingSink report;
    ASSERT_TRUE(WriteSystemReport(report));
    PieceCursor cursor(report.Pieces());
    ASSERT_TRUE(cursor.SkipPast(L"\nNetwork:\n"));
    cursor.Next();  // the adapters
    ExpectOpening(cursor, StandardEntries());
    ExpectRegistryLines(cursor, standard_);
    ExpectSharedDirectories(cursor, SharedEntries(), BatchEntries());
}

// The installation section with the suite installed for real: files under
// Program Files and ProgramData, installation data under HKLM. These tests
// change the machine, so they run alone (RUN_SERIAL) and take everything
// away again in TearDown.
#include "report/InstallationSection.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "report/ReportTestSupport.h"
#include "report/SystemReport.h"
#include "support/Wine.h"
#include "w32/Scoped.h"

namespace {

constexpr wchar_t kSuiteKey[] = L"Software\\Orvane Software";

bool Exists(const std::wstring& path) { return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

void RemoveTree(const std::wstring& directory) {
    WIN32_FIND_DATAW entry{};
    {
        const w32::ScopedFind search(::FindFirstFileW((directory + L"\\*").c_str(), &entry));
        if (!search) return;
        do {
            const std::wstring name = entry.cFileName;
            if (name == L"." || name == L"..") continue;
            const std::wstring path = directory + L"\\" + name;
            if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
                RemoveTree(path);
            else
                ::DeleteFileW(path.c_str());
        } while (::FindNextFileW(search.Get(), &entry));
    }
    ::RemoveDirectoryW(directory.c_str());
}

bool WriteTextFile(const std::wstring& path, std::string_view text) {
    const w32::ScopedHandle file(
        ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    return file && ::WriteFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

void DeleteSuiteKey(REGSAM view) {
    w32::ScopedRegKey software;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software", 0, view | KEY_ALL_ACCESS, software.Put()) == ERROR_SUCCESS)
        ::RegDeleteTreeW(software.Get(), L"Orvane Software");
}

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
        if (SuiteKeyExists(0) || SuiteKeyExists(KEY_WOW64_32KEY) || Exists(standard_) || Exists(shared_))
            GTEST_SKIP() << "a suite is already installed on this machine; it is left alone";
        owned_ = true;
    }

    void TearDown() override {
        if (!owned_) return;
        DeleteSuiteKey(0);
        DeleteSuiteKey(KEY_WOW64_32KEY);
        RemoveTree(standard_);
        RemoveTree(shared_);
        if (!elsewhere_.empty()) RemoveTree(elsewhere_);
    }

    static bool SuiteKeyExists(REGSAM view) {
        w32::ScopedRegKey key;
        return ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, kSuiteKey, 0, view | KEY_READ, key.Put()) == ERROR_SUCCESS;
    }

    // Program Files\Orvane Software V9 with two libraries that carry a
    // product version, one whose version is French only, a text file and a
    // subdirectory with a file of its own; ProgramData\Orvane Software with
    // its Runner folder.
    void InstallFiles() {
        const std::wstring fixtures = TestProgramDirectory() + L"\\fixture_version_";
        ASSERT_TRUE(::CreateDirectoryW(standard_.c_str(), nullptr));
        ASSERT_TRUE(::CopyFileW((fixtures + L"neutral.dll").c_str(), (standard_ + L"\\Core.dll").c_str(), FALSE));
        ASSERT_TRUE(::CopyFileW((fixtures + L"both.dll").c_str(), (standard_ + L"\\Runner.dll").c_str(), FALSE));
        ASSERT_TRUE(::CopyFileW((fixtures + L"french.dll").c_str(), (standard_ + L"\\Legacy.dll").c_str(), FALSE));
        ASSERT_TRUE(WriteTextFile(standard_ + L"\\readme.txt", "Orvane Software V9\r\n"));
        ASSERT_TRUE(::CreateDirectoryW((standard_ + L"\\Plugins").c_str(), nullptr));
        ASSERT_TRUE(WriteTextFile(standard_ + L"\\Plugins\\inside.txt", "not listed"));
        ASSERT_TRUE(::CreateDirectoryW(shared_.c_str(), nullptr));
        ASSERT_TRUE(WriteTextFile(shared_ + L"\\settings.ini", "[System]\r\n"));
        ASSERT_TRUE(::CreateDirectoryW(batch_.c_str(), nullptr));
        ASSERT_TRUE(WriteTextFile(batch_ + L"\\nightly.cmd", "@echo off\r\n"));
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

    w32::ScopedRegKey CreateSuiteKey(REGSAM view = 0) {
        w32::ScopedRegKey key;
        EXPECT_EQ(::RegCreateKeyExW(HKEY_LOCAL_MACHINE, kSuiteKey, 0, nullptr, 0, view | KEY_ALL_ACCESS, nullptr,
                                    key.Put(), nullptr),
                  ERROR_SUCCESS);
        return key;
    }
    static void SetBytes(HKEY key, const wchar_t* name, DWORD type, const std::vector<BYTE>& data) {
        ASSERT_EQ(::RegSetValueExW(key, name, 0, type, data.data(), static_cast<DWORD>(data.size())), ERROR_SUCCESS);
    }
    static void SetString(HKEY key, const wchar_t* name, const std::wstring& text) {
        SetBytes(key, name, REG_SZ, StringBytes(text));
    }
    static void SetDword(HKEY key, const wchar_t* name, DWORD value) {
        const auto* bytes = reinterpret_cast<const BYTE*>(&value);
        SetBytes(key, name, REG_DWORD, {bytes, bytes + sizeof(value)});
    }

    // The data an installer leaves: VersionMinor written as a string,
    // VersionBuild not written at all.
    void InstallRegistryData(const std::wstring& location) {
        const w32::ScopedRegKey key = CreateSuiteKey();
        SetString(key.Get(), L"InstalledComponents", L"Core;Runner");  // written first, reported last
        SetString(key.Get(), L"InstallLocation", location);
        SetDword(key.Get(), L"VersionMajor", 9);
        SetString(key.Get(), L"VersionMinor", L"3");
        SetDword(key.Get(), L"VersionRevision", 1);
        SetDword(key.Get(), L"VersionBuildReleaseRevision", 1042);
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
        InstallFiles();
        InstallRegistryData(location);
        const RecordingSink sink = WriteSection();
        PieceCursor cursor(sink.Pieces());
        ExpectOpening(cursor, StandardEntries());
        ExpectRegistryLines(cursor, location);
        EXPECT_EQ(cursor.Next(), L"* Registry installation directory:\n");
        EXPECT_EQ(Listed(cursor.TakeEntries()), StandardEntries());
        ExpectSharedDirectories(cursor, SharedEntries(), BatchEntries());
    }

    const std::wstring programDirectory_ = TestProgramDirectory();
    const std::wstring programFiles_ = EnvironmentValue(L"ProgramFiles");
    const std::wstring commonAppData_ = EnvironmentValue(L"ProgramData");
    const std::wstring standard_ = programFiles_ + L"\\Orvane Software V9";
    const std::wstring shared_ = commonAppData_ + L"\\Orvane Software";
    const std::wstring batch_ = shared_ + L"\\Runner";
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
    InstallFiles();
    InstallRegistryData(standard_);
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
    InstallFiles();
    InstallRegistryData(programDirectory_);
    const RecordingSink sink = WriteSection();
    PieceCursor cursor(sink.Pieces());
    ExpectOpening(cursor, StandardEntries());
    ExpectRegistryLines(cursor, programDirectory_);
    ExpectSharedDirectories(cursor, SharedEntries(), BatchEntries());
}

TEST_F(SuiteInstallation, LocationElsewhereIsListedUnderItsHeading) {
    elsewhere_ = L"C:\\Orvane Elsewhere";
    ASSERT_TRUE(::CreateDirectoryW(elsewhere_.c_str(), nullptr));
    ASSERT_TRUE(::CopyFileW((TestProgramDirectory() + L"\\fixture_version_english.dll").c_str(),
                            (elsewhere_ + L"\\Tools.dll").c_str(), FALSE));
    InstallFiles();
    InstallRegistryData(elsewhere_);
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
    InstallRegistryData(L"D:\\Gone");
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
    SetString(key.Get(), L"InstallLocation", L"");
    SetString(key.Get(), L"VersionBuild", L"1042");
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
        SetDword(key.Get(), L"VersionMajor", 9);
    }
    ASSERT_FALSE(SuiteKeyExists(KEY_WOW64_64KEY)) << "this registry has no separate 32-bit view";
    const RecordingSink sink = WriteSection();
    PieceCursor cursor(sink.Pieces());
    ExpectOpening(cursor, {});
    ExpectSharedDirectories(cursor, {}, {});
}

TEST_F(SuiteInstallation, TypesAreNotCheckedAndShortNumbersAreZeroFilled) {
    const w32::ScopedRegKey key = CreateSuiteKey();
    SetString(key.Get(), L"VersionMajor", L"12");                     // 31 00 32 00
    SetBytes(key.Get(), L"VersionMinor", REG_BINARY, {0x07});         // one byte only
    SetBytes(key.Get(), L"VersionRevision", REG_NONE, {});            // no data at all
    SetDword(key.Get(), L"VersionBuildReleaseRevision", 0xFFFFFFFF);  // signed
    SetDword(key.Get(), L"VersionBuild", 0x00420041);                 // "AB" as text
    SetBytes(key.Get(), L"InstalledComponents", REG_MULTI_SZ, StringBytes(std::wstring(L"Core\0Runner\0", 12)));
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
    SetString(key.Get(), L"InstalledComponents", std::wstring(2048, L'c'));  // 4098 bytes with its terminator
    SetString(key.Get(), L"VersionBuild", L"1042");
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
    InstallFiles();
    InstallRegistryData(standard_);
    RecordingSink report;
    ASSERT_TRUE(WriteSystemReport(report));
    PieceCursor cursor(report.Pieces());
    ASSERT_TRUE(cursor.SkipPast(L"\nNetwork:\n"));
    cursor.Next();  // the adapters
    ExpectOpening(cursor, StandardEntries());
    ExpectRegistryLines(cursor, standard_);
    ExpectSharedDirectories(cursor, SharedEntries(), BatchEntries());
}

// The real program given bad input: odd command lines, odd "forcedLocale"
// settings, report files it may not write, and a machine whose installation
// is hostile from end to end. Whatever comes, the program must not crash or
// hang, the report must reach its end, and the user must see what the
// program promises. docs/reliability.md lists these cases.
#include <windows.h>
#include <sddl.h>
#include <shlobj.h>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <regex>
#include <vector>

#include "e2e/Driver.h"
#include "format/ReportVerdict.h"
#include "support/LockedFile.h"
#include "support/TempDirectory.h"
#include "support/Wine.h"
#include "w32/Scoped.h"

using namespace e2e;

namespace {

constexpr wchar_t kEnglishTitle[] = L"Orvane Diagnostics [Administrator] 9.3.1.1042 (64 bits)";
constexpr wchar_t kFrenchTitle[] = L"Diagnostics Orvane [Administrateur] 9.3.1.1042 (64 bits)";
constexpr wchar_t kInvalid[] = L"Invalid launch parameters!";
constexpr wchar_t kUsageStart[] = L"Usage: OrvaneDiagnostics.exe [/?] [report-file]\n";
constexpr wchar_t kUnableToOpen[] = L"Unable to open file!";
constexpr wchar_t kSuiteKey[] = L"Software\\Orvane Software";

bool WriteBytes(const std::wstring& path, std::string_view bytes) { return TempDirectory::WriteFile(path, bytes); }

// The body of a report file, when the file is a report that arrived whole.
std::optional<std::wstring> IntactBody(const std::wstring& path) {
    const std::string bytes = ReadBytes(path);
    if (CheckReportBytes(bytes).state != ReportState::Intact) return std::nullopt;
    std::wstring body;
    for (std::size_t i = 2; i + 1 < bytes.size() - 30; i += 2)
        body.push_back(static_cast<wchar_t>(static_cast<unsigned char>(bytes[i]) |
                                            static_cast<unsigned char>(bytes[i + 1]) << 8));
    return body;
}

std::wstring QuotedPath(const std::wstring& path) { return L"\"" + path + L"\""; }

// A box with `text` (its start when `prefix`), an OK button, pressed.
void ExpectBoxAndPressOk(Program& program, const std::wstring& text, bool prefix = false) {
    HWND box = program.WaitForMessageBox();
    ASSERT_NE(box, nullptr);
    const MessageBoxContent content = ReadMessageBox(box);
    EXPECT_EQ(content.caption, L"OrvaneDiagnostics");
    if (prefix)
        EXPECT_EQ(content.text.rfind(text, 0), 0u) << testing::PrintToString(content.text);
    else
        EXPECT_EQ(content.text, text);
    EXPECT_EQ(content.buttons, std::vector<std::wstring>{L"OK"});
    ASSERT_TRUE(PressMessageBoxButton(box, L"OK"));
    ASSERT_TRUE(program.WaitForClosed(box));
}

void ExpectInvalidCommandLine(const std::wstring& arguments) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    LaunchOptions options;
    options.arguments = arguments;
    Program program(options);
    ExpectBoxAndPressOk(program, kInvalid);
    ExpectBoxAndPressOk(program, kUsageStart, true);
    DWORD status = 1234;
    ASSERT_TRUE(program.WaitForExit(status));
    EXPECT_EQ(status, 2u);
}

std::wstring MainWindowTitle() {
    Program program;
    HWND main = program.WaitForMainWindow();
    return main ? WindowText(main) : L"(no main window)";
}

class BadCommandLine : public testing::Test {
protected:
    void SetUp() override {
        SKIP_IF_FRENCH_USER();
        SetUpForAnyLanguage();
    }
    void SetUpForAnyLanguage() {
        DeleteSettings();
        folder_ = TempFolder(L"orvane-badline");
    }
    void TearDown() override {
        // A skipped test has no folder: "" would name the root of the drive.
        if (!folder_.empty()) TempDirectory::RemoveTree(folder_);
        DeleteSettings();
    }
    std::wstring folder_;
};

// Run under a French user locale (tests/CMakeLists.txt): a forced value that
// is not "FRENCH" shows in the English window.
class FrenchUserOddForcedLocale : public BadCommandLine {
protected:
    void SetUp() override {
        SKIP_UNLESS_FRENCH_USER();
        SetUpForAnyLanguage();
    }
};

class SaveFaults : public BadCommandLine {};

// Names beyond ASCII need Wine to keep Unix file names in UTF-8; this suite
// runs under LC_ALL=C.UTF-8 (tests/CMakeLists.txt).
class UnicodeFileNames : public BadCommandLine {};

}  // namespace

// --- Command line

TEST_F(BadCommandLine, UnbalancedQuoteRunsToTheEndOfTheLine) {
    const std::wstring path = folder_ + L"\\report with blanks.txt";
    LaunchOptions options;
    options.arguments = L"\"" + path;  // never closed
    Program program(options);
    DWORD status = 1234;
    ASSERT_TRUE(RunWithoutWindow(program, status)) << "a window appeared or the program did not end";
    EXPECT_EQ(status, 0u);
    EXPECT_TRUE(IntactBody(path).has_value());
}

TEST_F(BadCommandLine, UnbalancedQuoteAroundOptionsMakesOneUnknownOption) {
    ExpectInvalidCommandLine(L"\"/h /x");
}

TEST_F(BadCommandLine, TabsDoNotSeparateTokens) {
    // One token "/h<tab>/x": an unknown option, not help and another option.
    ExpectInvalidCommandLine(L"/h\t/x");
    ExpectInvalidCommandLine(L"-?\t");
}

TEST_F(BadCommandLine, TabInsideAReportFileNameCannotBeWritten) {
    LaunchOptions options;
    options.arguments = QuotedPath(folder_ + L"\\a\tb.txt");
    options.captureOutput = true;
    Program program(options);
    DWORD status = 1234;
    ASSERT_TRUE(RunWithoutWindow(program, status));
    EXPECT_EQ(status, 3u);
    EXPECT_EQ(program.CapturedOutput(), "Unable to open file!\r\n");
}

TEST_F(UnicodeFileNames, ReportFileNamedOutsideAsciiIsWrittenUnderThatName) {
    const std::wstring path = folder_ + L"\\rapport-\u00e9t\u00e9-\u03a9-\u65e5\u672c-\U0001F600.txt";
    LaunchOptions options;
    options.arguments = QuotedPath(path);
    Program program(options);
    DWORD status = 1234;
    ASSERT_TRUE(RunWithoutWindow(program, status));
    EXPECT_EQ(status, 0u);
    EXPECT_TRUE(IntactBody(path).has_value());
}

TEST_F(BadCommandLine, OptionsOutsideAsciiAreUnknown) {
    ExpectInvalidCommandLine(L"/\u00e9");
    ExpectInvalidCommandLine(L"-\u0127elp");
}

// --- "forcedLocale"

TEST_F(FrenchUserOddForcedLocale, ValuesOutsideAsciiGiveEnglish) {
    EXPECT_EQ(MainWindowTitle(), kFrenchTitle) << "without a forced value the French locale decides";
    for (const std::wstring& value : {std::wstring(L"\uff26\uff32\uff25\uff2e\uff23\uff28"),  // full-width FRENCH
                                      std::wstring(L"fr\u00e8nch"), std::wstring(L"FRENCH\u0301"),
                                      std::wstring(L"\u0192rench")}) {
        WriteSetting(L"System", L"forcedLocale", value);
        EXPECT_EQ(MainWindowTitle(), kEnglishTitle) << testing::PrintToString(value);
    }
}

TEST_F(FrenchUserOddForcedLocale, VeryLongValueOutsideAsciiGivesEnglishAndTheReportRunsToItsEnd) {
    WriteSetting(L"System", L"forcedLocale", L"FRENCH" + std::wstring(100000, L'\u00e9'));
    EXPECT_EQ(MainWindowTitle(), kEnglishTitle);

    const std::wstring path = folder_ + L"\\report.txt";
    LaunchOptions options;
    options.arguments = QuotedPath(path);
    Program program(options);
    DWORD status = 1234;
    ASSERT_TRUE(RunWithoutWindow(program, status));
    EXPECT_EQ(status, 0u);
    const auto body = IntactBody(path);
    ASSERT_TRUE(body.has_value());
    // A forced language leaves the runtime in its "C" locale: month/day/year.
    EXPECT_TRUE(std::regex_search(body->substr(0, 80), std::wregex(L"^Orvane Software system report on "
                                                     L"\\d\\d/\\d\\d/\\d\\d \\d\\d:\\d\\d:\\d\\d\r\n")))
        << testing::PrintToString(body->substr(0, 60));
    EXPECT_NE(body->find(L"\r\nOrvane Software installation:\r\n"), std::wstring::npos);
}

// --- Saving

TEST_F(SaveFaults, ReadOnlyFileGivesTheMessageAndIsKept) {
    const std::wstring path = folder_ + L"\\read-only.txt";
    ASSERT_TRUE(WriteBytes(path, "keep me"));
    ASSERT_TRUE(::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));

    Program program;
    HWND window = OpenWholeReport(program);
    ASSERT_NE(window, nullptr);
    PostButtonClick(window, 1012);
    ASSERT_NE(CompleteSaveAs(program, path), nullptr);

    // The file dialog asks before replacing; then the program says it cannot.
    HWND box = ConfirmReplacementAndWaitForBox(program, kUnableToOpen);
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(ReadMessageBoxIcon(box), IconKind::kStop);
    ASSERT_TRUE(PressMessageBoxButton(box, L"OK"));
    std::wstring remembered;
    EXPECT_TRUE(ReadSetting(L"Folder", L"report", remembered));
    EXPECT_EQ(remembered, folder_);
    EXPECT_EQ(ReadBytes(path), "keep me");
    EXPECT_TRUE(program.IsRunning());
}

TEST_F(SaveFaults, ReadOnlyFileGivesStatusThreeWithoutAWindow) {
    const std::wstring path = folder_ + L"\\read-only.txt";
    ASSERT_TRUE(WriteBytes(path, "keep me"));
    ASSERT_TRUE(::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
    LaunchOptions options;
    options.arguments = QuotedPath(path);
    options.captureOutput = true;
    Program program(options);
    DWORD status = 1234;
    ASSERT_TRUE(RunWithoutWindow(program, status));
    EXPECT_EQ(status, 3u);
    EXPECT_EQ(program.CapturedOutput(), "Unable to open file!\r\n");
    EXPECT_EQ(ReadBytes(path), "keep me");
}

TEST_F(SaveFaults, FileHeldByAnotherProcessGivesStatusThree) {
    const std::wstring path = folder_ + L"\\held.txt";
    ASSERT_TRUE(WriteBytes(path, "keep me"));
    const LockedFile held(path);
    ASSERT_TRUE(held.Locked());
    LaunchOptions options;
    options.arguments = QuotedPath(path);
    options.captureOutput = true;
    Program program(options);
    DWORD status = 1234;
    ASSERT_TRUE(RunWithoutWindow(program, status));
    EXPECT_EQ(status, 3u);
    EXPECT_EQ(program.CapturedOutput(), "Unable to open file!\r\n");
}

TEST_F(SaveFaults, OverwritingALongerFileLeavesNothingOfIt) {
    const std::wstring path = folder_ + L"\\report.txt";
    ASSERT_TRUE(WriteBytes(path, std::string(3'000'000, 'z')));
    LaunchOptions options;
    options.arguments = QuotedPath(path);
    Program program(options);
    DWORD status = 1234;
    ASSERT_TRUE(RunWithoutWindow(program, status));
    EXPECT_EQ(status, 0u);
    const auto body = IntactBody(path);
    ASSERT_TRUE(body.has_value());
    EXPECT_EQ(ReadBytes(path).size(), 32 + 2 * body->size());
}

// --- A machine hostile from end to end (changes Program Files, ProgramData
// and HKLM: runs alone)

namespace {

std::wstring ShellFolder(int csidl) {
    wchar_t path[MAX_PATH] = {};
    ::SHGetFolderPathW(nullptr, csidl, nullptr, 0, path);
    return path;
}

bool SetValue(HKEY key, const wchar_t* name, DWORD type, const void* data, std::size_t size) {
    return ::RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size)) ==
           ERROR_SUCCESS;
}

class HostileMachine : public testing::Test {
protected:
    void SetUp() override {
        SKIP_UNLESS_WINE("installs a hostile suite under Program Files, ProgramData and HKLM of the machine");
        if (KeyExists() || Exists(standard_) || Exists(shared_))
            GTEST_SKIP() << "a suite is already installed on this machine; it is left alone";
        owned_ = true;
        DeleteSettings();
        folder_ = TempFolder(L"orvane-hostile");
    }
    void TearDown() override {
        if (!owned_) return;
        locks_.clear();
        AllowEveryone();
        ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, kSuiteKey);
        TempDirectory::RemoveTree(standard_);
        TempDirectory::RemoveTree(shared_);
        TempDirectory::RemoveTree(folder_);
        DeleteSettings();
    }

    static bool Exists(const std::wstring& path) {
        return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
    }
    static bool KeyExists() {
        w32::ScopedRegKey key;
        const LONG result = ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, kSuiteKey, 0, KEY_READ, key.Put());
        return result != ERROR_FILE_NOT_FOUND;
    }
    static bool SetKeyDacl(const wchar_t* sddl) {
        w32::ScopedRegKey key;
        if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, kSuiteKey, 0, WRITE_DAC, key.Put()) != ERROR_SUCCESS) return false;
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl, SDDL_REVISION_1, &descriptor, nullptr))
            return false;
        const w32::ScopedLocal owner(descriptor);
        return ::RegSetKeySecurity(key.Get(), DACL_SECURITY_INFORMATION, descriptor) == ERROR_SUCCESS;
    }
    static void AllowEveryone() { SetKeyDacl(L"D:P(A;;KA;;;WD)"); }

    // Runs the program headless and gives the report's body (CR LF breaks).
    std::wstring HeadlessReport() {
        const std::wstring path = folder_ + L"\\report.txt";
        LaunchOptions options;
        options.arguments = QuotedPath(path);
        Program program(options);
        DWORD status = 1234;
        EXPECT_TRUE(RunWithoutWindow(program, status, 150s)) << "a window appeared or the program did not end";
        EXPECT_EQ(status, 0u);
        const auto body = IntactBody(path);
        EXPECT_TRUE(body.has_value()) << "the report file is not intact";
        return body.value_or(L"");
    }

    // The report ends with the Shared Batch directory: its heading, then
    // nothing but entry lines.
    void ExpectReportEndsWithTheLastDirectory(const std::wstring& body) const {
        const std::wstring heading = L"\r\n* Shared Batch directory (" + shared_ + L"\\Runner):\r\n";
        const std::size_t at = body.rfind(heading);
        ASSERT_NE(at, std::wstring::npos);
        for (std::size_t line = at + heading.size(); line < body.size();) {
            const std::size_t end = body.find(L"\r\n", line);
            ASSERT_NE(end, std::wstring::npos) << "the last line has no line break";
            EXPECT_EQ(body[line], L'\t') << testing::PrintToString(body.substr(line, end - line));
            line = end + 2;
        }
    }

    const std::wstring standard_ = ShellFolder(CSIDL_PROGRAM_FILES) + L"\\Orvane Software V9";
    const std::wstring shared_ = ShellFolder(CSIDL_COMMON_APPDATA) + L"\\Orvane Software";
    std::wstring folder_;
    std::vector<std::unique_ptr<LockedFile>> locks_;
    bool owned_ = false;
};

}  // namespace

TEST_F(HostileMachine, HeadlessReportOfAHostileInstallationRunsToItsEndIntact) {
    // Registry data of every wrong kind.
    {
        w32::ScopedRegKey key;
        ASSERT_EQ(::RegCreateKeyExW(HKEY_LOCAL_MACHINE, kSuiteKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.Put(),
                                    nullptr),
                  ERROR_SUCCESS);
        ASSERT_TRUE(SetValue(key.Get(), L"InstallLocation", REG_SZ, L"", sizeof(wchar_t)));
        ASSERT_TRUE(SetValue(key.Get(), L"VersionMajor", REG_SZ, L"12", 3 * sizeof(wchar_t)));
        const BYTE seven = 7;
        ASSERT_TRUE(SetValue(key.Get(), L"VersionMinor", REG_BINARY, &seven, 1));
        const unsigned long long qword = 0x1122334455667788ull;
        ASSERT_TRUE(SetValue(key.Get(), L"VersionRevision", REG_QWORD, &qword, sizeof(qword)));
        ASSERT_TRUE(SetValue(key.Get(), L"VersionBuildReleaseRevision", REG_NONE, nullptr, 0));
        const std::wstring tooLong(3000, L'b');  // 6,002 bytes: more than the buffer
        ASSERT_TRUE(SetValue(key.Get(), L"VersionBuild", REG_SZ, tooLong.c_str(), (tooLong.size() + 1) * 2));
        // Exactly 4,096 bytes with no terminator: RegSetValueExW keeps what
        // it is given when the character after the data is not NUL.
        const std::wstring full = std::wstring(2048, L'c') + L"!";
        ASSERT_TRUE(SetValue(key.Get(), L"InstalledComponents", REG_SZ, full.c_str(), 4096));
        DWORD size = 0;
        ASSERT_EQ(::RegQueryValueExW(key.Get(), L"InstalledComponents", nullptr, nullptr, nullptr, &size),
                  ERROR_SUCCESS);
        ASSERT_EQ(size, 4096u);
    }
    // Directory entries of every hostile kind.
    const std::wstring longName = std::wstring(251, L'n') + L".txt";
    const std::vector<std::wstring> odd{longName, L"\u03a9\u03bc\u03ad\u03b3\u03b1.txt", L"\u65e5\u672c\u8a9e.txt",
                                        L"smile \U0001F600.txt", L"empty.bin", L"every-byte.bin", L"held.dll"};
    ASSERT_TRUE(::CreateDirectoryW(standard_.c_str(), nullptr));
    std::string everyByte;
    for (int i = 0; i < 256; ++i) everyByte.push_back(static_cast<char>(i));
    for (const std::wstring& name : odd)
        ASSERT_TRUE(WriteBytes(standard_ + L"\\" + name, name == L"every-byte.bin" ? everyByte : std::string()));
    const std::wstring program = ProgramPath();
    ASSERT_TRUE(::CopyFileW(program.c_str(), (standard_ + L"\\held.dll").c_str(), FALSE));
    locks_.push_back(std::make_unique<LockedFile>(standard_ + L"\\held.dll"));
    ASSERT_TRUE(locks_.back()->Locked());
    std::wstring deep = standard_;
    while (deep.size() < 300) {
        deep += L"\\" + std::wstring(50, L'd');
        ASSERT_TRUE(::CreateDirectoryW(deep.c_str(), nullptr));
    }
    ASSERT_TRUE(WriteBytes(deep + L"\\deep.txt", "deep\n"));
    ASSERT_TRUE(::CreateDirectoryW(shared_.c_str(), nullptr));
    ASSERT_TRUE(::CreateDirectoryW((shared_ + L"\\Runner").c_str(), nullptr));
    ASSERT_TRUE(WriteBytes(shared_ + L"\\Runner\\\u0416\u0443\u0440\u043d\u0430\u043b.log", "log\n"));

    const std::wstring body = HeadlessReport();
    const std::wstring data = L"\r\n* Registry installation data:\r\n"
                              L"\tInstallLocation: \r\n"
                              L"\tVersionMajor: 3276849\r\n"
                              L"\tVersionMinor: 7\r\n"
                              L"\tVersionRevision: 1432778632\r\n"
                              L"\tVersionBuildReleaseRevision: 0\r\n"
                              L"\tInstalledComponents: " +
                              std::wstring(2048, L'c') + L"\r\n* Shared parameters directory (";
    EXPECT_NE(body.find(data), std::wstring::npos);
    for (const std::wstring& name : odd)
        EXPECT_NE(body.find(L"\t" + name + L"\t"), std::wstring::npos) << testing::PrintToString(name);
    // The program's own product version, unreadable while another process
    // holds the file: the field stays empty.
    EXPECT_NE(body.find(L"\theld.dll\t\r\n"), std::wstring::npos);
    ExpectReportEndsWithTheLastDirectory(body);
    EXPECT_NE(body.find(L"\t\u0416\u0443\u0440\u043d\u0430\u043b.log\t\r\n"), std::wstring::npos);
}

TEST_F(HostileMachine, UnreadableSuiteKeyShowsTheRegistryHeadingAloneAndTheReportGoesOn) {
    {
        w32::ScopedRegKey key;
        ASSERT_EQ(::RegCreateKeyExW(HKEY_LOCAL_MACHINE, kSuiteKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.Put(),
                                    nullptr),
                  ERROR_SUCCESS);
        const DWORD nine = 9;
        ASSERT_TRUE(SetValue(key.Get(), L"VersionMajor", REG_DWORD, &nine, sizeof(nine)));
    }
    // Everyone, administrators included, is denied reading; the owner can
    // still give the right back.
    ASSERT_TRUE(SetKeyDacl(L"D:P(D;;KR;;;WD)(A;;KA;;;WD)"));
    w32::ScopedRegKey probe;
    const LONG opened = ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, kSuiteKey, 0, KEY_READ, probe.Put());
    if (opened == ERROR_SUCCESS) GTEST_SKIP() << "this system does not apply the key's access list";
    ASSERT_EQ(opened, ERROR_ACCESS_DENIED);

    const std::wstring body = HeadlessReport();
    EXPECT_NE(body.find(L"\r\n* Registry installation data:\r\n* Shared parameters directory (" + shared_ + L"):\r\n"),
              std::wstring::npos);
    ExpectReportEndsWithTheLastDirectory(body);
}

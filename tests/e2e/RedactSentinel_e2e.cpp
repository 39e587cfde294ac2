// reportcheck redact proved on a machine that says who and where it is in
// every place it can: a marker planted as the computer's name, the user, a
// profile folder holding the program, the suite's InstallLocation, a folder
// and files named with the customer's keyword, the Windows product id and
// the adapters' DNS suffix. The program makes a headless report of that
// machine; reportcheck.exe redacts it with the keyword; no marker may then
// stand in the redacted file's bytes in any letter case (read as UTF-16 and
// as UTF-8), the file must be intact, and every other field of it must be
// the original's, field by field through show --json.
//
// Where the markers come from under Wine (8.0):
//  - the computer's name: GetComputerNameW reads the registry's
//    ActiveComputerName, and WMI's Win32_ComputerSystem.Name is that same
//    call; set here, machine-wide, and put back;
//  - the user: GetUserNameW is the Unix USER of the process, inherited from
//    the test's, which ctest sets (tests/CMakeLists.txt); the same user
//    stands in the access list's account of every file (HOST\user), but the
//    program lists no access lists in its reports;
//  - the DNS suffix: the Unix resolver's, which LOCALDOMAIN in the test's
//    environment (set by ctest too) gives every adapter;
//  - the product id and InstallLocation: HKLM, set here and put back.
// What Wine cannot plant: the domain (Wine's WMI gives Win32_ComputerSystem
// a fixed Domain "WORKGROUP", the usual name that stays), and an account of
// an access list other than the user's (the program's reports hold no
// access lists, and Wine names no account but its user and the well-known
// ones); the unit tests of redact cover both. The adapters' names and
// hardware addresses are the machine's own and replaced as found.
//
// It changes the computer's name, the product id and HKLM's suite key, so it
// runs alone and only under Wine (tests/CMakeLists.txt).
#include <windows.h>

#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "collect/FakeSuite.h"
#include "collect/ReportTestSupport.h"
#include "e2e/Driver.h"
#include "support/TempDirectory.h"
#include "support/Wine.h"
#include "w32/Text.h"

using namespace e2e;
using Json = nlohmann::ordered_json;

namespace {

// The markers, each in the case the machine gives it; all begin with "qz",
// which no report holds otherwise.
constexpr wchar_t kUser[] = L"QzSentUser";        // USER, from ctest
constexpr wchar_t kDnsSuffix[] = L"qzdns.example";  // LOCALDOMAIN, from ctest
constexpr wchar_t kComputer[] = L"QZSENTPC";
constexpr wchar_t kProductId[] = L"QZPID-OEM-0000001-54321";
// The keyword as the customer types it, in none of the cases it is planted in.
constexpr wchar_t kKeyword[] = L"qzKeyWORD";
constexpr const wchar_t* kMarkers[] = {kUser, kDnsSuffix, kComputer, kProductId, kKeyword, L"qz"};

constexpr wchar_t kActiveComputerNameKey[] = L"SYSTEM\\CurrentControlSet\\Control\\ComputerName\\ActiveComputerName";

std::string Utf8(std::wstring_view text) { return w32::WideToUtf8(text); }
std::wstring Quoted(const std::wstring& path) { return L"\"" + path + L"\""; }

std::string AsciiLower(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    return text;
}

// The marker's bytes as UTF-16LE, in small letters (the markers are ASCII).
std::string Utf16Bytes(std::string_view ascii) {
    std::string bytes;
    for (char c : ascii) bytes += std::string{c, '\0'};
    return bytes;
}

// The files planted: name as on disk -> name once redacted. A name that
// holds no marker is kept.
const std::map<std::wstring, std::wstring> kProgramFolderFiles = {
    {L"qzkeyword-notes.txt", L"KEYWORD-0001-notes.txt"},
    {L"notes for QzKeywordHealth.txt", L"notes for KEYWORD-0001Health.txt"},  // a keyword inside a word
    {L"QZSENTPC backup.log", L"HOST-0001 backup.log"},                         // the computer's name as a word
    {L"readme.txt", L"readme.txt"},
};
const std::map<std::wstring, std::wstring> kSuiteFolderFiles = {
    {L"QzKeyword plan.txt", L"KEYWORD-0001 plan.txt"},
};

class RedactSentinel : public testing::Test {
protected:
    void SetUp() override {
        SKIP_UNLESS_WINE("plants the computer's name, the user and the DNS suffix where only Wine lets a test");
        if (UserName() != kUser)
            GTEST_SKIP() << "the user is planted through USER in the test's Unix environment, which ctest sets";
        if (SuiteAlreadyInstalled(folders_))
            GTEST_SKIP() << "a suite is already installed on this machine; it is left alone";
        // A profile folder of the planted user, beside the real ones; its
        // name in other letters than the user's, as Windows allows.
        const std::wstring userProfile = EnvironmentValue(L"USERPROFILE");
        profiles_ = userProfile.substr(0, userProfile.rfind(L'\\'));
        profile_ = profiles_ + L"\\qzsentuser";
        if (!::CreateDirectoryW(profile_.c_str(), nullptr)) {
            profile_.clear();
            GTEST_SKIP() << "a profile folder of that name is already there; it is left alone";
        }
        owned_ = true;
        DeleteSettings();
        programFolder_ = profile_ + L"\\QZKEYWORD Tools";
        suiteFolder_ = profile_ + L"\\QzKeyword Suite";
        reports_ = TempFolder(L"orvane-redact-sentinel");
        ASSERT_TRUE(::CreateDirectoryW(programFolder_.c_str(), nullptr));
        ASSERT_TRUE(::CreateDirectoryW(suiteFolder_.c_str(), nullptr));
        ASSERT_TRUE(::CopyFileW(ProgramPath().c_str(), (programFolder_ + L"\\OrvaneDiagnostics.exe").c_str(), FALSE));
        for (const auto& [name, redacted] : kProgramFolderFiles)
            ASSERT_TRUE(TempDirectory::WriteFile(programFolder_ + L"\\" + name, "planted\r\n"));
        ASSERT_TRUE(::CopyFileW(VersionFixturePath(L"neutral").c_str(), (suiteFolder_ + L"\\Core.dll").c_str(), FALSE));
        for (const auto& [name, redacted] : kSuiteFolderFiles)
            ASSERT_TRUE(TempDirectory::WriteFile(suiteFolder_ + L"\\" + name, "planted\r\n"));
        // The suite's data as an installer leaves it, pointing at that folder
        // in the user's name spelt in capitals.
        installLocation_ = profiles_ + L"\\QZSENTUSER\\QzKeyword Suite";
        InstallSuiteRegistryData(installLocation_);
        computerName_.emplace(HKEY_LOCAL_MACHINE, kActiveComputerNameKey, L"ComputerName");
        ASSERT_TRUE(computerName_->SetString(kComputer));
        productId_.emplace(HKEY_LOCAL_MACHINE, kWindowsCurrentVersion, L"ProductId");
        ASSERT_TRUE(productId_->SetString(kProductId));
    }

    void TearDown() override {
        if (!owned_) return;
        computerName_.reset();
        productId_.reset();
        RemoveSuite(folders_);
        TempDirectory::RemoveTree(profile_);
        TempDirectory::RemoveTree(reports_);
        DeleteSettings();
    }

    static std::wstring UserName() {
        wchar_t name[256] = {};
        DWORD size = 256;
        return ::GetUserNameW(name, &size) ? name : L"";
    }

    static Json ShowJson(const std::wstring& path) {
        const CheckerOutcome show = RunReportcheck(L"show --json " + Quoted(path));
        EXPECT_EQ(show.status, 0u) << show.output;
        return Json::parse(show.output, nullptr, false);
    }

    // A folder of the planted profile as redact leaves it.
    std::string RedactedFolder(const wchar_t* name) const { return Utf8(profiles_ + L"\\USER-0001\\" + name); }

    const SuiteFolders folders_ = MachineSuiteFolders();
    std::optional<SavedRegistryValue> computerName_, productId_;
    std::wstring profiles_, profile_, programFolder_, suiteFolder_, installLocation_, reports_;
    bool owned_ = false;
};

// The directory of that path in show --json's installation section.
Json* DirectoryAt(Json& json, const std::string& path) {
    for (Json& directory : json["installation"]["directories"])
        if (directory["path"] == path) return &directory;
    return nullptr;
}

// Renames the entries of a directory as `names` say.
void RenameEntries(Json& directory, const std::map<std::wstring, std::wstring>& names) {
    for (Json& entry : directory["entries"])
        for (const auto& [name, redacted] : names)
            if (entry["name"] == Utf8(name)) entry["name"] = Utf8(redacted);
}

}  // namespace

TEST_F(RedactSentinel, NoMarkerSurvivesInAnyCaseAndEveryOtherFieldIsKept) {
    const std::wstring reportPath = reports_ + L"\\report.txt";
    const std::wstring redactedPath = reports_ + L"\\redacted.txt";
    const std::wstring mapPath = reports_ + L"\\map.tsv";
    LaunchOptions options;
    options.program = programFolder_ + L"\\OrvaneDiagnostics.exe";
    options.arguments = Quoted(reportPath);
    options.currentDirectory = reports_;
    ASSERT_TRUE(TakeHeadlessReport(options));

    // Every marker stands where it was planted.
    const Json original = ShowJson(reportPath);
    ASSERT_FALSE(original.is_discarded());
    EXPECT_EQ(original["host"]["netbiosName"], Utf8(kComputer));
    EXPECT_EQ(original["host"]["wmiName"], Utf8(kComputer));
    EXPECT_EQ(original["host"]["domain"], "WORKGROUP");  // Wine's WMI: no domain to plant
    EXPECT_EQ(original["host"]["user"], Utf8(kUser));
    EXPECT_EQ(original["windows"]["productId"], Utf8(kProductId));
    EXPECT_EQ(original["program"]["directory"], Utf8(programFolder_));
    EXPECT_EQ(original["installation"]["registry"]["InstallLocation"], Utf8(installLocation_));
    const Json& adapters = original["network"]["adapters"];
    ASSERT_FALSE(adapters.empty());
    for (const Json& adapter : adapters) EXPECT_EQ(adapter["dnsSuffix"], Utf8(kDnsSuffix)) << adapter["name"];
    const std::string originalBytes = AsciiLower(ReadBytes(reportPath));
    for (const wchar_t* marker : kMarkers) {
        if (marker == kKeyword) continue;  // it stands in several letter cases, none of them this one
        EXPECT_NE(originalBytes.find(Utf16Bytes(AsciiLower(Utf8(marker)))), std::string::npos) << Utf8(marker);
    }

    const CheckerOutcome redact = RunReportcheck(L"redact --map " + Quoted(mapPath) + L" --keyword " + kKeyword + L" " +
                                                 Quoted(reportPath) + L" " + Quoted(redactedPath));
    ASSERT_EQ(redact.status, 0u) << redact.output;

    // The map: every value found, in the order found, each with its pseudonym.
    std::string expectedMap = "computer name\tQZSENTPC\tHOST-0001\nuser\tQzSentUser\tUSER-0001\n"
                              "product id\tQZPID-OEM-0000001-54321\tXXXXX-XXX-XXXXXXX-00001\n";
    Json expected = original;
    bool hardwareAddress = false;
    unsigned addresses = 0;
    for (std::size_t i = 0; i < adapters.size(); ++i) {
        const std::string name = "ADAPTER-000" + std::to_string(i + 1);
        expectedMap += "adapter name\t" + adapters[i]["name"].get<std::string>() + "\t" + name + "\n";
        expected["network"]["adapters"][i]["name"] = name;
        if (!adapters[i]["physicalAddress"].is_null()) {
            const std::string address = "02-00-00-00-00-0" + std::to_string(++addresses);
            expectedMap += "hardware address\t" + adapters[i]["physicalAddress"].get<std::string>() + "\t" + address + "\n";
            expected["network"]["adapters"][i]["physicalAddress"] = address;
            hardwareAddress = true;
        }
        if (i == 0) expectedMap += "DNS suffix\tqzdns.example\tDNS-0001\n";
        expected["network"]["adapters"][i]["dnsSuffix"] = "DNS-0001";
    }
    expectedMap += "keyword\tqzKeyWORD\tKEYWORD-0001\n";
    ASSERT_LT(adapters.size(), 10u);  // one digit of the pseudonyms' numbers above
    const std::string map = ReadBytes(mapPath);
    EXPECT_EQ(map, expectedMap);
    const std::string kinds = std::string("computer name, user, product id, ") +
                              (hardwareAddress ? "hardware address, " : "") + "adapter name, DNS suffix, keyword";
    EXPECT_EQ(redact.output, Utf8(redactedPath) + ": redacted (" + kinds + ")\r\n");

    // No marker, nor any other value replaced, in any letter case.
    const std::string bytes = AsciiLower(ReadBytes(redactedPath));
    ASSERT_EQ(bytes.substr(0, 2), "\xff\xfe");
    std::vector<std::string> originals;
    for (const wchar_t* marker : kMarkers) originals.push_back(AsciiLower(Utf8(marker)));
    for (std::size_t start = 0; start < map.size();) {
        const std::size_t end = map.find('\n', start);
        const std::size_t tab = map.find('\t', start);
        originals.push_back(AsciiLower(map.substr(tab + 1, map.rfind('\t', end) - tab - 1)));
        start = end + 1;
    }
    for (const std::string& value : originals) {
        EXPECT_EQ(bytes.find(value), std::string::npos) << value << " as UTF-8";
        EXPECT_EQ(bytes.find(Utf16Bytes(value)), std::string::npos) << value << " as UTF-16";
    }

    const CheckerOutcome check = RunReportcheck(L"check " + Quoted(redactedPath));
    EXPECT_EQ(check.status, 0u) << check.output;
    EXPECT_EQ(check.output.rfind(Utf8(redactedPath) + ": intact (checksum ", 0), 0u) << check.output;

    // Field by field, the redacted report is the original with the values
    // above replaced, and nothing else: versions, sizes, times, attributes,
    // the hardware, Windows' versions, the names of files without a marker.
    Json redacted = ShowJson(redactedPath);
    ASSERT_FALSE(redacted.is_discarded());
    EXPECT_EQ(redacted["integrity"]["verdict"], "intact");
    for (const char* field : {"netbiosName", "wmiName"}) expected["host"][field] = "HOST-0001";
    expected["host"]["user"] = "USER-0001";
    expected["windows"]["productId"] = "XXXXX-XXX-XXXXXXX-00001";
    expected["program"]["directory"] = RedactedFolder(L"KEYWORD-0001 Tools");
    expected["installation"]["registry"]["InstallLocation"] = RedactedFolder(L"KEYWORD-0001 Suite");
    Json* programFolder = DirectoryAt(expected, Utf8(programFolder_));
    Json* suiteFolder = DirectoryAt(expected, Utf8(installLocation_));
    ASSERT_NE(programFolder, nullptr) << "the program's folder is not listed";
    ASSERT_NE(suiteFolder, nullptr) << "InstallLocation's folder is not listed";
    RenameEntries(*programFolder, kProgramFolderFiles);
    RenameEntries(*suiteFolder, kSuiteFolderFiles);
    (*programFolder)["path"] = RedactedFolder(L"KEYWORD-0001 Tools");
    (*suiteFolder)["path"] = RedactedFolder(L"KEYWORD-0001 Suite");
    expected["lineCount"] = original["lineCount"].get<int>() + 2;
    expected["redaction"] = Json{{"line", expected["lineCount"]}, {"kinds", Json::array()}};
    for (std::size_t start = 0; start < kinds.size();) {
        const std::size_t end = std::min(kinds.find(", ", start), kinds.size());
        expected["redaction"]["kinds"].push_back(kinds.substr(start, end - start));
        start = end + 2;
    }
    expected["integrity"] = redacted["integrity"];  // the checksum is the new text's
    EXPECT_EQ(Json::diff(expected, redacted), Json::array());
}

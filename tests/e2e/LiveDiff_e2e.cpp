// reportcheck diff on two real reports of the program, taken headless around
// a change to the installed suite: the diff must name exactly what the test
// changed, and what really changed between the two runs. The committed pair in
// tests/reportcheck/data was made this way once, by hand; this test makes a
// fresh pair from the program as built on every run. It installs the suite
// under Program Files, ProgramData and HKLM and changes the product id, so it
// runs alone and only under Wine (tests/CMakeLists.txt).
#include <windows.h>

#include <gtest/gtest.h>

#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "collect/FakeSuite.h"
#include "collect/ReportTestSupport.h"
#include "e2e/Driver.h"
#include "format/ReportVerdict.h"
#include "support/TempDirectory.h"
#include "support/Wine.h"
#include "w32/Text.h"

using namespace e2e;

namespace {

constexpr wchar_t kProductIdBefore[] = L"12345-oem-0000001-11111";
constexpr wchar_t kProductIdAfter[] = L"12345-oem-0000001-99999";
constexpr char kNotes[] = "Orvane notes\r\n";
constexpr char kArrow[] = " \u2192 ";

std::string Utf8(std::wstring_view text) { return w32::WideToUtf8(text); }

std::wstring Quoted(const std::wstring& path) { return L"\"" + path + L"\""; }

// One directory entry line: "\t<attributes> <size>\t<created>\t<written>\t<name>\t<version>".
struct EntryLine {
    std::wstring created, written, name;
};

// What the test reads from a report file itself, without the parser that
// reportcheck shares with it.
struct ReportReading {
    bool intact = false;
    std::string checksum;  // as the trailer states it
    std::string volumeFree, volumeUser;  // "77007316K"
    std::vector<EntryLine> standardEntries;  // in the report's order
};

std::vector<std::wstring> BodyLines(const std::string& bytes) {
    std::wstring text;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2)
        text.push_back(static_cast<wchar_t>(static_cast<unsigned char>(bytes[i]) |
                                            static_cast<unsigned char>(bytes[i + 1]) << 8));
    std::vector<std::wstring> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = text.find(L'\n', start);
        std::wstring line = text.substr(start, end == std::wstring::npos ? std::wstring::npos : end - start);
        if (!line.empty() && line.back() == L'\r') line.pop_back();
        lines.push_back(line);
        if (end == std::wstring::npos) break;
        start = end + 1;
    }
    return lines;
}

std::optional<EntryLine> SplitEntry(const std::wstring& line) {
    static const std::wregex entry(L"\t[0-9a-f]{8} +-?\\d+\t([^\t]*)\t([^\t]*)\t([^\t]*)\t[^\t]*");
    std::wsmatch match;
    if (!std::regex_match(line, match, entry)) return std::nullopt;
    return EntryLine{match[1], match[2], match[3]};
}

ReportReading ReadReport(const std::wstring& path, const std::wstring& standardDirectory) {
    const std::string bytes = ReadBytes(path);
    ReportReading reading;
    reading.intact = CheckReportBytes(bytes).state == ReportState::Intact;
    const std::vector<std::wstring> lines = BodyLines(bytes);
    // The trailer's last two lines: "--- " and the checksum.
    if (lines.size() >= 2 && lines[lines.size() - 2] == L"--- ") reading.checksum = Utf8(lines.back());
    static const std::wregex volume(L"\tC volume: .* free (\\d+)K \\(user (\\d+)K\\)");
    const std::wstring heading = L"* Standard installation directory (" + standardDirectory + L"):";
    for (std::size_t i = 0; i < lines.size(); ++i) {
        std::wsmatch match;
        if (std::regex_match(lines[i], match, volume)) {
            reading.volumeFree = Utf8(match[1].str()) + "K";
            reading.volumeUser = Utf8(match[2].str()) + "K";
        }
        if (lines[i] != heading) continue;
        for (std::size_t j = i + 1; j < lines.size(); ++j) {
            const auto entry = SplitEntry(lines[j]);
            if (!entry) break;
            reading.standardEntries.push_back(*entry);
        }
    }
    return reading;
}

const EntryLine* FindEntry(const std::vector<EntryLine>& entries, const std::wstring& name) {
    for (const EntryLine& entry : entries)
        if (entry.name == name) return &entry;
    return nullptr;
}

std::wstring FileSize(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) return L"<no such file>";
    return std::to_wstring((static_cast<unsigned long long>(data.nFileSizeHigh) << 32) | data.nFileSizeLow);
}

// Whole seconds of the system clock.
ULONGLONG SecondsNow() {
    FILETIME now{};
    ::GetSystemTimeAsFileTime(&now);
    return ((static_cast<ULONGLONG>(now.dwHighDateTime) << 32) | now.dwLowDateTime) / 10000000;
}

// One change as reportcheck diff names it.
struct Change {
    std::string section, subject, field, kind;
    std::optional<std::string> oldValue, newValue;
    std::string entryFacts = "null";  // the JSON of an entry added or removed
};

Change Changed(std::string section, std::string subject, std::string field, std::string oldValue,
               std::string newValue) {
    return {std::move(section), std::move(subject), std::move(field), "changed", std::move(oldValue),
            std::move(newValue)};
}

std::string ExpectedText(const std::vector<Change>& changes) {
    std::string text, section;
    for (const Change& c : changes) {
        if (c.section != section) text += (section = c.section) + ":\n";
        text += '\t';
        if (!c.subject.empty()) text += c.subject + ": ";
        if (c.kind == "changed")
            text += c.field + ": " + *c.oldValue + kArrow + *c.newValue;
        else
            text += c.kind + " (" + (c.kind == "added" ? *c.newValue : *c.oldValue) + ")";
        text += "\n";
    }
    return text;
}

std::string JsonValue(const std::optional<std::string>& value) { return value ? "\"" + *value + "\"" : "null"; }

// "2026-11-22T14:56:57" of "22/11/2026  14:56:57".
std::string Iso(const std::wstring& printed) {
    const std::string t = Utf8(printed);
    return t.substr(6, 4) + "-" + t.substr(3, 2) + "-" + t.substr(0, 2) + "T" + t.substr(12);
}

// An entry added or removed, as diff --json gives its values (files with no version).
std::string EntryFactsJson(const EntryLine& entry, std::size_t size) {
    return "{\n        \"version\": \"\",\n        \"size\": " + std::to_string(size) + ",\n        \"created\": \"" +
           Utf8(entry.created) + "\",\n        \"createdIso\": \"" + Iso(entry.created) + "\",\n        \"written\": \"" +
           Utf8(entry.written) + "\",\n        \"writtenIso\": \"" + Iso(entry.written) + "\"\n      }";
}

// The directory and entry names of a change, as diff --json gives them apart.
std::string DirectoryAndEntryJson(const std::string& subject) {
    constexpr std::string_view kStandard = "Standard installation directory";
    if (subject.rfind(std::string(kStandard) + ": ", 0) != 0) return "null,\n      \"entry\": null";
    return "\"" + std::string(kStandard) + "\",\n      \"entry\": \"" + subject.substr(kStandard.size() + 2) + "\"";
}

std::string ExpectedJson(const ReportReading& before, const ReportReading& after, const std::vector<Change>& changes) {
    const auto side = [](const char* name, const ReportReading& reading) {
        return "  \"" + std::string(name) + "\": {\n    \"verdict\": \"intact\",\n    \"storedChecksum\": \"" +
               reading.checksum + "\",\n    \"bodyChecksum\": \"" + reading.checksum + "\"\n  },\n";
    };
    std::string json = "{\n  \"schemaVersion\": 4,\n" + side("old", before) + side("new", after) +
                       "  \"verdictChanged\": false,\n  \"changes\": [";
    for (std::size_t i = 0; i < changes.size(); ++i) {
        const Change& c = changes[i];
        json += std::string(i ? "," : "") + "\n    {\n      \"section\": \"" + c.section + "\",\n      \"subject\": \"" +
                c.subject + "\",\n      \"field\": \"" + c.field + "\",\n      \"change\": \"" + c.kind +
                "\",\n      \"old\": " + JsonValue(c.oldValue) + ",\n      \"new\": " + JsonValue(c.newValue) +
                ",\n      \"directory\": " + DirectoryAndEntryJson(c.subject) + ",\n      \"oldEntry\": " +
                (c.kind == "removed" ? c.entryFacts : "null") + ",\n      \"newEntry\": " +
                (c.kind == "added" ? c.entryFacts : "null") + "\n    }";
    }
    return json + (changes.empty() ? "]\n}\n" : "\n  ]\n}\n");
}

class LiveReportDiff : public testing::Test {
protected:
    void SetUp() override {
        SKIP_UNLESS_WINE("installs a suite under Program Files, ProgramData and HKLM and changes the product id");
        if (SuiteAlreadyInstalled(folders_))
            GTEST_SKIP() << "a suite is already installed on this machine; it is left alone";
        owned_ = true;
        DeleteSettings();
        productId_.emplace(HKEY_LOCAL_MACHINE, kWindowsCurrentVersion, L"ProductId");
        // The program lists its own folder and that folder's parent ("..");
        // the reports are written elsewhere, so neither changes between the
        // two runs.
        root_ = TempFolder(L"orvane-live-diff");
        program_ = root_ + L"\\program\\OrvaneDiagnostics.exe";
        reports_ = root_ + L"\\reports";
        ASSERT_TRUE(::CreateDirectoryW((root_ + L"\\program").c_str(), nullptr));
        ASSERT_TRUE(::CreateDirectoryW(reports_.c_str(), nullptr));
        ASSERT_TRUE(::CopyFileW(ProgramPath().c_str(), program_.c_str(), FALSE));
    }

    void TearDown() override {
        if (!owned_) return;
        productId_.reset();
        RemoveSuite(folders_);
        TempDirectory::RemoveTree(root_);
        DeleteSettings();
    }

    // A headless report of the program's copy; false when a window showed,
    // the program did not end in time or failed.
    bool TakeReport(const std::wstring& path) const {
        LaunchOptions options;
        options.program = program_;
        options.arguments = Quoted(path);
        options.currentDirectory = reports_;
        return TakeHeadlessReport(options, 150s);
    }

    static CheckerOutcome Check(const std::wstring& arguments) { return RunReportcheck(arguments); }

    const SuiteFolders folders_ = MachineSuiteFolders();
    std::optional<SavedRegistryValue> productId_;
    std::wstring root_, program_, reports_;
    bool owned_ = false;
};

}  // namespace

TEST_F(LiveReportDiff, DiffNamesExactlyTheChangesMadeToTheInstallationBetweenTwoReports) {
    const std::wstring& standard = folders_.standard;
    InstallSuiteFiles(folders_);
    InstallSuiteRegistryData(standard);
    ASSERT_TRUE(productId_->SetString(kProductIdBefore));
    const std::wstring beforePath = reports_ + L"\\before.txt";
    ASSERT_TRUE(TakeReport(beforePath));
    // Listings print times to the second: changes made within the second of
    // the first report could leave the times of the changed folder and files
    // as they were, and the test would never see the diff report them.
    const ULONGLONG reportSecond = SecondsNow();
    ASSERT_TRUE(WaitUntil([&] { return SecondsNow() > reportSecond; }, 5s));

    // A library replaced by another version, a file removed, a file added,
    // a registry value of the suite and the product id changed.
    ASSERT_TRUE(::CopyFileW(VersionFixturePath(L"both").c_str(), (standard + L"\\Core.dll").c_str(), FALSE));
    ASSERT_TRUE(::DeleteFileW((standard + L"\\readme.txt").c_str()));
    ASSERT_TRUE(TempDirectory::WriteFile(standard + L"\\notes.txt", kNotes));
    SetValueDword(CreateSuiteKey().Get(), L"VersionBuildReleaseRevision", 1043);
    ASSERT_TRUE(productId_->SetString(kProductIdAfter));
    const std::wstring afterPath = reports_ + L"\\after.txt";
    ASSERT_TRUE(TakeReport(afterPath));

    const ReportReading before = ReadReport(beforePath, standard);
    const ReportReading after = ReadReport(afterPath, standard);
    ASSERT_TRUE(before.intact);
    ASSERT_TRUE(after.intact);
    ASSERT_FALSE(before.volumeFree.empty()) << "no C volume line";
    ASSERT_FALSE(after.volumeFree.empty()) << "no C volume line";

    std::vector<Change> expected{Changed("Windows", "", "id", Utf8(kProductIdBefore), Utf8(kProductIdAfter))};
    // Free space really changes between two runs (the first report was
    // written meanwhile): the diff must then say so, and only then.
    if (before.volumeFree != after.volumeFree)
        expected.push_back(Changed("Hardware", "", "C volume free", before.volumeFree, after.volumeFree));
    if (before.volumeUser != after.volumeUser)
        expected.push_back(Changed("Hardware", "", "C volume user", before.volumeUser, after.volumeUser));

    // The standard directory's changes, in the order of the new listing; the
    // removed file right after the entry that preceded it in the old one.
    const std::string section = "Orvane Software installation";
    const auto subject = [](const std::wstring& name) { return "Standard installation directory: " + Utf8(name); };
    const auto times = [&](const std::wstring& name) {
        const EntryLine* old = FindEntry(before.standardEntries, name);
        const EntryLine* now = FindEntry(after.standardEntries, name);
        ASSERT_NE(old, nullptr) << Utf8(name) << " is missing from the first report";
        ASSERT_NE(now, nullptr) << Utf8(name) << " is missing from the second report";
        if (old->created != now->created)
            expected.push_back(Changed(section, subject(name), "created", Utf8(old->created), Utf8(now->created)));
        if (old->written != now->written)
            expected.push_back(Changed(section, subject(name), "written", Utf8(old->written), Utf8(now->written)));
    };
    std::wstring beforeReadme;
    for (std::size_t i = 0; i < before.standardEntries.size(); ++i)
        if (before.standardEntries[i].name == L"readme.txt" && i > 0) beforeReadme = before.standardEntries[i - 1].name;
    ASSERT_NE(beforeReadme, L"") << "readme.txt is not listed after another entry in the first report";
    ASSERT_EQ(FindEntry(after.standardEntries, L"readme.txt"), nullptr);
    ASSERT_EQ(FindEntry(before.standardEntries, L"notes.txt"), nullptr);
    ASSERT_EQ(after.standardEntries.size(), 7u);
    for (const EntryLine& entry : after.standardEntries) {
        const std::wstring& name = entry.name;
        if (name == L"notes.txt") {
            const std::size_t size = std::char_traits<char>::length(kNotes);
            expected.push_back({section, subject(name), "", "added", std::nullopt, "size " + std::to_string(size),
                                EntryFactsJson(entry, size)});
        } else if (name == L"Core.dll") {
            expected.push_back(Changed(section, subject(name), "version", "3.2.1.0", "1.4.0.12"));
            const std::wstring oldSize = FileSize(VersionFixturePath(L"neutral"));
            const std::wstring newSize = FileSize(VersionFixturePath(L"both"));
            if (oldSize != newSize)
                expected.push_back(Changed(section, subject(name), "size", Utf8(oldSize), Utf8(newSize)));
            times(name);
        } else if (name == L"." || name == L"..") {
            // Adding and removing entries changes the folder's own times, by
            // as much as the clock moved: only the reports can say by how much.
            times(name);
        }
        if (name == beforeReadme) {
            const std::size_t size = std::char_traits<char>::length(kSuiteReadme);
            expected.push_back({section, subject(L"readme.txt"), "", "removed", "size " + std::to_string(size),
                                std::nullopt, EntryFactsJson(*FindEntry(before.standardEntries, L"readme.txt"), size)});
        }
    }
    expected.push_back(Changed(section, "Registry installation data", "VersionBuildReleaseRevision", "1042", "1043"));

    const CheckerOutcome diff = Check(L"diff " + Quoted(beforePath) + L" " + Quoted(afterPath));
    EXPECT_EQ(diff.output, ExpectedText(expected));
    EXPECT_EQ(diff.status, 1u);

    const CheckerOutcome json = Check(L"diff --json " + Quoted(beforePath) + L" " + Quoted(afterPath));
    EXPECT_EQ(json.output, ExpectedJson(before, after, expected));
    EXPECT_EQ(json.status, 1u);

    for (const std::wstring& path : {beforePath, afterPath}) {
        const CheckerOutcome same = Check(L"diff " + Quoted(path) + L" " + Quoted(path));
        EXPECT_EQ(same.output, "") << Utf8(path);
        EXPECT_EQ(same.status, 0u) << Utf8(path);
    }
}

// A registry string may hold line breaks, and the report prints it raw: an
// InstallLocation that goes on with a second registry heading and a forged
// VersionMajor must not pass for the true value, and the diff must say that
// the second report has lines the reader did not recognise.
TEST_F(LiveReportDiff, LinesForgedThroughARegistryValueAreToldNotTaken) {
    InstallSuiteFiles(folders_);
    InstallSuiteRegistryData(folders_.standard);
    const std::wstring beforePath = reports_ + L"\\before.txt";
    const std::wstring afterPath = reports_ + L"\\after.txt";
    ASSERT_TRUE(TakeReport(beforePath));
    {
        const w32::ScopedRegKey key = CreateSuiteKey();
        SetValueString(key.Get(), L"InstallLocation",
                       folders_.standard + L"\r\n* Registry installation data:\r\n\tVersionMajor: 99");
    }
    ASSERT_TRUE(TakeReport(afterPath));
    ASSERT_TRUE(ReadReport(afterPath, folders_.standard).intact);

    const CheckerOutcome diff = Check(L"diff " + Quoted(beforePath) + L" " + Quoted(afterPath));
    EXPECT_EQ(diff.status, 1u);
    EXPECT_EQ(diff.output.find("VersionMajor: 9" + std::string(kArrow) + "99"), std::string::npos) << diff.output;
    EXPECT_EQ(diff.output.rfind("Lines the reader did not recognise (damaged, edited, or forged through a value):\n"
                                "\told: none\n\tnew: ",
                                0),
              0u)
        << diff.output;
    EXPECT_NE(diff.output.find("\t\"* Registry installation data:\": added (line "), std::string::npos) << diff.output;
    EXPECT_NE(diff.output.find("\t\"\\x09VersionMajor: 99\": added (line "), std::string::npos) << diff.output;
}

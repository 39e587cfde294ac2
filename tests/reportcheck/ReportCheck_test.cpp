// Runs the built reportcheck on files written here and checks every line it
// prints and its exit status. The same cases run the Linux binary natively
// and the Windows one under Wine.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "../format/TransitDamageFixtures.h"
#include "../reader/SampleReport.h"
#include "../support/TestFolder.h"
#include "format/ReportChecksum.h"
#include "reader/ReportModel.h"
#include "reader/ReportTables.h"

#if defined(_WIN32)
#include <windows.h>
#include <aclapi.h>
#include <winioctl.h>

#include <chrono>
#include <functional>
#include <thread>

#include "../support/Wine.h"
#include "w32/Scoped.h"
#else
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdlib>
#endif

namespace fs = std::filesystem;

namespace {

#if defined(_WIN32)
constexpr const char* kNewline = "\r\n";  // stdout in text mode, as on any Windows console program
constexpr const char* kJsonPathSeparator = "\\\\";  // a backslash as JSON writes it
#else
constexpr const char* kNewline = "\n";
constexpr const char* kJsonPathSeparator = "/";
#endif

std::string Utf8(std::u8string_view text) {
    return std::string(text.begin(), text.end());
}

fs::path PathFromUtf8(const std::string& text) {
    return fs::path(std::u8string(text.begin(), text.end()));
}

// The lines as the checker prints them.
std::string Lines(std::initializer_list<std::string> lines) {
    std::string text;
    for (const std::string& line : lines) text += line + kNewline;
    return text;
}

std::string ReadFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The checker is built into the same folder as this test.
fs::path CheckerPath() {
#if defined(_WIN32)
    std::wstring self(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(nullptr, self.data(), static_cast<DWORD>(self.size()));
        if (length < self.size()) {
            self.resize(length);
            break;
        }
        self.resize(self.size() * 2);
    }
    return fs::path(self).parent_path() / REPORTCHECK_FILE_NAME;
#else
    return fs::read_symlink("/proc/self/exe").parent_path() / REPORTCHECK_FILE_NAME;
#endif
}

struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
};

class ReportCheck : public ::testing::Test {
protected:
    void SetUp() override { fs::create_directories(root_ / "files"); }

    // Every test leaves nothing behind, whatever it made.
    void TearDown() override { EXPECT_EQ(folder_.Remove(), ""); }

    // Writes a file, named in UTF-8, into the folder the checker runs in.
    void Write(const std::string& name, const std::string& bytes) {
        std::ofstream out(root_ / "files" / PathFromUtf8(name), std::ios::binary);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        ASSERT_TRUE(out.good()) << name;
    }

    // Runs the checker in the files' folder with these arguments (UTF-8);
    // on Linux, standard output may go to `outTo` instead of a file of the
    // test's own (then Outcome::out is empty).
    Outcome Check(const std::vector<std::string>& arguments, const fs::path& outTo = {}) {
        // Files of their own for each run: under Wine a finished child's
        // handles may still be open for a moment, and the next run could
        // not replace them.
        const std::string run = std::to_string(++runs_);
        const fs::path out = root_ / ("stdout-" + run + ".txt");
        const fs::path err = root_ / ("stderr-" + run + ".txt");
        Outcome outcome;
#if defined(_WIN32)
        EXPECT_TRUE(outTo.empty()) << "standard output elsewhere is for the Linux build's tests";
        std::wstring commandLine = L"\"" + CheckerPath().wstring() + L"\"";
        for (const std::string& argument : arguments) commandLine += L" \"" + PathFromUtf8(argument).wstring() + L"\"";
        SECURITY_ATTRIBUTES inherit{sizeof(inherit), nullptr, TRUE};
        const HANDLE outFile = ::CreateFileW(out.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit, CREATE_ALWAYS,
                                             FILE_ATTRIBUTE_NORMAL, nullptr);
        const HANDLE errFile = ::CreateFileW(err.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit, CREATE_ALWAYS,
                                             FILE_ATTRIBUTE_NORMAL, nullptr);
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = nullptr;
        startup.hStdOutput = outFile;
        startup.hStdError = errFile;
        PROCESS_INFORMATION process{};
        const std::wstring folder = (root_ / "files").wstring();
        // Wine has been seen to refuse a start now and then among thousands
        // (a test program's own start, and once this one): the checker is
        // what is tested here, not the platform's start, so a refused start
        // is tried again, and each refusal is said.
        BOOL started = FALSE;
        for (int attempt = 1; attempt <= 3 && !started; ++attempt) {
            started = ::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW,
                                       nullptr, folder.c_str(), &startup, &process);
            if (!started)
                std::cerr << "start " << attempt << " of " << CheckerPath().string() << " refused: error "
                          << ::GetLastError() << "\n";
        }
        ::CloseHandle(outFile);
        ::CloseHandle(errFile);
        EXPECT_TRUE(started) << "cannot start " << CheckerPath().string();
        if (!started) return outcome;
        ::WaitForSingleObject(process.hProcess, 60 * 1000);
        DWORD code = 0;
        ::GetExitCodeProcess(process.hProcess, &code);
        ::CloseHandle(process.hThread);
        ::CloseHandle(process.hProcess);
        outcome.status = static_cast<int>(code);
#else
        auto quote = [](const std::string& text) { return "'" + text + "'"; };
        std::string command = "cd " + quote((root_ / "files").string()) + " && exec " + quote(CheckerPath().string());
        for (const std::string& argument : arguments) command += " " + quote(argument);
        command += " >" + quote(outTo.empty() ? out.string() : outTo.string()) + " 2>" + quote(err.string());
        const int raw = std::system(command.c_str());
        outcome.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
#endif
        outcome.out = ReadFile(out);
        outcome.err = ReadFile(err);
        return outcome;
    }

    static std::string TestName() { return ::testing::UnitTest::GetInstance()->current_test_info()->name(); }

    const testsupport::TestFolder folder_{"reportcheck-" + TestName()};
    const fs::path root_ = folder_.Path();
    int runs_ = 0;
};

// "AB" is the example of the file format: its checksum is 01024145.
const std::string kReportAB = BuildReportFileBytes(u"AB");

std::string AlteredAB() {
    std::string bytes = kReportAB;
    bytes[4] = 'C';  // the body now reads "AC", which gives 01024045
    return bytes;
}

}  // namespace

TEST_F(ReportCheck, IntactReport) {
    Write("report.txt", kReportAB);
    const Outcome outcome = Check({"report.txt"});
    EXPECT_EQ(outcome.out, Lines({"report.txt: intact (checksum 01024145)"}));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(ReportCheck, EmptyReportIsIntact) {
    Write("empty-report.txt", BuildReportFileBytes(u""));
    const Outcome outcome = Check({"empty-report.txt"});
    EXPECT_EQ(outcome.out, Lines({"empty-report.txt: intact (checksum 01020304)"}));
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(ReportCheck, AlteredReport) {
    Write("report.txt", AlteredAB());
    const Outcome outcome = Check({"report.txt"});
    EXPECT_EQ(outcome.out, Lines({"report.txt: altered (trailer says 01024145, body gives 01024045)"}));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(ReportCheck, TextFileIsNotAReport) {
    Write("notes.txt", "Host:\n\tUser: Fran\xC3\xA7oise\n");
    const Outcome outcome = Check({"notes.txt"});
    EXPECT_EQ(outcome.out, Lines({"notes.txt: not a report (no UTF-16 byte-order mark)"}));
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(ReportCheck, EmptyFileIsNotAReport) {
    Write("empty.txt", "");
    const Outcome outcome = Check({"empty.txt"});
    EXPECT_EQ(outcome.out, Lines({"empty.txt: not a report (empty file)"}));
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(ReportCheck, SingleByteIsNotAReport) {
    Write("one-byte.txt", std::string(1, '\xFF'));
    const Outcome outcome = Check({"one-byte.txt"});
    EXPECT_EQ(outcome.out, Lines({"one-byte.txt: not a report (no UTF-16 byte-order mark)"}));
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(ReportCheck, TruncatedReportsAreNotReports) {
    Write("cut-1.txt", kReportAB.substr(0, kReportAB.size() - 1));
    Write("cut-2.txt", kReportAB.substr(0, kReportAB.size() - 2));
    Write("cut-trailer.txt", kReportAB.substr(0, 2 + 4 + 12));
    Write("bom-only.txt", kReportAB.substr(0, 2));
    const Outcome outcome = Check({"cut-1.txt", "cut-2.txt", "cut-trailer.txt", "bom-only.txt"});
    EXPECT_EQ(outcome.out, Lines({"cut-1.txt: not a report (odd number of bytes); truncated after 35 of 36 bytes",
                                  "cut-2.txt: not a report (no checksum trailer at the end); truncated after 34 of 36 bytes",
                                  "cut-trailer.txt: not a report (no checksum trailer at the end); truncated after 18 of 36 bytes",
                                  "bom-only.txt: not a report (no checksum trailer at the end)"}));
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(ReportCheck, TrailerWithCapitalDigitsIsNotAReport) {
    std::string bytes = BuildReportFileBytes(u"\u00ff\u00ff");  // checksum 0102fcfb
    for (std::size_t i = bytes.size() - 18; i < bytes.size() - 2; i += 2)
        if (bytes[i] >= 'a' && bytes[i] <= 'f') bytes[i] = static_cast<char>(bytes[i] - 'a' + 'A');
    Write("capitals.txt", bytes);
    const Outcome outcome = Check({"capitals.txt"});
    EXPECT_EQ(outcome.out, Lines({"capitals.txt: not a report (no checksum trailer at the end)"}));
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(ReportCheck, MissingFileCannotBeRead) {
    const Outcome outcome = Check({"missing.txt"});
    EXPECT_EQ(outcome.out, Lines({"missing.txt: cannot be read (No such file or directory)"}));
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(ReportCheck, FolderCannotBeRead) {
    fs::create_directory(root_ / "files" / "folder");
    const Outcome outcome = Check({"folder"});
    // The same words on Linux and Windows (where opening a folder as a file
    // is "access denied").
    EXPECT_EQ(outcome.out, Lines({"folder: cannot be read (Is a directory)"}));
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(ReportCheck, AllIntactGivesZero) {
    Write("a.txt", kReportAB);
    Write("b.txt", BuildReportFileBytes(u"ABCDE"));
    const Outcome outcome = Check({"a.txt", "b.txt"});
    EXPECT_EQ(outcome.out, Lines({"a.txt: intact (checksum 01024145)", "b.txt: intact (checksum 45414100)"}));
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(ReportCheck, OneAlteredAmongIntactGivesOne) {
    Write("a.txt", kReportAB);
    Write("b.txt", AlteredAB());
    const Outcome outcome = Check({"a.txt", "b.txt", "a.txt"});
    EXPECT_EQ(outcome.out, Lines({"a.txt: intact (checksum 01024145)",
                                  "b.txt: altered (trailer says 01024145, body gives 01024045)",
                                  "a.txt: intact (checksum 01024145)"}));
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(ReportCheck, OneNotAReportAmongOthersGivesTwo) {
    Write("a.txt", kReportAB);
    Write("b.txt", AlteredAB());
    Write("notes.txt", "plain text\n");
    const Outcome outcome = Check({"notes.txt", "a.txt", "b.txt"});
    EXPECT_EQ(outcome.out, Lines({"notes.txt: not a report (no UTF-16 byte-order mark)",
                                  "a.txt: intact (checksum 01024145)",
                                  "b.txt: altered (trailer says 01024145, body gives 01024045)"}));
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(ReportCheck, UnreadableFileAmongOthersGivesTwo) {
    Write("a.txt", kReportAB);
    const Outcome outcome = Check({"a.txt", "missing.txt"});
    EXPECT_EQ(outcome.out, Lines({"a.txt: intact (checksum 01024145)",
                                  "missing.txt: cannot be read (No such file or directory)"}));
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(ReportCheck, NamesBeyondAsciiArePrintedInUtf8) {
    const std::string name = Utf8(u8"rapport-\u00e9t\u00e9-\u20ac.txt");
    Write(name, kReportAB);
    const Outcome outcome = Check({name});
    EXPECT_EQ(outcome.out, Lines({name + ": intact (checksum 01024145)"}));
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(ReportCheck, NoArgumentsPrintsUsageAndIsAUsageError) {
    const Outcome outcome = Check({});
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.rfind(std::string("usage: reportcheck FILE...") + kNewline, 0), 0u) << outcome.err;
    EXPECT_EQ(outcome.status, 64);
}

TEST_F(ReportCheck, HelpPrintsUsageAndGivesZero) {
    const Outcome outcome = Check({"--help"});
    EXPECT_EQ(outcome.out.rfind(std::string("usage: reportcheck FILE...") + kNewline, 0), 0u) << outcome.out;
    EXPECT_NE(outcome.out.find("Exit status: 0 when every file is intact, 1 when one is altered,"),
              std::string::npos);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

// --- show, diff, collect ----------------------------------------------------

namespace {

std::u16string Utf16(const std::string& ascii) {
    return std::u16string(ascii.begin(), ascii.end());
}

// A saved report of this body, CR LF as the program saves it.
std::string SavedReport(const std::string& body) {
    return BuildReportFileBytes(Utf16(WithCrLf(body)));
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    if (at != std::string::npos) text.replace(at, from.size(), to);
    return text;
}

// The sample a week later: the header's time, the free space, a library
// replaced, a file added, a file removed, a registry value and the product
// id changed.
std::string LaterSample() {
    std::string body = Replaced(kSampleReportBody, "11/22/26 14:36:06", "11/29/26 09:12:00");
    body = Replaced(body, "free 81646476K (user 81646476K)", "free 81000000K (user 81000000K)");
    body = Replaced(body, "\ttool.dll\t9.3.1.0\n", "\ttool.dll\t9.4.0.0\n");
    body = Replaced(body, "08/03/2021  09:00:00\ttool.dll", "29/11/2026  09:00:00\ttool.dll");
    body = Replaced(body, "* Standard installation directory (C:\\Program Files\\Orvane Software V9):\n",
                    "* Standard installation directory (C:\\Program Files\\Orvane Software V9):\n"
                    "\t00000020         12\t29/11/2026  09:01:00\t29/11/2026  09:01:00\tnotes.txt\t\n");
    body = Replaced(body, "\t80000020 -1294967296\t01/01/2020  00:00:00\t01/01/2020  00:00:01\tbig.bin\t ACL: "
                          "Allow BUILTIN\\Administrators [RWX];\n\t\t\t\tContent:\"abc??\"\n",
                    "");
    body = Replaced(body, "\tVersionBuild: 1042", "\tVersionBuild: 1043");
    body = Replaced(body, "\tid: 12345-oem-0000001-54321", "\tid: 12345-oem-0000001-99999");
    return body;
}

const std::string kLaterSampleDiff =
    "Windows:\n"
    "\tid: 12345-oem-0000001-54321 \u2192 12345-oem-0000001-99999\n"
    "Hardware:\n"
    "\tC volume free: 81646476K \u2192 81000000K\n"
    "\tC volume user: 81646476K \u2192 81000000K\n"
    "Orvane Software installation:\n"
    "\tCurrent directory: tool.dll: version: 9.3.1.0 \u2192 9.4.0.0\n"
    "\tCurrent directory: tool.dll: written: 08/03/2021  09:00:00 \u2192 29/11/2026  09:00:00\n"
    "\tStandard installation directory: notes.txt: added (size 12)\n"
    "\tRegistry installation directory: big.bin: removed (size -1294967296)\n"
    "\tRegistry installation data: VersionBuild: 1042 \u2192 1043\n";

const std::string kTinyBody = "\nProgram:\nA 1\nin C:\\X\nstray\n";

}  // namespace

TEST_F(ReportCheck, ShowPrintsTheWholeReportAsJson) {
    Write("tiny.txt", BuildReportFileBytes(Utf16(kTinyBody)));
    const Outcome outcome = Check({"show", "--json", "tiny.txt"});
    EXPECT_EQ(outcome.out,
              "{\n"
              "  \"schemaVersion\": 4,\n"
              "  \"integrity\": {\n"
              "    \"verdict\": \"intact\",\n"
              "    \"storedChecksum\": \"6f090968\",\n"
              "    \"bodyChecksum\": \"6f090968\",\n"
              "    \"lineBreaks\": \"LF\",\n"
              "    \"lineBreakExceptions\": [],\n"
              "    \"finalLineBreak\": true\n"
              "  },\n"
              "  \"lineCount\": 5,\n"
              "  \"header\": null,\n"
              "  \"program\": {\n"
              "    \"name\": \"A\",\n"
              "    \"version\": \"1\",\n"
              "    \"directory\": \"C:\\\\X\",\n"
              "    \"elevated\": false,\n"
              "    \"blankLineBefore\": true\n"
              "  },\n"
              "  \"host\": null,\n"
              "  \"windows\": null,\n"
              "  \"hardware\": null,\n"
              "  \"network\": null,\n"
              "  \"installation\": null,\n"
              "  \"unrecognised\": [\n"
              "    {\n"
              "      \"line\": 5,\n"
              "      \"text\": \"stray\"\n"
              "    }\n"
              "  ]\n"
              "}\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(ReportCheck, ShowOfAnAlteredReportSaysSoAndExitsOne) {
    std::string bytes = SavedReport(kSampleReportBody);
    const std::size_t at = bytes.find(std::string("b\0o\0a\0r\0d\0", 10));
    ASSERT_NE(at, std::string::npos);
    bytes[at] = 'B';  // an edited line
    Write("edited.txt", bytes);
    const Outcome outcome = Check({"show", "--json", "edited.txt"});
    EXPECT_NE(outcome.out.find("\"verdict\": \"altered\""), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("\"text\": \"\\tBoard: Intel Corporation\""), std::string::npos) << outcome.out;
    EXPECT_EQ(outcome.status, 1);
}

// Bad input: one line on standard error naming the file, nothing on
// standard output, exit status 2.
TEST_F(ReportCheck, ShowOfBadInputPrintsNoJson) {
    std::string bigEndian = "\xFE\xFF";
    for (char16_t c : Utf16(kTinyBody)) bigEndian += {static_cast<char>(c >> 8), static_cast<char>(c & 0xFF)};
    const std::string report = SavedReport(kTinyBody);
    const struct {
        std::string name, bytes, reason;
    } cases[] = {
        {"empty.txt", "", "not a report (empty file)"},
        {"one-byte.txt", "\xFF", "not a report (no UTF-16 byte-order mark)"},
        {"utf8.txt", WithCrLf(kTinyBody), "not a report (no UTF-16 byte-order mark)"},
        {"utf16be.txt", bigEndian, "not a report (no UTF-16 byte-order mark)"},
        {"truncated.txt", report.substr(0, report.size() - 2), "not a report (no checksum trailer at the end)"},
        {"no-trailer.txt", report.substr(0, report.size() - 30), "not a report (no checksum trailer at the end)"},
        {Utf8(u8"r\u00e9sum\u00e9.txt"), "%PDF-1.4", "not a report (no UTF-16 byte-order mark)"},
    };
    for (const auto& c : cases) {
        Write(c.name, c.bytes);
        const Outcome outcome = Check({"show", "--json", c.name});
        EXPECT_EQ(outcome.out, "") << c.name;
        EXPECT_EQ(outcome.err, "reportcheck: " + c.name + ": " + c.reason + kNewline) << c.name;
        EXPECT_EQ(outcome.status, 2) << c.name;
    }
    const Outcome missing = Check({"show", "--json", "missing.txt"});
    EXPECT_EQ(missing.out, "");
    EXPECT_EQ(missing.err, std::string("reportcheck: missing.txt: cannot be read (No such file or directory)") + kNewline);
    EXPECT_EQ(missing.status, 2);
}

TEST_F(ReportCheck, DiffNamesEachChangeOnce) {
    Write("before.txt", SavedReport(kSampleReportBody));
    Write("after.txt", SavedReport(LaterSample()));
    const Outcome outcome = Check({"diff", "before.txt", "after.txt"});
    EXPECT_EQ(outcome.out, kLaterSampleDiff);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(ReportCheck, DiffOfAReportWithItselfOrItsLineFeedFormIsSilent) {
    Write("report.txt", SavedReport(kSampleReportBody));
    Write("report-lf.txt", BuildReportFileBytes(Utf16(kSampleReportBody)));
    for (const char* other : {"report.txt", "report-lf.txt"}) {
        const Outcome outcome = Check({"diff", "report.txt", other});
        EXPECT_EQ(outcome.out, "") << other;
        EXPECT_EQ(outcome.status, 0) << other;
    }
}

TEST_F(ReportCheck, DiffOfAnAlteredReportSaysSoFirst) {
    Write("before.txt", SavedReport(kTinyBody));
    std::string edited = SavedReport(kTinyBody);
    edited[edited.find('1')] = '2';
    Write("after.txt", edited);
    const Outcome outcome = Check({"diff", "before.txt", "after.txt"});
    EXPECT_EQ(outcome.out,
              "The checksum verdict changed:\n"
              "\told: intact (checksum 14244c76)\n"
              "\tnew: altered (trailer says 14244c76, body gives 14274c76)\n"
              "Lines the reader did not recognise (damaged, edited, or forged through a value):\n"
              "\told: 1 (line 5)\n"
              "\tnew: 1 (line 5)\n"
              "Program:\n"
              "\tversion: 1 \u2192 2\n");
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(ReportCheck, DiffTextGoesOnPastANul) {
    Write("before.txt", SavedReport(kSampleReportBody));
    Write("after.txt", SavedReport(Replaced(Replaced(kSampleReportBody, "\tuser: anne", std::string("\tuser: ro\0ot", 12)),
                                            "\tVersionBuild: 1042", "\tVersionBuild: 1043")));
    const Outcome outcome = Check({"diff", "before.txt", "after.txt"});
    // The NUL stands escaped, as every control character of a report does.
    EXPECT_EQ(outcome.out, "Host:\n\tuser: anne \u2192 ro\\x00ot\n"
                               "Orvane Software installation:\n"
                               "\tRegistry installation data: VersionBuild: 1042 \u2192 1043\n");
}

TEST_F(ReportCheck, DiffAsJson) {
    Write("before.txt", SavedReport(kTinyBody));
    Write("after.txt", SavedReport(Replaced(kTinyBody, "stray", "other")));
    const Outcome outcome = Check({"diff", "--json", "before.txt", "after.txt"});
    EXPECT_EQ(outcome.out,
              "{\n"
              "  \"schemaVersion\": 4,\n"
              "  \"old\": {\n"
              "    \"verdict\": \"intact\",\n"
              "    \"storedChecksum\": \"14244c76\",\n"
              "    \"bodyChecksum\": \"14244c76\"\n"
              "  },\n"
              "  \"new\": {\n"
              "    \"verdict\": \"intact\",\n"
              "    \"storedChecksum\": \"1433486c\",\n"
              "    \"bodyChecksum\": \"1433486c\"\n"
              "  },\n"
              "  \"verdictChanged\": false,\n"
              "  \"changes\": [\n"
              "    {\n"
              "      \"section\": \"Unrecognised lines\",\n"
              "      \"subject\": \"\\\"stray\\\"\",\n"
              "      \"field\": \"\",\n"
              "      \"change\": \"removed\",\n"
              "      \"old\": \"line 5\",\n"
              "      \"new\": null,\n"
              "      \"directory\": null,\n"
              "      \"entry\": null,\n"
              "      \"oldEntry\": null,\n"
              "      \"newEntry\": null\n"
              "    },\n"
              "    {\n"
              "      \"section\": \"Unrecognised lines\",\n"
              "      \"subject\": \"\\\"other\\\"\",\n"
              "      \"field\": \"\",\n"
              "      \"change\": \"added\",\n"
              "      \"old\": null,\n"
              "      \"new\": \"line 5\",\n"
              "      \"directory\": null,\n"
              "      \"entry\": null,\n"
              "      \"oldEntry\": null,\n"
              "      \"newEntry\": null\n"
              "    }\n"
              "  ]\n"
              "}\n");
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(ReportCheck, DiffOfSomethingThatIsNotAReport) {
    Write("report.txt", SavedReport(kTinyBody));
    Write("notes.txt", "notes");
    const Outcome outcome = Check({"diff", "report.txt", "notes.txt"});
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, std::string("reportcheck: notes.txt: not a report (no UTF-16 byte-order mark)") + kNewline);
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(ReportCheck, CollectWalksFoldersAndGivesBadFilesTheirLine) {
    fs::create_directories(root_ / "files" / "fleet" / "a");
    fs::create_directories(root_ / "files" / "fleet" / PathFromUtf8(Utf8(u8"\u00e9t\u00e9")));
    const std::string report = SavedReport(kTinyBody);
    std::string altered = report;
    altered[altered.find('1')] = '2';
    Write("fleet/a/pc1.txt", report);
    Write(Utf8(u8"fleet/\u00e9t\u00e9/pc2.txt"), altered);
    Write("fleet/notes.txt", "notes");
    const std::string sep = kJsonPathSeparator;
    const std::string model =
        "{\"schemaVersion\":4,\"integrity\":{\"verdict\":\"%V\",\"storedChecksum\":\"14244c76\","
        "\"bodyChecksum\":\"%B\",\"lineBreaks\":\"CR LF\",\"lineBreakExceptions\":[],\"finalLineBreak\":true},"
        "\"lineCount\":5,\"header\":null,\"program\":{\"name\":\"A\",\"version\":\"%N\",\"directory\":\"C:\\\\X\","
        "\"elevated\":false,\"blankLineBefore\":true},\"host\":null,\"windows\":null,\"hardware\":null,"
        "\"network\":null,\"installation\":null,\"unrecognised\":[{\"line\":5,\"text\":\"stray\"}]}";
    const auto line = [&](const std::string& path, const std::string& verdict, const std::string& body,
                          const std::string& version) {
        std::string m = Replaced(Replaced(Replaced(model, "%V", verdict), "%B", body), "%N", version);
        return "{\"path\":\"" + path + "\",\"pathBytes\":null,\"verdict\":\"" + verdict +
               "\",\"reason\":null,\"copyOf\":null,\"machine\":null,\"time\":null,\"latest\":false,"
               "\"report\":" + m + "}\n";
    };
    const Outcome outcome = Check({"collect", "fleet"});
    EXPECT_EQ(outcome.out, line("fleet" + sep + "a" + sep + "pc1.txt", "intact", "14244c76", "1") +
                               "{\"path\":\"fleet" + sep +
                               "notes.txt\",\"pathBytes\":null,\"verdict\":\"not a report\",\"reason\":\"not a "
                               "report (no UTF-16 byte-order mark)\",\"copyOf\":null,"
                               "\"machine\":null,\"time\":null,\"latest\":false,\"report\":null}\n" +
                               line("fleet" + sep + Utf8(u8"\u00e9t\u00e9") + sep + "pc2.txt", "altered",
                                    "14274c76", "2"));
    EXPECT_EQ(outcome.err, "reportcheck: fleet" + std::string(sep == "/" ? "/" : "\\") +
                               "notes.txt: not a report (no UTF-16 byte-order mark)" + kNewline);
    EXPECT_EQ(outcome.status, 2);
}

// --- When a report was made --------------------------------------------------

namespace {

// The sample made by `machine` on `made` (the header's date and time), its
// folder's own entries written at `listed` ("dd/mm/yyyy  hh:mm:ss"); `made`
// in UTF-8, as the locales' words for morning and afternoon need.
std::string MadeOn(const std::string& machine, const std::string& made, const std::string& listed) {
    std::string body = Replaced(kSampleReportBody, "\tname: PC1 (WORKGROUP\\PC1)",
                                "\tname: " + machine + " (WORKGROUP\\" + machine + ")");
    body = Replaced(body, "11/22/26 14:36:06", made);
    body = Replaced(body, "22/11/2026  14:33:45\t22/11/2026  14:33:45", listed + "\t" + listed);
    return BuildReportFileBytes(report_model::Utf16FromUtf8(WithCrLf(body)));
}

// Sets a file's last write, given in seconds since 1970 UTC.
void SetWritten(const fs::path& path, std::int64_t seconds) {
    const std::chrono::sys_seconds time{std::chrono::seconds{seconds}};
    fs::last_write_time(path, fs::file_time_type::clock::from_sys(time));
}

constexpr std::int64_t kJune1st2026 = 1780272000;     // 2026-06-01T00:00:00Z
constexpr std::int64_t kJanuary1st2027 = 1798761600;  // 2027-01-01T00:00:00Z

// The "header" member of show --json's document, as printed.
std::string HeaderOf(const std::string& shown) {
    const std::size_t from = shown.find("  \"header\": ");
    const std::size_t to = shown.find("  \"program\": ");
    if (from == std::string::npos || to == std::string::npos) return shown;
    return shown.substr(from, to - from);
}

}  // namespace

TEST_F(ReportCheck, ShowGivesTheHeadersTimeAndWhatSettledIt) {
    Write("certain.txt", MadeOn("PC1", "11/16/2026 9:12:00 AM", "22/11/2026  14:33:45"));
    // Day and month read both ways; files listed as written on 1 February.
    Write("ambiguous.txt", MadeOn("PC1", "05/11/2026 10:00:00", "01/02/2026  14:33:45"));
    Write("settled.txt", MadeOn("PC1", "05/11/2026 10:00:00", "01/02/2026  14:33:45"));
    Write("impossible.txt", MadeOn("PC1", "31/02/2026 25:61:61", "22/11/2026  14:33:45"));
    SetWritten(root_ / "files" / "ambiguous.txt", kJanuary1st2027);
    // Saved on 1 June: the report was not made in November.
    SetWritten(root_ / "files" / "settled.txt", kJune1st2026);
    const auto header = [&](const std::string& made, const std::string& time) {
        return "  \"header\": {\n"
               "    \"text\": \"Orvane Software system report on " + made + "\",\n"
               "    \"blankLineAfter\": true,\n"
               "    \"time\": " + time + "\n"
               "  },\n";
    };
    const std::string both = "[\n        \"2026-11-05T10:00:00\",\n        \"2026-05-11T10:00:00\"\n      ]";
    const struct {
        std::string file, made, iso, certain, settledBy, readings;
    } shown[] = {
        {"certain", "11/16/2026 9:12:00 AM", "\"2026-11-16T09:12:00\"", "true", "\"date\"",
         "[\n        \"2026-11-16T09:12:00\"\n      ]"},
        {"ambiguous", "05/11/2026 10:00:00", "null", "false", "null", both},
        {"settled", "05/11/2026 10:00:00", "\"2026-05-11T10:00:00\"", "true", "\"file times\"", both},
        {"impossible", "31/02/2026 25:61:61", "null", "false", "null", "[]"},
    };
    for (const auto& s : shown) {
        EXPECT_EQ(HeaderOf(Check({"show", "--json", s.file + ".txt"}).out),
                  header(s.made, "{\n      \"iso\": " + s.iso + ",\n      \"certain\": " + s.certain +
                                     ",\n      \"settledBy\": " + s.settledBy + ",\n      \"readings\": " +
                                     s.readings + "\n    }"));
    }
}

TEST_F(ReportCheck, CollectGivesEachReportsTimeAndMarksEachMachinesLatest) {
    fs::create_directories(root_ / "files" / "fleet");
    const std::string later = MadeOn("PC1", "11/29/26 09:00:00", "22/11/2026  14:33:45");
    std::string altered = MadeOn("PC1", "12/13/26 09:00:00", "22/11/2026  14:33:45");
    altered[altered.find(std::string("W\0O\0R\0K", 7))] = 'V';
    Write("fleet/a.txt", MadeOn("PC1", "11/22/26 14:36:06", "22/11/2026  14:33:45"));
    Write("fleet/b.txt", later);
    Write("fleet/c.txt", later);    // a copy: its original is the one marked
    Write("fleet/d.txt", altered);  // later, but altered
    // PC2's only report reads both ways, and nothing settles it: no latest.
    Write("fleet/e.txt", MadeOn("PC2", "05/11/2026 10:00:00", "01/02/2026  14:33:45"));
    SetWritten(root_ / "files" / "fleet" / "e.txt", kJanuary1st2027);
    // PC3's reads both ways, its files written in September settle it.
    Write("fleet/f.txt", MadeOn("PC3", "05/11/2026 10:00:00", "01/09/2026  14:33:45"));
    Write("fleet/g.txt", MadeOn("PC3", "31/02/2026 10:00:00", "22/11/2026  14:33:45"));
    Write("fleet/h.txt", "notes");
    const std::string sep = kJsonPathSeparator;
    const auto certain = [](const std::string& iso, const std::string& by, const std::string& readings) {
        return "{\"iso\":\"" + iso + "\",\"certain\":true,\"settledBy\":\"" + by + "\",\"readings\":[" + readings +
               "]}";
    };
    const std::string both = "\"2026-11-05T10:00:00\",\"2026-05-11T10:00:00\"";
    const auto line = [&](const std::string& name, const std::string& verdict, const std::string& copyOf,
                          const std::string& machine, const std::string& time, bool latest) {
        return "{\"path\":\"fleet" + sep + name + "\",\"pathBytes\":null,\"verdict\":\"" + verdict +
               "\",\"reason\":null,\"copyOf\":" + copyOf + ",\"machine\":\"" + machine + "\",\"time\":" + time +
               ",\"latest\":" + (latest ? "true" : "false") + ",\"report\":{";
    };
    const std::vector<std::string> expected = {
        line("a.txt", "intact", "null", "PC1", certain("2026-11-22T14:36:06", "date", "\"2026-11-22T14:36:06\""),
             false),
        line("b.txt", "intact", "null", "PC1", certain("2026-11-29T09:00:00", "date", "\"2026-11-29T09:00:00\""),
             true),
        line("c.txt", "intact", "\"fleet" + sep + "b.txt\"", "PC1",
             certain("2026-11-29T09:00:00", "date", "\"2026-11-29T09:00:00\""), false),
        line("d.txt", "altered", "null", "PC1", certain("2026-12-13T09:00:00", "date", "\"2026-12-13T09:00:00\""),
             false),
        line("e.txt", "intact", "null", "PC2",
             "{\"iso\":null,\"certain\":false,\"settledBy\":null,\"readings\":[" + both + "]}", false),
        line("f.txt", "intact", "null", "PC3", certain("2026-11-05T10:00:00", "file times", both), true),
        line("g.txt", "intact", "null", "PC3", "{\"iso\":null,\"certain\":false,\"settledBy\":null,\"readings\":[]}",
             false),
    };
    const Outcome outcome = Check({"collect", "fleet"});
    std::istringstream lines(outcome.out);
    std::string text;
    for (const std::string& start : expected) {
        ASSERT_TRUE(std::getline(lines, text));
        EXPECT_EQ(text.substr(0, start.size()), start);
        // The line's time is the one its report's header gives.
        const auto parsed = nlohmann::json::parse(text);
        EXPECT_EQ(parsed["time"], parsed["report"]["header"]["time"]) << start;
    }
    ASSERT_TRUE(std::getline(lines, text));
    EXPECT_EQ(text, "{\"path\":\"fleet" + sep + "h.txt\",\"pathBytes\":null,\"verdict\":\"not a report\","
                    "\"reason\":\"not a report (no UTF-16 byte-order mark)\",\"copyOf\":null,\"machine\":null,"
                    "\"time\":null,\"latest\":false,\"report\":null}");
    EXPECT_FALSE(std::getline(lines, text));
    EXPECT_EQ(outcome.status, 2);

    // The same in the tables, and the mark moves to a newer report.
    ASSERT_EQ(Check({"collect", "--db", "fleet.db", "fleet"}).status, 2);
    const auto rows = [&] {
        const std::u8string path = (root_ / "files" / "fleet.db").u8string();
        sqlite::Connection db(std::string(path.begin(), path.end()), sqlite::OpenMode::ReadOnly);
        sqlite::Statement query(db, "SELECT substr(path, 7) || '|' || ifnull(time, '-') || '|' || "
                                    "ifnull(time_settled_by, '-') || '|' || latest FROM reports ORDER BY path");
        std::string text;
        while (query.Step()) text += query.Text(0) + "\n";
        return text;
    };
    EXPECT_EQ(rows(),
              "a.txt|2026-11-22T14:36:06|date|0\n"
              "b.txt|2026-11-29T09:00:00|date|1\n"
              "c.txt|2026-11-29T09:00:00|date|0\n"
              "d.txt|2026-12-13T09:00:00|date|0\n"
              "e.txt|-|-|0\n"
              "f.txt|2026-11-05T10:00:00|file times|1\n"
              "g.txt|-|-|0\n"
              "h.txt|-|-|0\n");
    Write("fleet/i.txt", MadeOn("PC3", "2026-12-24 08:00:00", "22/11/2026  14:33:45"));
    ASSERT_EQ(Check({"collect", "--db", "fleet.db", "fleet"}).status, 0);  // only i.txt is read again
    const std::string after = rows();
    EXPECT_NE(after.find("f.txt|2026-11-05T10:00:00|file times|0\n"), std::string::npos) << after;
    EXPECT_NE(after.find("i.txt|2026-12-24T08:00:00|date|1\n"), std::string::npos) << after;
}

TEST_F(ReportCheck, CollectMarksTheLatestOfAMachinesReportsMadeInDifferentLocales) {
    // As printed, "2026-..." comes before "23..."; in time the 24-hour one
    // to the minute is the latest.
    fs::create_directories(root_ / "files" / "locales");
    Write("locales/a.txt", MadeOn("PC1", "2026-11-23 오후 7:12:05", "22/11/2026  14:33:45"));
    Write("locales/b.txt", MadeOn("PC1", "23/11/2026 19:50", "22/11/2026  14:33:45"));
    Write("locales/c.txt", MadeOn("PC1", "23/11/2026 07:55:00 p. m.", "22/11/2026  14:33:45"));
    Write("locales/d.txt", MadeOn("PC1", "2026/11/23 上午 11:59:59", "22/11/2026  14:33:45"));
    const std::string sep = kJsonPathSeparator;
    const auto line = [&](const std::string& name, const std::string& iso, bool latest) {
        return "{\"path\":\"locales" + sep + name + "\",\"pathBytes\":null,\"verdict\":\"intact\",\"reason\":null,"
               "\"copyOf\":null,\"machine\":\"PC1\",\"time\":{\"iso\":\"" + iso + "\",\"certain\":true,"
               "\"settledBy\":\"date\",\"readings\":[\"" + iso + "\"]},\"latest\":" + (latest ? "true" : "false") +
               ",\"report\":{";
    };
    const Outcome outcome = Check({"collect", "locales"});
    std::istringstream lines(outcome.out);
    std::string text;
    for (const std::string& start : {line("a.txt", "2026-11-23T19:12:05", false), line("b.txt", "2026-11-23T19:50", false),
                                     line("c.txt", "2026-11-23T19:55:00", true),
                                     line("d.txt", "2026-11-23T11:59:59", false)}) {
        ASSERT_TRUE(std::getline(lines, text));
        EXPECT_EQ(text.substr(0, start.size()), start);
    }
    EXPECT_FALSE(std::getline(lines, text));
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(ReportCheck, ShowReadsA50MegabyteReport) {
    // The sample with one line of 25 million characters among its entries:
    // 50 MB on disk, read whole, the long line kept as it is.
    const std::string longLine(25'000'000, 'x');
    Write("big.txt", SavedReport(Replaced(kSampleReportBody, "* Shared Batch directory", longLine + "\n* Shared Batch directory")));
    const Outcome outcome = Check({"show", "--json", "big.txt"});
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
    const std::string expectedTail = "  \"unrecognised\": [\n    {\n      \"line\": 68,\n      \"text\": \"" + longLine +
                                     "\"\n    }\n  ]\n}\n";
    ASSERT_GE(outcome.out.size(), expectedTail.size());
    EXPECT_EQ(outcome.out.substr(0, 2), "{\n");
    EXPECT_TRUE(outcome.out.compare(outcome.out.size() - expectedTail.size(), expectedTail.size(), expectedTail) == 0);
}

// --- Safe reading, checked output, control characters -----------------------

namespace {

// The first control character that is not the output's own line layout (a
// line feed, a tab; a CR before a line feed in Windows' text mode), or "".
std::string RawControl(const std::string& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool layout = byte == '\n' || byte == '\t' || (byte == '\r' && i + 1 < text.size() && text[i + 1] == '\n');
        if ((byte < 0x20 && !layout) || byte == 0x7F) return "byte " + std::to_string(byte) + " at " + std::to_string(i);
        if (byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) <= 0x9F)
            return "C1 control at " + std::to_string(i);
    }
    return "";
}

// Names and values a hostile machine could put in a report: screen clearing
// and fake output, a bell, a title set through OSC, DEL, C1 controls (NEL,
// CSI) as characters.
const std::string kHostileName = "evil\x1b[2J\x1b[H\x1b[32mALL GOOD\x1b[0m\x07\x7f\xC2\x85\xC2\x9B" "2J.txt";
const std::string kHostileNameShown = "evil\\x1b[2J\\x1b[H\\x1b[32mALL GOOD\\x1b[0m\\x07\\x7f\\u0085\\u009b2J.txt";
const std::string kHostileUser = "\x1b]0;owned\x07";
const std::string kHostileUserShown = "\\x1b]0;owned\\x07";

// The sample with a hostile file name among its entries and a hostile user,
// saved with its right checksum.
std::string HostileReport() {
    std::string body = Replaced(kSampleReportBody, "\tuser: anne\n", "\tuser: " + kHostileUser + "\n");
    body = Replaced(body, "* Standard installation directory (C:\\Program Files\\Orvane Software V9):\n",
                    "* Standard installation directory (C:\\Program Files\\Orvane Software V9):\n"
                    "\t00000020         12\t29/11/2026  09:01:00\t29/11/2026  09:01:00\t" + kHostileName + "\t\n");
    return BuildReportFileBytes(report_model::Utf16FromUtf8(WithCrLf(body)));
}

}  // namespace

TEST_F(ReportCheck, ControlCharactersFromAReportNeverReachTheTerminalRaw) {
    Write("before.txt", SavedReport(kSampleReportBody));
    Write("hostile.txt", HostileReport());
    const Outcome diff = Check({"diff", "before.txt", "hostile.txt"});
    EXPECT_EQ(diff.out, "Host:\n\tuser: anne \u2192 " + kHostileUserShown + "\nOrvane Software installation:\n"
                        "\tStandard installation directory: " + kHostileNameShown + ": added (size 12)\n");
    EXPECT_EQ(diff.status, 1);
    const Outcome findings = Check({"findings", "before.txt", "hostile.txt"});
    const Outcome show = Check({"show", "--json", "hostile.txt"});
    EXPECT_EQ(show.status, 0);
    EXPECT_NE(show.out.find("\"user\": \"\\u001b]0;owned\\u0007\""), std::string::npos);  // JSON as it was
    // Every text for people; show's JSON is for programs, and exact.
    for (const Outcome* outcome : {&diff, &findings}) EXPECT_EQ(RawControl(outcome->out), "") << outcome->out;
    for (const Outcome* outcome : {&diff, &findings, &show}) EXPECT_EQ(RawControl(outcome->err), "") << outcome->err;
}

#if !defined(_WIN32)
// Windows names hold no control character below 0x20; Linux names hold any byte but / and NUL.
TEST_F(ReportCheck, HostileFileNamesAreShownEscapedInEveryTextOutput) {
    fs::create_directories(root_ / "files" / "fleet");
    Write("fleet/" + kHostileName, "not a report");
    Write("fleet/\x1b]0;owned\x07.txt", SavedReport(kTinyBody));
    const std::string shownTitle = "fleet/\\x1b]0;owned\\x07.txt";
    const Outcome check = Check({"check", "fleet/" + kHostileName, "fleet/\x1b]0;owned\x07.txt"});
    EXPECT_EQ(check.out, Lines({"fleet/" + kHostileNameShown + ": not a report (no UTF-16 byte-order mark)",
                                shownTitle + ": intact (checksum 14244c76)"}));
    const Outcome collect = Check({"collect", "fleet"});
    EXPECT_EQ(collect.err, "reportcheck: fleet/" + kHostileNameShown + ": not a report (no UTF-16 byte-order mark)\n");
    const Outcome show = Check({"show", "--json", "fleet/" + kHostileName});
    EXPECT_EQ(show.err, "reportcheck: fleet/" + kHostileNameShown + ": not a report (no UTF-16 byte-order mark)\n");
    const Outcome findings = Check({"findings", "fleet"});
    const Outcome usage = Check({"show", "--json", "--\x1b[2J"});
    EXPECT_EQ(usage.err.rfind("reportcheck: unknown option --\\x1b[2J\n", 0), 0u) << usage.err;
    // Every text for people (collect's lines are JSON, for programs, and exact).
    for (const Outcome* outcome : {&check, &findings}) EXPECT_EQ(RawControl(outcome->out), "") << outcome->out;
    for (const Outcome* outcome : {&check, &collect, &show, &findings, &usage})
        EXPECT_EQ(RawControl(outcome->err), "") << outcome->err;
}

TEST_F(ReportCheck, PipesDevicesAndOversizedFilesAreRefusedAtOnce) {
    // A pipe with no writer would block an open or a read for ever; /dev/zero never ends.
    ASSERT_EQ(::mkfifo((root_ / "files" / "pipe").c_str(), 0600), 0);
    {
        std::ofstream sparse(root_ / "files" / "huge.txt", std::ios::binary);
    }
    fs::resize_file(root_ / "files" / "huge.txt", 512ull * 1024 * 1024 + 1);  // sparse: no disk used
    const std::string notRegular = "cannot be read (not a regular file)";
    const std::string tooLarge = "cannot be read (larger than 512 MB, which no report is)";
    const Outcome check = Check({"check", "pipe", "/dev/zero", "huge.txt"});
    EXPECT_EQ(check.out, Lines({"pipe: " + notRegular, "/dev/zero: " + notRegular, "huge.txt: " + tooLarge}));
    EXPECT_EQ(check.status, 2);
    for (const std::string& file : {std::string("pipe"), std::string("/dev/zero"), std::string("huge.txt")}) {
        const Outcome show = Check({"show", "--json", file});
        EXPECT_EQ(show.out, "");
        EXPECT_EQ(show.err, "reportcheck: " + file + ": " + (file == "huge.txt" ? tooLarge : notRegular) + "\n");
        EXPECT_EQ(show.status, 2);
    }
    const Outcome diff = Check({"diff", "pipe", "huge.txt"});
    EXPECT_EQ(diff.err, "reportcheck: pipe: " + notRegular + "\nreportcheck: huge.txt: " + tooLarge + "\n");
    EXPECT_EQ(diff.status, 2);
}

TEST_F(ReportCheck, CollectStaysInItsFoldersAndReadsEachFileOnce) {
    // Two links to the folder itself and one to its parent: followed, they
    // would never end and would leave the folder.
    const fs::path inbox = root_ / "files" / "inbox";
    fs::create_directories(inbox / "sub");
    Write("inbox/sub/pc1.txt", SavedReport(kTinyBody));
    Write("outside.txt", SavedReport(kTinyBody));
    fs::create_directory_symlink(".", inbox / "a");
    fs::create_directory_symlink(".", inbox / "b");
    fs::create_directory_symlink("..", inbox / "up");
    fs::create_symlink("sub/pc1.txt", inbox / "link-to-file.txt");
    const Outcome outcome = Check({"collect", "inbox", "inbox/sub", "inbox/sub/pc1.txt"});
    EXPECT_EQ(outcome.err,
              "reportcheck: inbox/a: skipped (a link to a folder, not followed)\n"
              "reportcheck: inbox/b: skipped (a link to a folder, not followed)\n"
              "reportcheck: inbox/up: skipped (a link to a folder, not followed)\n"
              "reportcheck: inbox/sub: skipped (already read)\n"
              "reportcheck: inbox/sub/pc1.txt: skipped (already read)\n");
    std::istringstream lines(outcome.out);
    std::string first, second, rest;
    std::getline(lines, first);
    std::getline(lines, second);
    std::getline(lines, rest);
    const std::string linked = "{\"path\":\"inbox/link-to-file.txt\",\"pathBytes\":null,\"verdict\":\"intact\","
                               "\"reason\":null,\"copyOf\":null,\"machine\":null,\"time\":null,"
                               "\"latest\":false,\"report\":{";
    const std::string copy = "{\"path\":\"inbox/sub/pc1.txt\",\"pathBytes\":null,\"verdict\":\"intact\","
                             "\"reason\":null,\"copyOf\":\"inbox/link-to-file.txt\",\"machine\":null,"
                             "\"time\":null,\"latest\":false,\"report\":{";
    EXPECT_EQ(first.substr(0, linked.size()), linked);
    EXPECT_EQ(second.substr(0, copy.size()), copy);
    EXPECT_EQ(rest, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(ReportCheck, ALinkLoopSaysTheSameInCheckAndCollect) {
    fs::create_directories(root_ / "files" / "loop");
    fs::create_symlink("x.txt", root_ / "files" / "loop" / "y.txt");
    fs::create_symlink("y.txt", root_ / "files" / "loop" / "x.txt");
    const Outcome check = Check({"check", "loop/x.txt"});
    EXPECT_EQ(check.out, "loop/x.txt: cannot be read (Too many levels of symbolic links)\n");
    const Outcome collect = Check({"collect", "loop"});
    EXPECT_EQ(collect.err, "reportcheck: loop/x.txt: cannot be read (Too many levels of symbolic links)\n"
                           "reportcheck: loop/y.txt: cannot be read (Too many levels of symbolic links)\n");
    EXPECT_EQ(collect.status, 2);
}

TEST_F(ReportCheck, ANameThatIsNotUtf8CanBeFoundAgainFromItsLine) {
    Write("caf\xE9.txt", SavedReport(kTinyBody));  // Latin-1, as an old system names it
    const Outcome outcome = Check({"collect", "caf\xE9.txt"});
    const std::string start = "{\"path\":\"caf\xEF\xBF\xBD.txt\",\"pathBytes\":\"636166e92e747874\",\"verdict\":\"intact\",";
    EXPECT_EQ(outcome.out.substr(0, start.size()), start);
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(ReportCheck, OutputThatCannotBeWrittenIsTroubleInEveryCommand) {
    Write("a.txt", SavedReport(kSampleReportBody));
    Write("b.txt", SavedReport(LaterSample()));
    const std::string said = "reportcheck: standard output: cannot be written (No space left on device); the "
                             "output is incomplete\n";
    const std::vector<std::vector<std::string>> commands = {
        {"check", "a.txt"},           {"show", "--json", "a.txt"}, {"diff", "a.txt", "b.txt"},
        {"diff", "--json", "a.txt", "b.txt"}, {"collect", "a.txt"},   {"findings", "a.txt"},
        {"rules"},                    {"page", "a.txt"},           {"--help"},
        {"--version"},
    };
    for (const auto& command : commands) {
        const Outcome outcome = Check(command, "/dev/full");
        EXPECT_EQ(outcome.err, said) << command.front();
        EXPECT_EQ(outcome.status, 2) << command.front();
    }
}

TEST_F(ReportCheck, AFullFileSystemGetsNoClaimOfSuccess) {
    // A file system of 64 kB of its own, filled before show writes its JSON
    // (some 10 kB, more than the room left).
    const fs::path small = root_ / "small";
    fs::create_directories(small);
    if (std::system(("mount -t tmpfs -o size=64k tmpfs '" + small.string() + "' 2>/dev/null").c_str()) != 0)
        GTEST_SKIP() << "cannot mount a tmpfs here (not root, or no CAP_SYS_ADMIN)";
    struct Unmount {
        fs::path at;
        ~Unmount() { std::system(("umount '" + at.string() + "'").c_str()); }
    } unmount{small};
    {
        std::ofstream filler(small / "filler", std::ios::binary);
        filler << std::string(60 * 1024, 'x');
    }
    Write("a.txt", SavedReport(kSampleReportBody));
    const Outcome outcome = Check({"show", "--json", "a.txt"}, small / "out.json");
    EXPECT_EQ(outcome.err, "reportcheck: standard output: cannot be written (No space left on device); the output "
                           "is incomplete\n");
    EXPECT_EQ(outcome.status, 2);
}
#endif

TEST_F(ReportCheck, CollectMarksCopiesOfOneReport) {
    fs::create_directories(root_ / "files" / "fleet");
    Write("fleet/a.txt", SavedReport(kTinyBody));
    Write("fleet/b.txt", SavedReport(kSampleReportBody));
    Write("fleet/c.txt", SavedReport(kTinyBody));
    const Outcome outcome = Check({"collect", "fleet"});
    std::istringstream lines(outcome.out);
    std::vector<nlohmann::json> parsed;
    for (std::string line; std::getline(lines, line);) parsed.push_back(nlohmann::json::parse(line));
    ASSERT_EQ(parsed.size(), 3u);
    EXPECT_TRUE(parsed[0]["copyOf"].is_null());
    EXPECT_TRUE(parsed[1]["copyOf"].is_null());
#if defined(_WIN32)
    EXPECT_EQ(parsed[2]["copyOf"], "fleet\\a.txt");
#else
    EXPECT_EQ(parsed[2]["copyOf"], "fleet/a.txt");
#endif
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(ReportCheck, CollectOfAnEmptyFolderSaysSo) {
    fs::create_directories(root_ / "files" / "empty" / "inner");
    const Outcome outcome = Check({"collect", "empty"});
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, std::string("reportcheck: empty: no file in this folder") + kNewline);
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(ReportCheck, CollectReadsOverlappingPathsOnce) {
    fs::create_directories(root_ / "files" / "inbox" / "sub");
    Write("inbox/sub/pc1.txt", SavedReport(kTinyBody));
    const Outcome outcome = Check({"collect", "inbox", "inbox/sub"});
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1) << outcome.out;
    EXPECT_EQ(outcome.err, std::string("reportcheck: inbox/sub: skipped (already read)") + kNewline);  // as named
}

#if defined(_WIN32)
// --- Junctions and symbolic links to folders under Windows ------------------

namespace {

enum class FolderLinkKind { Junction, SymbolicLink };

// A mount point's reparse data, as REPARSE_DATA_BUFFER of the driver kit's
// ntifs.h lays it out (the SDK a program builds with does not declare it):
// the target in the NT form "\??\C:\...", then the form shown to people.
std::vector<BYTE> JunctionData(const std::wstring& target) {
    const std::wstring nt = L"\\??\\" + target;
    const std::size_t names = (nt.size() + 1 + target.size() + 1) * sizeof(wchar_t);
    constexpr std::size_t kHeader = 8, kOffsets = 8;  // tag, length, reserved; then four offsets and lengths
    std::vector<BYTE> data(kHeader + kOffsets + names, 0);
    const auto put16 = [&](std::size_t at, std::size_t value) {
        data[at] = static_cast<BYTE>(value & 0xFF);
        data[at + 1] = static_cast<BYTE>(value >> 8);
    };
    const DWORD tag = IO_REPARSE_TAG_MOUNT_POINT;
    std::memcpy(data.data(), &tag, sizeof tag);
    put16(4, kOffsets + names);                                                // ReparseDataLength
    put16(8, 0);                                                               // SubstituteNameOffset
    put16(10, nt.size() * sizeof(wchar_t));                                    // SubstituteNameLength
    put16(12, (nt.size() + 1) * sizeof(wchar_t));                              // PrintNameOffset
    put16(14, target.size() * sizeof(wchar_t));                                // PrintNameLength
    std::memcpy(data.data() + 16, nt.c_str(), nt.size() * sizeof(wchar_t));
    std::memcpy(data.data() + 16 + (nt.size() + 1) * sizeof(wchar_t), target.c_str(), target.size() * sizeof(wchar_t));
    return data;
}

bool IsLinkToFolder(const fs::path& path) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    const DWORD link = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & link) == link;
}

// Runs a program of the Unix host in `folder`, from a test under Wine, which
// starts one as it starts a Windows program but gives no handle to wait on:
// the run is taken as done when `done` says so, and as failed after 10 s.
// Under Wine, whether the host's programs can be started: not in a prefix
// whose Z: drive hides the host's root (the test zip's own run).
bool UnixProgramsReachable() {
    return ::GetFileAttributesW(L"Z:\\bin\\sh") != INVALID_FILE_ATTRIBUTES;
}

bool RunUnixProgram(const fs::path& folder, std::wstring commandLine, const std::function<bool()>& done) {
    const std::wstring program = L"Z:\\bin\\" + commandLine.substr(0, commandLine.find(L' '));
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr,
                          folder.c_str(), &startup, &process))
        return false;
    // No process handle for a Unix program, nor then a thread handle.
    const w32::ScopedHandle ownedProcess(process.hProcess);
    const w32::ScopedHandle ownedThread(process.hProcess ? process.hThread : nullptr);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

// Links to folders a test makes, and removes before its folder goes: the C++
// library's remove_all would walk through them (and round a loop for ever).
class FolderLinks {
public:
    FolderLinks() = default;
    FolderLinks(const FolderLinks&) = delete;
    FolderLinks& operator=(const FolderLinks&) = delete;
    ~FolderLinks() {
        for (const Made& made : made_) {
            if (made.unix)
                RunUnixProgram(made.link.parent_path(), L"rm -- " + made.link.filename().wstring(),
                               [&] { return !IsLinkToFolder(made.link); });
            else
                ::RemoveDirectoryW(made.link.c_str());  // the link, not what it leads to
        }
    }

    // Makes `link` lead to `target` (relative to the link's folder) as
    // `kind`; says how it was made, or why it could not be.
    std::string Make(FolderLinkKind kind, const fs::path& link, const fs::path& target) {
        const fs::path absolute = (link.parent_path() / target).lexically_normal();
        DWORD refused = 0;
        if (kind == FolderLinkKind::Junction ? MakeJunction(link, absolute, refused) : MakeSymbolicLink(link, target, refused)) {
            made_.push_back({link, false});
            return kind == FolderLinkKind::Junction ? "junction" : "symbolic link";
        }
        const std::string why = std::string(kind == FolderLinkKind::Junction ? "FSCTL_SET_REPARSE_POINT" : "CreateSymbolicLinkW") +
                                (refused == ERROR_SUCCESS ? ": said done, made nothing" : ": error " + std::to_string(refused));
        if (!testsupport::RunningUnderWine()) return "not made (" + why + ")";
        // Wine 8 makes neither (no reparse points; CreateSymbolicLinkW says
        // yes and makes nothing), but it shows a Unix symbolic link to a
        // folder as Windows shows a junction, and starts a Unix program as
        // it starts a Windows one.
        std::wstring relative = target.wstring();
        std::replace(relative.begin(), relative.end(), L'\\', L'/');
        if (!RunUnixProgram(link.parent_path(), L"ln -s -- " + relative + L" " + link.filename().wstring(),
                            [&] { return IsLinkToFolder(link); }))
            return "not made (" + why + "; Unix ln made nothing)";
        made_.push_back({link, true});
        return "Unix symbolic link (" + why + ")";
    }

private:
    struct Made {
        fs::path link;
        bool unix;
    };

    static bool MakeJunction(const fs::path& link, const fs::path& target, DWORD& refused) {
        if (!::CreateDirectoryW(link.c_str(), nullptr)) {
            refused = ::GetLastError();
            return false;
        }
        w32::ScopedHandle folder(::CreateFileW(link.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                               FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
        std::vector<BYTE> data = JunctionData(target.wstring());
        DWORD returned = 0;
        const bool made = folder && ::DeviceIoControl(folder.Get(), FSCTL_SET_REPARSE_POINT, data.data(),
                                                      static_cast<DWORD>(data.size()), nullptr, 0, &returned, nullptr);
        if (made) return true;
        refused = ::GetLastError();
        folder.Reset();
        ::RemoveDirectoryW(link.c_str());
        return false;
    }

    // Windows lets anyone make one in developer mode, else administrators.
    static bool MakeSymbolicLink(const fs::path& link, const fs::path& target, DWORD& refused) {
        const DWORD flags = SYMBOLIC_LINK_FLAG_DIRECTORY | SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE;
        const bool said = ::CreateSymbolicLinkW(link.c_str(), target.c_str(), flags);
        refused = said ? ERROR_SUCCESS : ::GetLastError();
        return IsLinkToFolder(link);  // what is there, not what was said
    }

    std::vector<Made> made_;
};

}  // namespace

// Junctions and symbolic links to the folder itself, to its parent and to a
// sibling folder: followed, the first would never end and the others would
// read reports the user did not name. Wine 8 makes neither kind (see
// FolderLinks::Make): there both are the Unix links Wine shows as junctions.
TEST_F(ReportCheck, CollectFollowsNoJunctionOrLinkToAFolder) {
    const fs::path inbox = root_ / "files" / "inbox";
    fs::create_directories(inbox / "sub");
    fs::create_directories(root_ / "files" / "sibling");
    Write("inbox/sub/pc1.txt", SavedReport(kTinyBody));
    Write("sibling/pc2.txt", SavedReport(kSampleReportBody));
    Write("outside.txt", SavedReport(kSampleReportBody));
    FolderLinks links;
    const struct {
        const char* name;
        FolderLinkKind kind;
        const char* target;
    } wanted[] = {
        {"j-next", FolderLinkKind::Junction, "..\\sibling"}, {"j-self", FolderLinkKind::Junction, "."},
        {"j-up", FolderLinkKind::Junction, ".."},            {"s-next", FolderLinkKind::SymbolicLink, "..\\sibling"},
        {"s-self", FolderLinkKind::SymbolicLink, "."},      {"s-up", FolderLinkKind::SymbolicLink, ".."},
    };
    std::string skipped;
    for (const auto& link : wanted) {
        const std::string how = links.Make(link.kind, inbox / link.name, link.target);
        std::cout << "inbox\\" << link.name << ": " << how << "\n";
        if (how.rfind("not made", 0) == 0 && link.kind == FolderLinkKind::SymbolicLink) continue;  // not allowed to this user
        if (how.rfind("not made", 0) == 0 && testsupport::RunningUnderWine() && !UnixProgramsReachable())
            GTEST_SKIP() << "Wine makes no junction, and this prefix shows no host program to make a link with";
        ASSERT_TRUE(IsLinkToFolder(inbox / link.name)) << link.name << ": " << how;
        skipped += std::string("reportcheck: inbox\\") + link.name + ": skipped (a link to a folder, not followed)" + kNewline;
    }
    const Outcome outcome = Check({"collect", "inbox", "inbox\\sub", "inbox\\sub\\pc1.txt"});
    EXPECT_EQ(outcome.err, skipped + "reportcheck: inbox\\sub: skipped (already read)" + kNewline +
                               "reportcheck: inbox\\sub\\pc1.txt: skipped (already read)" + kNewline);
    const std::string start = "{\"path\":\"inbox\\\\sub\\\\pc1.txt\",\"pathBytes\":null,\"verdict\":\"intact\","
                              "\"reason\":null,\"copyOf\":null,\"machine\":null,\"time\":null,\"latest\":false,"
                              "\"report\":{\"schemaVersion\":";
    EXPECT_EQ(outcome.out.substr(0, start.size()), start);
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1) << outcome.out;
    EXPECT_EQ(outcome.status, 0);
}


// Windows names a file in any letter case: the same folder and file, however
// the arguments spell them, are read once.
TEST_F(ReportCheck, CollectReadsOnceWhatArgumentsNameInAnotherCase) {
    fs::create_directories(root_ / "files" / "inbox" / "sub");
    Write("inbox/sub/pc1.txt", SavedReport(kTinyBody));
    const Outcome outcome = Check({"collect", "inbox", "INBOX\\SUB", "Inbox\\Sub\\PC1.TXT"});
    EXPECT_EQ(outcome.err, std::string("reportcheck: INBOX\\SUB: skipped (already read)") + kNewline +
                               "reportcheck: Inbox\\Sub\\PC1.TXT: skipped (already read)" + kNewline);
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1) << outcome.out;
    EXPECT_EQ(outcome.status, 0);
}

// --- Errors reportcheck has no words of its own for ------------------------

namespace {

// ERROR_INVALID_NAME's text, in English: Wine's is its own.
std::string InvalidNameReason() {
    return std::string("cannot be read (error 123: ") +
           (testsupport::RunningUnderWine() ? "Invalid name." : "The filename, directory name, or volume label syntax is incorrect.") +
           ")";
}

bool Lists(const fs::path& folder, const fs::path& name) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        if (entry->path().filename() == name) return true;
    return false;
}

// A folder with a name Windows refuses, which only a Unix program makes
// (under Wine), and only one removes: Windows cannot name it to remove it.
class UnixMadeFolder {
public:
    UnixMadeFolder(fs::path parent, std::wstring name) : parent_(std::move(parent)), name_(std::move(name)) {
        made_ = RunUnixProgram(parent_, L"mkdir -- " + name_, [&] { return Lists(parent_, name_); });
    }
    UnixMadeFolder(const UnixMadeFolder&) = delete;
    UnixMadeFolder& operator=(const UnixMadeFolder&) = delete;
    ~UnixMadeFolder() {
        if (made_) RunUnixProgram(parent_, L"rmdir -- " + name_, [&] { return !Lists(parent_, name_); });
    }

    bool Made() const { return made_; }

private:
    fs::path parent_;
    std::wstring name_;
    bool made_ = false;
};

}  // namespace

// A name with a character Windows refuses in one: check, and collect of it
// as a PATH, give the system's own text and number.
TEST_F(ReportCheck, AnErrorWithoutWordsOfItsOwnGetsTheSystemsText) {
    const Outcome check = Check({"check", "a<b.txt"});
    EXPECT_EQ(check.out, Lines({"a<b.txt: " + InvalidNameReason()}));
    EXPECT_EQ(check.status, 2);
    const Outcome collect = Check({"collect", "a<b.txt"});
    EXPECT_EQ(collect.err, "reportcheck: a<b.txt: " + InvalidNameReason() + kNewline);
    EXPECT_EQ(collect.out, "{\"path\":\"a<b.txt\",\"pathBytes\":null,\"verdict\":\"unreadable\",\"reason\":\"" +
                               InvalidNameReason() + "\",\"copyOf\":null,\"machine\":null,\"time\":null,\"latest\":false,"
                               "\"report\":null}\n");
    EXPECT_EQ(collect.status, 2);
}

// A folder met in a walk whose listing fails with such an error: under Wine,
// one a Unix program named with '*'.
TEST_F(ReportCheck, CollectSaysTheSystemsTextOfAnErrorInAFolderItWalks) {
    SKIP_UNLESS_WINE("only a Unix program names a folder with '*'");
    if (!UnixProgramsReachable()) GTEST_SKIP() << "this prefix shows no host program to name a folder with '*'";
    fs::create_directories(root_ / "files" / "inbox");
    Write("inbox/pc1.txt", SavedReport(kTinyBody));
    const UnixMadeFolder odd(root_ / "files" / "inbox", L"c*d");
    ASSERT_TRUE(odd.Made());
    const Outcome outcome = Check({"collect", "inbox"});
    EXPECT_EQ(outcome.err, "reportcheck: inbox\\c*d: " + InvalidNameReason() + kNewline);
    const std::string start = "{\"path\":\"inbox\\\\c*d\",\"pathBytes\":null,\"verdict\":\"unreadable\",\"reason\":\"" +
                              InvalidNameReason() + "\",\"copyOf\":null,\"machine\":null,\"time\":null,\"latest\":false,"
                              "\"report\":null}\n{\"path\":\"inbox\\\\pc1.txt\",";
    EXPECT_EQ(outcome.out.substr(0, start.size()), start);
    EXPECT_EQ(outcome.status, 2);
}
#endif

namespace {

// A folder no one but an administrator (or root) may list, given back to its
// owner when the test ends (its folder must then be removed): on Windows an
// access list that grants nothing, on Linux mode 000.
class LockedFolder {
public:
    explicit LockedFolder(fs::path path) : path_(std::move(path)) {
        fs::create_directories(path_);
#if defined(_WIN32)
        ACL nothing{};
        ::InitializeAcl(&nothing, sizeof(nothing), ACL_REVISION);
        locked_ = SetAccessList(&nothing, PROTECTED_DACL_SECURITY_INFORMATION) == ERROR_SUCCESS;
        // Wine keeps the list without enforcing it, but a Unix mode that
        // denies reading is Wine's "access denied" (Wine shows mode 000 as
        // read-only).
        unixMode_ = !Denies() && testsupport::RunningUnderWine() && SetUnixMode(L"000", true);
#else
        locked_ = ::chmod(path_.c_str(), 0) == 0;
#endif
    }
    LockedFolder(const LockedFolder&) = delete;
    LockedFolder& operator=(const LockedFolder&) = delete;
    ~LockedFolder() {
#if defined(_WIN32)
        SetAccessList(nullptr, UNPROTECTED_DACL_SECURITY_INFORMATION);
        if (unixMode_) SetUnixMode(L"700", false);
#else
        ::chmod(path_.c_str(), 0700);
#endif
    }

    // Whether the system keeps this test, the folder's owner, from listing it.
    bool Denies() const {
        std::error_code error;
        fs::directory_iterator listing(path_, error);
        return locked_ && error;
    }

private:
#if defined(_WIN32)
    DWORD SetAccessList(ACL* list, SECURITY_INFORMATION protection) {
        return ::SetNamedSecurityInfoW(const_cast<wchar_t*>(path_.c_str()), SE_FILE_OBJECT,
                                       DACL_SECURITY_INFORMATION | protection, nullptr, nullptr, list, nullptr);
    }

    bool SetUnixMode(const std::wstring& mode, bool readOnly) {
        return RunUnixProgram(path_.parent_path(), L"chmod " + mode + L" -- " + path_.filename().wstring(), [&] {
            const DWORD attributes = ::GetFileAttributesW(path_.c_str());
            return attributes != INVALID_FILE_ATTRIBUTES && ((attributes & FILE_ATTRIBUTE_READONLY) != 0) == readOnly;
        });
    }

    bool unixMode_ = false;
#endif

    fs::path path_;
    bool locked_ = false;
};

}  // namespace

// Root lists any folder whatever its mode, under Wine too (which keeps an
// access list without enforcing it; LockedFolder then sets the Unix mode):
// where the tests run as root the test cannot make a folder it cannot read,
// and skips, saying so.
TEST_F(ReportCheck, CollectSaysWhichSubfolderCannotBeRead) {
    fs::create_directories(root_ / "files" / "inbox");
    Write("inbox/pc1.txt", SavedReport(kTinyBody));
    const LockedFolder locked(root_ / "files" / "inbox" / "locked");
    if (!locked.Denies())
        GTEST_SKIP() << "this system lets the test list a folder locked to it (run as root?)";
#if defined(_WIN32)
    const std::string shown = "inbox\\locked", json = "inbox\\\\locked", next = "inbox\\\\pc1.txt";
#else
    const std::string shown = "inbox/locked", json = shown, next = "inbox/pc1.txt";
#endif
    const Outcome outcome = Check({"collect", "inbox"});
    EXPECT_EQ(outcome.err, "reportcheck: " + shown + ": cannot be read (Permission denied)" + kNewline);
    const std::string start = "{\"path\":\"" + json + "\",\"pathBytes\":null,\"verdict\":\"unreadable\","
                              "\"reason\":\"cannot be read (Permission denied)\",\"copyOf\":null,\"machine\":null,"
                              "\"time\":null,\"latest\":false,\"report\":null}\n"
                              "{\"path\":\"" + next + "\",";
    EXPECT_EQ(outcome.out.substr(0, start.size()), start);
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(ReportCheck, SubcommandsExplainThemselves) {
    const struct {
        std::string command, synopsis;
    } commands[] = {
        {"check", "check FILE..."},
        {"show", "show --json FILE"},
        {"diff", "diff [--json] [--ignore KINDS] OLD NEW"},
        {"collect", "collect [--db FILE] PATH..."},
        {"findings", "findings [--json] [--rules DIR] [--min-severity LEVEL] PATH..."},
        {"redact", "redact [--map FILE] [--keyword WORD]... IN OUT"},
    };
    for (const auto& c : commands) {
        for (const char* help : {"--help", "-h"}) {
            const Outcome outcome = Check({c.command, help});
            EXPECT_EQ(outcome.out.rfind("usage: reportcheck " + c.synopsis + kNewline, 0), 0u) << outcome.out;
            EXPECT_NE(outcome.out.find(std::string("Exit status 64: the command line is wrong")), std::string::npos);
            EXPECT_EQ(outcome.err, "");
            EXPECT_EQ(outcome.status, 0);
        }
        const Outcome wrong = Check({c.command});
        EXPECT_EQ(wrong.out, "");
        EXPECT_EQ(wrong.err, Lines({"reportcheck: " + c.command + ": too few arguments",
                                    "usage: reportcheck " + c.synopsis,
                                    "(reportcheck " + c.command + " --help tells more.)"}));
        EXPECT_EQ(wrong.status, 64);
    }
}

// --- The command line -----------------------------------------------------

// A usage error: the problem, the command's usage, status 64, and nothing
// on standard output.
void ExpectUsageError(const Outcome& outcome, const std::string& problem, const std::string& command,
                      const std::string& synopsis) {
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, Lines({"reportcheck: " + problem, "usage: reportcheck " + synopsis,
                                  "(reportcheck " + command + " --help tells more.)"}));
    EXPECT_EQ(outcome.status, 64);
}

TEST_F(ReportCheck, AFileNamedLikeACommandIsCheckedAfterTheEndOfOptionsOrCheck) {
    Write("show", kReportAB);
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--", "show"}, {"check", "show"},
                                                      {"check", "--", "show"}}) {
        const Outcome outcome = Check(arguments);
        EXPECT_EQ(outcome.out, Lines({"show: intact (checksum 01024145)"}));
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(outcome.status, 0);
    }
    // Without "--" the word is the command, which then lacks its file.
    ExpectUsageError(Check({"show"}), "show: too few arguments", "show", "show --json FILE");
}

TEST_F(ReportCheck, AnUnknownOptionIsAUsageError) {
    Write("report.txt", kReportAB);
    ExpectUsageError(Check({"-x"}), "unknown option -x", "check", "check FILE...");
    ExpectUsageError(Check({"report.txt", "-x"}), "unknown option -x", "check", "check FILE...");
    ExpectUsageError(Check({"show", "--json", "report.txt", "--colour"}), "unknown option --colour", "show",
                     "show --json FILE");
    ExpectUsageError(Check({"diff", "--verbose", "report.txt", "report.txt"}), "unknown option --verbose", "diff",
                     "diff [--json] [--ignore KINDS] OLD NEW");
    // An option of another command is unknown to this one.
    ExpectUsageError(Check({"collect", "--json", "report.txt"}), "unknown option --json", "collect",
                     "collect [--db FILE] PATH...");
    ExpectUsageError(Check({"collect", "--rules", "team", "report.txt"}), "--rules and --time-limit go with --db",
                     "collect", "collect [--db FILE] PATH...");
    ExpectUsageError(Check({"findings", "--min-severity", "fatal", "report.txt"}),
                     "--min-severity takes info, warning or error", "findings",
                     "findings [--json] [--rules DIR] [--min-severity LEVEL] PATH...");
    ExpectUsageError(Check({"findings", "--time-limit", "0", "report.txt"}),
                     "--time-limit takes whole seconds from 1 to 3600", "findings",
                     "findings [--json] [--rules DIR] [--min-severity LEVEL] PATH...");
    ExpectUsageError(Check({"show", "--json=yes", "report.txt"}), "option --json takes no value", "show",
                     "show --json FILE");
}

TEST_F(ReportCheck, AFileNamedLikeAnOptionFollowsTheEndOfOptions) {
    Write("-x", kReportAB);
    Write("--json", AlteredAB());
    const Outcome outcome = Check({"--", "-x", "--json"});
    EXPECT_EQ(outcome.out, Lines({"-x: intact (checksum 01024145)",
                                  "--json: altered (trailer says 01024145, body gives 01024045)"}));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 1);
    const Outcome shown = Check({"show", "--json", "--", "-x"});
    EXPECT_EQ(shown.out.rfind("{\n  \"schemaVersion\": 4,\n", 0), 0u) << shown.out;
    EXPECT_EQ(shown.status, 0);
}

TEST_F(ReportCheck, OptionsStandAnywhere) {
    Write("tiny.txt", BuildReportFileBytes(Utf16(kTinyBody)));
    Write("before.txt", SavedReport(kSampleReportBody));
    Write("after.txt", SavedReport(LaterSample()));
    const Outcome first = Check({"show", "--json", "tiny.txt"});
    ASSERT_EQ(first.status, 0);
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"show", "tiny.txt", "--json"}, {"--json", "show", "tiny.txt"}}) {
        const Outcome outcome = Check(arguments);
        EXPECT_EQ(outcome.out, first.out);
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(outcome.status, 0);
    }
    const Outcome diff = Check({"diff", "--json", "before.txt", "after.txt"});
    ASSERT_EQ(diff.status, 1);
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"diff", "before.txt", "--json", "after.txt"},
                                                      {"diff", "before.txt", "after.txt", "--json"}}) {
        const Outcome outcome = Check(arguments);
        EXPECT_EQ(outcome.out, diff.out);
        EXPECT_EQ(outcome.status, 1);
    }
}

TEST_F(ReportCheck, ShowWithoutJsonOrWithTwoFilesIsAUsageError) {
    Write("tiny.txt", BuildReportFileBytes(Utf16(kTinyBody)));
    ExpectUsageError(Check({"show", "tiny.txt"}), "show: --json is needed", "show", "show --json FILE");
    ExpectUsageError(Check({"show", "--json", "tiny.txt", "tiny.txt"}), "show: too many arguments", "show",
                     "show --json FILE");
    ExpectUsageError(Check({"diff", "tiny.txt"}), "diff: too few arguments", "diff", "diff [--json] [--ignore KINDS] OLD NEW");
}

TEST_F(ReportCheck, VersionIsPrintedAnywhere) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--version"}, {"show", "--version"}, {"missing.txt", "--version"}}) {
        const Outcome outcome = Check(arguments);
        EXPECT_EQ(outcome.out, Lines({"reportcheck " REPORTCHECK_VERSION}));
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(outcome.status, 0);
    }
}

#if !defined(_WIN32)
// What the support side's other tools make of the output: Debian's
// jsonschema (not whatever python3 the PATH finds) and sqlite3.

TEST_F(ReportCheck, CollectGoesOnPastFilesThatCannotBeRead) {
    fs::create_directories(root_ / "files" / "fleet");
    Write("fleet/b.txt", SavedReport(kTinyBody));
    fs::create_symlink(root_ / "files" / "nowhere.txt", root_ / "files" / "fleet" / "a-broken-link.txt");
    ASSERT_EQ(::mkfifo((root_ / "files" / "fleet" / "c-pipe").c_str(), 0600), 0);
    const Outcome outcome = Check({"collect", "fleet"});
    EXPECT_EQ(outcome.err,
              "reportcheck: fleet/a-broken-link.txt: cannot be read (No such file or directory)\n"
              "reportcheck: fleet/c-pipe: cannot be read (not a regular file)\n");
    std::istringstream lines(outcome.out);
    std::string first, second, third, rest;
    std::getline(lines, first);
    std::getline(lines, second);
    std::getline(lines, third);
    std::getline(lines, rest);
    EXPECT_EQ(first, "{\"path\":\"fleet/a-broken-link.txt\",\"pathBytes\":null,\"verdict\":\"unreadable\","
                     "\"reason\":\"cannot be read (No such file or directory)\",\"copyOf\":null,"
                     "\"machine\":null,\"time\":null,\"latest\":false,\"report\":null}");
    const std::string intact =
        "{\"path\":\"fleet/b.txt\",\"pathBytes\":null,\"verdict\":\"intact\",\"reason\":null,\"copyOf\":null,"
        "\"machine\":null,\"time\":null,\"latest\":false,\"report\":{";
    EXPECT_EQ(second.substr(0, intact.size()), intact);
    EXPECT_EQ(third, "{\"path\":\"fleet/c-pipe\",\"pathBytes\":null,\"verdict\":\"unreadable\",\"reason\":\"cannot "
                     "be read (not a regular file)\",\"copyOf\":null,"
                     "\"machine\":null,\"time\":null,\"latest\":false,\"report\":null}");
    EXPECT_EQ(rest, "");
    EXPECT_EQ(outcome.status, 2);
}

// Two reports made by the program under Wine (data/wine-before.txt and
// data/wine-after.txt, the README's example): between them tool.dll was
// replaced by another version, setup.log removed, notes.txt added, the
// suite's VersionBuild and the Windows product id changed. The free space
// really changed too, and the folder's own entries with the files in it.
TEST_F(ReportCheck, DiffOfTwoReportsMadeUnderWine) {
    for (const char* name : {"wine-before.txt", "wine-after.txt"})
        fs::copy_file(fs::path(REPORTCHECK_SOURCE_DIR) / "tests/reportcheck/data" / name, root_ / "files" / name);
    const Outcome outcome = Check({"diff", "wine-before.txt", "wine-after.txt"});
    EXPECT_EQ(outcome.out,
              "Windows:\n"
              "\tid: 12345-oem-0000001-54321 \u2192 12345-oem-0000001-99999\n"
              "Hardware:\n"
              "\tC volume free: 77007316K \u2192 77006768K\n"
              "\tC volume user: 77007316K \u2192 77006768K\n"
              "Orvane Software installation:\n"
              "\tCurrent directory: .: created: 22/11/2026  14:56:57 \u2192 22/11/2026  14:58:13\n"
              "\tCurrent directory: .: written: 22/11/2026  14:56:57 \u2192 22/11/2026  14:58:13\n"
              "\tCurrent directory: ..: created: 22/11/2026  14:56:57 \u2192 22/11/2026  14:58:13\n"
              "\tCurrent directory: ..: written: 22/11/2026  14:56:57 \u2192 22/11/2026  14:58:13\n"
              "\tCurrent directory: notes.txt: added (size 1)\n"
              "\tCurrent directory: setup.log: removed (size 5)\n"
              "\tCurrent directory: tool.dll: version: 3.2.1.0 \u2192 1.4.0.12\n"
              "\tCurrent directory: tool.dll: created: 22/11/2026  14:56:57 \u2192 22/11/2026  14:58:13\n"
              "\tCurrent directory: tool.dll: written: 22/11/2026  14:56:57 \u2192 22/11/2026  14:58:13\n"
              "\tRegistry installation data: VersionBuild: 1042 \u2192 1043\n");
    EXPECT_EQ(outcome.status, 1);
    const Outcome same = Check({"diff", "wine-after.txt", "wine-after.txt"});
    EXPECT_EQ(same.out, "");
    EXPECT_EQ(same.status, 0);
}

TEST_F(ReportCheck, ShowOutputFollowsTheSchema) {
    fs::copy_file(fs::path(REPORTCHECK_SOURCE_DIR) / "tests/reportcheck/data/wine-report.txt",
                  root_ / "files" / "wine.txt");
    Write("sample.txt", SavedReport(kSampleReportBody));
    Write("later.txt", BuildReportFileBytes(Utf16(LaterSample())));
    Write("tiny.txt", SavedReport(kTinyBody));
    Write("lf.txt", transit_fixtures::WithLfLineBreaks(SavedReport(kTinyBody)));  // altered, its damage told
    const std::string schema = std::string(REPORTCHECK_SOURCE_DIR) + "/docs/report-model.schema.json";
    for (const char* name : {"before", "after"})
        fs::copy_file(fs::path(REPORTCHECK_SOURCE_DIR) / "tests/reportcheck/data" / ("wine-" + std::string(name) + ".txt"),
                      root_ / "files" / (std::string(name) + ".txt"));
    for (const std::string name : {"wine", "sample", "later", "tiny", "before", "after", "lf"}) {
        const Outcome shown = Check({"show", "--json", name + ".txt"});
        ASSERT_EQ(shown.status, name == "lf" ? 1 : 0) << name << shown.err;
        Write(name + ".json", shown.out);
    }
    const std::string script =
        "import json, jsonschema, sys\n"
        "schema = json.load(open(sys.argv[1]))\n"
        "jsonschema.Draft7Validator.check_schema(schema)\n"
        "for name in sys.argv[2:]:\n"
        "    jsonschema.validate(json.load(open(name)), schema)\n"
        "wine = json.load(open('wine.json'))\n"
        "print(wine['unrecognised'], wine['program']['version'], wine['hardware']['pageSize'],\n"
        "      len(wine['network']['adapters']), wine['installation']['directories'][0]['kind'])\n";
    Write("validate.py", script);
    const std::string command = "cd '" + (root_ / "files").string() +
                                "' && /usr/bin/python3 validate.py '" + schema +
                                "' wine.json sample.json later.json tiny.json before.json after.json lf.json >validated.txt 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << ReadFile(root_ / "files" / "validated.txt");
    EXPECT_EQ(ReadFile(root_ / "files" / "validated.txt"), "[] 9.3.1.1042 4096 4 current\n");
}

TEST_F(ReportCheck, FleetExampleRunsOnCollectedTables) {
    // Five machines. PC3 had the older tool.dll a week ago and has the
    // current one in its latest report; PC4's report with the older one was
    // altered; PC5 alone has another version in its only, intact report.
    const auto machine = [](const std::string& name, const std::string& version, const std::string& made) {
        std::string body = Replaced(kSampleReportBody, "\tname: PC1 (WORKGROUP\\PC1)",
                                    "\tname: " + name + " (WORKGROUP\\" + name + ")");
        body = Replaced(body, "11/22/26 14:36:06", made);
        return Replaced(body, "* Standard installation directory (C:\\Program Files\\Orvane Software V9):\n",
                        "* Standard installation directory (C:\\Program Files\\Orvane Software V9):\n"
                        "\t00000020     130444\t22/11/2026  14:33:33\t22/11/2026  14:33:33\ttool.dll\t" +
                            version + "\n");
    };
    std::string altered = SavedReport(machine("PC4", "9.2.0.7", "11/22/26 14:36:06"));
    altered[altered.find(std::string("W\0O\0R\0K", 7))] = 'V';
    fs::create_directories(root_ / "files" / "fleet" / "march");
    Write("fleet/pc1.txt", SavedReport(machine("PC1", "9.3.1.0", "11/22/26 14:36:06")));
    Write("fleet/march/pc2.txt", SavedReport(machine("PC2", "9.3.1.0", "11/22/26 14:36:06")));
    Write("fleet/march/pc3.txt", SavedReport(machine("PC3", "9.2.0.7", "11/22/26 14:36:06")));
    Write("fleet/pc3-a-week-later.txt", SavedReport(machine("PC3", "9.3.1.0", "11/29/26 09:00:00")));
    Write("fleet/pc4.txt", altered);
    Write("fleet/pc5.txt", SavedReport(machine("PC5", "9.1.0.0", "11/22/26 14:36:06")));
    const Outcome collected = Check({"collect", "--db", "fleet.db", "fleet"});
    ASSERT_EQ(collected.status, 1) << collected.err;
    const std::string command = "cd '" + (root_ / "files").string() + "' && sqlite3 fleet.db < '" +
                                REPORTCHECK_SOURCE_DIR + "/docs/examples/other-versions.sql' >answer.txt 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << ReadFile(root_ / "files" / "answer.txt");
    EXPECT_EQ(ReadFile(root_ / "files" / "answer.txt"), "PC5|tool.dll|9.1.0.0\n");
}
#endif

// --- reportcheck page ---------------------------------------------------------

namespace {
std::size_t Count(const std::string& text, const std::string& what) {
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++count;
    return count;
}
}  // namespace

TEST_F(ReportCheck, PageOfAReportCarriesItsLinesAsData) {
    Write("report.txt", BuildReportFileBytes(u"A\r\nB\r\n"));
    const Outcome outcome = Check({"page", "--lang", "en", "report.txt"});
    EXPECT_EQ(outcome.out.rfind("<!DOCTYPE html>\n<html lang=\"en\">\n", 0), 0u) << outcome.out.substr(0, 80);
    EXPECT_NE(outcome.out.find("<script type=\"application/json\" id=\"page-data\">"
                               "{\"kind\":\"report\",\"lang\":\"en\",\"report\":{\"file\":\"report.txt\","
                               "\"verdict\":\"intact\",\"storedChecksum\":\"43080448\",\"bodyChecksum\":\"43080448\","
                               "\"lines\":[\"A\",\"B\"],\"sections\":[{\"name\":\"Header\",\"first\":1,\"last\":2}]"),
              std::string::npos);
    EXPECT_NE(outcome.out.find("<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
                               "script-src 'sha256-"),
              std::string::npos);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(ReportCheck, PageKeepsHostileTextInsideItsDataBlock) {
    Write("report.txt", BuildReportFileBytes(u"</script><!-- & {{script}}\r\n"));
    const Outcome outcome = Check({"page", "--lang", "fr", "report.txt"});
    EXPECT_NE(outcome.out.find("\"lines\":[\"\\u003c/script\\u003e\\u003c!-- \\u0026 {{script}}\"]"),
              std::string::npos);
    EXPECT_EQ(Count(outcome.out, "</script>"), 2u);  // the data's and the page's own script's
    EXPECT_EQ(Count(outcome.out, "<script"), 2u);
    EXPECT_EQ(outcome.out.find("<!--"), std::string::npos);
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(ReportCheck, PageWrittenWholeToItsFile) {
    Write("report.txt", AlteredAB());
    const Outcome toOutput = Check({"page", "--lang", "en", "report.txt"});
    const Outcome toFile = Check({"page", "-o", "page.html", "--lang", "en", "report.txt"});
    EXPECT_EQ(toFile.out, "");
    EXPECT_EQ(toFile.err, "");
    EXPECT_EQ(toFile.status, 1);  // altered: the page says so, and so does the status
    EXPECT_EQ(ReadFile(root_ / "files" / "page.html"), toOutput.out);
    EXPECT_NE(toOutput.out.find("\"verdict\":\"altered\",\"storedChecksum\":\"01024145\",\"bodyChecksum\":\"01024045\""),
              std::string::npos);
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(root_ / "files")) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"page.html", "report.txt"}));
}

TEST_F(ReportCheck, PageRefusesWhatShowRefusesAndWritesNothing) {
    Write("notes.txt", "plain text");
    Write("report.txt", kReportAB);
    for (const auto& arguments : {std::vector<std::string>{"page", "-o", "page.html", "notes.txt"},
                                  std::vector<std::string>{"page", "-o", "page.html", "--against", "notes.txt", "report.txt"}}) {
        const Outcome outcome = Check(arguments);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, "reportcheck: notes.txt: not a report (no UTF-16 byte-order mark)" + std::string(kNewline));
        EXPECT_EQ(outcome.status, 2);
        EXPECT_FALSE(fs::exists(root_ / "files" / "page.html"));
    }
}

TEST_F(ReportCheck, PageBadArgumentsGetTheUsage) {
    Write("report.txt", kReportAB);
    fs::create_directories(root_ / "files" / "fleet");
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"page"}, "reportcheck: page: too few arguments"},
        {{"page", "--lang", "de", "report.txt"}, "reportcheck: --lang takes en or fr"},
        {{"page", "report.txt", "report.txt"}, "reportcheck: page: too many arguments"},
        {{"page", "--colour", "report.txt"}, "reportcheck: unknown option --colour"},
        {{"page", "--against", "report.txt", "fleet"},
         "reportcheck: --against compares two reports, not a folder or a database"},
    };
    for (const auto& [arguments, problem] : cases) {
        const Outcome outcome = Check(arguments);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err.rfind(problem, 0), 0u) << outcome.err;
        EXPECT_NE(outcome.err.find("usage: reportcheck page [--against OLD] [--lang en|fr] [-o FILE] "
                                   "REPORT|FOLDER|DATABASE"),
                  std::string::npos)
            << outcome.err;
        EXPECT_EQ(outcome.status, 64);
    }
    const Outcome help = Check({"page", "--help"});
    EXPECT_EQ(help.out.rfind("usage: reportcheck page", 0), 0u);
    EXPECT_EQ(help.status, 0);
}

TEST_F(ReportCheck, PageOfAFolderHasARowPerFile) {
    fs::create_directories(root_ / "files" / "fleet" / "more");
    Write("fleet/a.txt", kReportAB);
    Write("fleet/more/b.txt", AlteredAB());
    Write("fleet/notes.txt", "plain");
    const Outcome outcome = Check({"page", "--lang", "en", "fleet"});
    EXPECT_EQ(outcome.status, 2);  // as collect: one file is not a report, and the page is written
    EXPECT_EQ(Count(outcome.err, "not a report (no UTF-16 byte-order mark)"), 1u);
    EXPECT_NE(outcome.out.find("{\"kind\":\"fleet\",\"lang\":\"en\",\"fleet\":{\"source\":\"fleet\",\"reports\":[{\"path\":"),
              std::string::npos);
    const std::size_t intact = outcome.out.find("\"verdict\":\"intact\"");
    const std::size_t altered = outcome.out.find("\"verdict\":\"altered\"");
    const std::size_t notReport = outcome.out.find("\"verdict\":\"not a report\"");
    EXPECT_LT(intact, altered);  // as collect walks: a.txt, more/ (b.txt), notes.txt
    EXPECT_LT(altered, notReport);
    EXPECT_NE(notReport, std::string::npos);
}

// --- findings, collect --db, rules ------------------------------------------

namespace {

const fs::path kFixtures = fs::path(REPORTCHECK_SOURCE_DIR) / "tests/findings/fixtures";

// The fixtures and pages of the source tree, which the test zip run on
// another machine does not carry.
#define REQUIRE_SOURCE_TREE()                                                              \
    if (!fs::exists(kFixtures)) GTEST_SKIP() << "no source tree here (" << kFixtures.string() << ")"

// Text as the checker writes it on standard error (text mode), with paths it
// made by walking folders in the system's own separator.
std::string Said(std::string text) {
#if defined(_WIN32)
    std::string made;
    for (char c : text) made += c == '/' ? std::string("\\") : c == '\n' ? std::string("\r\n") : std::string(1, c);
    return made;
#else
    return text;
#endif
}

// The same on standard output (binary): the separators only.
std::string Printed(std::string text) {
#if defined(_WIN32)
    std::replace(text.begin(), text.end(), '/', '\\');
#endif
    return text;
}

// A rule file whose query is `query`.
std::string RuleFile(const std::string& id, const std::string& query) {
    return "-- id: " + id +
           "\n-- severity: error\n-- title: T\n-- title.fr: T\n-- remedy: R\n-- remedy.fr: R\n" + query + "\n";
}

}  // namespace

TEST_F(ReportCheck, RulesListsTheBuiltInRules) {
    const Outcome outcome = Check({"rules"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out.substr(0, outcome.out.find('\n') + 1),
              "error   report.altered                  The report was changed after it was saved\n");
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 15);
}

TEST_F(ReportCheck, RulesDocumentationIsCurrent) {
    REQUIRE_SOURCE_TREE();
    const Outcome outcome = Check({"rules", "--markdown"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, ReadFile(fs::path(REPORTCHECK_SOURCE_DIR) / "docs/rules.md"))
        << "make docs/rules.md again: reportcheck rules --markdown > docs/rules.md";
}

TEST_F(ReportCheck, AFolderOfRulesAddsAndReplaces) {
    fs::create_directories(root_ / "files" / "team");
    Write("team/altered.sql", "-- id: report.altered\n-- severity: info\n-- title: Changed\n-- title.fr: Changé\n"
                              "-- remedy: Ask again\n-- remedy.fr: Redemander\n"
                              "SELECT report, NULL, verdict FROM reports WHERE verdict = 'altered'\n");
    Write("team/users.sql", RuleFile("team.root-user", "SELECT report, NULL, host_user FROM reports WHERE host_user = 'root'"));
    const Outcome listed = Check({"rules", "--rules", "team"});
    EXPECT_EQ(listed.status, 0) << listed.err;
    EXPECT_NE(listed.out.find(Printed("error   team.root-user                  T  (team/users.sql)\n")), std::string::npos)
        << listed.out;
    EXPECT_NE(listed.out.find(Printed("info    report.altered                  Changed  (team/altered.sql)\n")),
              std::string::npos)
        << listed.out;
}

TEST_F(ReportCheck, BadRuleFilesAreNamedAndNothingIsWritten) {
    REQUIRE_SOURCE_TREE();
    fs::copy_file(kFixtures / "healthy.txt", root_ / "files" / "healthy.txt");
    const Outcome first = Check({"collect", "--db", "fleet.db", "healthy.txt"});
    ASSERT_EQ(first.status, 0) << first.err;
    const std::string before = ReadFile(root_ / "files" / "fleet.db");
    struct Case {
        const char* query;
        const char* message;
    };
    const Case cases[] = {
        {"SELEC report, line, 'x' FROM entries", "near \"SELEC\": syntax error"},
        {"SELECT report, line, 'x' FROM no_such_table", "no such table: no_such_table"},
        {"DROP TABLE reports", "not authorized"},
        {"ATTACH 'other.db' AS other", "not authorized"},
        {"PRAGMA writable_schema = 1", "not authorized"},
        {"SELECT report, line FROM entries", "the query gives 2 columns; a rule gives three: report, line, detail"},
        {"SELECT 1, 2, 3; DELETE FROM reports", "more than one statement; a rule is one query"},
        {"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT i, i, i FROM n",
         "stopped after running longer than 1 seconds (a query that never ends?)"},
    };
    int index = 0;
    for (const Case& c : cases) {
        const std::string folder = "bad" + std::to_string(++index);
        fs::create_directories(root_ / "files" / folder);
        Write(folder + "/rule.sql", RuleFile("team.bad", c.query));
        const std::string named = "reportcheck: rule team.bad (" + folder + "/rule.sql): " + c.message + "\n";
        const Outcome collected =
            Check({"collect", "--db", "fleet.db", "--rules", folder, "--time-limit", "1", "healthy.txt"});
        EXPECT_EQ(collected.err, Said(named + "reportcheck: fleet.db: nothing written\n"));
        EXPECT_EQ(collected.status, 2);
        EXPECT_EQ(collected.out, "");
        EXPECT_TRUE(ReadFile(root_ / "files" / "fleet.db") == before) << c.query;
        // A first run that fails leaves no file for the next run to take as its own.
        const Outcome created =
            Check({"collect", "--db", "new.db", "--rules", folder, "--time-limit", "1", "healthy.txt"});
        EXPECT_EQ(created.err, Said(named + "reportcheck: new.db: nothing written\n"));
        EXPECT_EQ(created.status, 2);
        EXPECT_FALSE(fs::exists(root_ / "files" / "new.db")) << c.query;
        EXPECT_FALSE(fs::exists(root_ / "files" / "new.db-journal")) << c.query;
        // An empty file was there before: it stays, as it was.
        Write("empty.db", "");
        const Outcome intoEmpty =
            Check({"collect", "--db", "empty.db", "--rules", folder, "--time-limit", "1", "healthy.txt"});
        EXPECT_EQ(intoEmpty.err, Said(named + "reportcheck: empty.db: nothing written\n"));
        EXPECT_EQ(intoEmpty.status, 2);
        EXPECT_TRUE(fs::exists(root_ / "files" / "empty.db")) << c.query;
        EXPECT_EQ(ReadFile(root_ / "files" / "empty.db"), "") << c.query;
        const Outcome found = Check({"findings", "--rules", folder, "--time-limit", "1", "fleet.db"});
        EXPECT_EQ(found.err, Said(named));
        EXPECT_EQ(found.status, 2);
        EXPECT_EQ(found.out, "");
        EXPECT_TRUE(ReadFile(root_ / "files" / "fleet.db") == before) << c.query;
    }
}

TEST_F(ReportCheck, RuleHeadersAreChecked) {
    REQUIRE_SOURCE_TREE();
    fs::create_directories(root_ / "files" / "team");
    Write("team/rule.sql", "-- id: Team Rule\n-- severity: fatal\nSELECT 1, 2, 3\n");
    Write("healthy.txt", ReadFile(kFixtures / "healthy.txt"));
    const Outcome outcome = Check({"findings", "--rules", "team", "healthy.txt"});
    EXPECT_EQ(outcome.err, Said("reportcheck: team/rule.sql: line 1: no \"title\" in the header\n"));
    EXPECT_EQ(outcome.status, 2);
    Write("team/rule.sql", "-- id: team.rule\n-- colour: red\nSELECT 1, 2, 3\n");
    EXPECT_EQ(Check({"findings", "--rules", "team", "healthy.txt"}).err,
              Said("reportcheck: team/rule.sql: line 2: unknown key \"colour\"\n"));
}

TEST_F(ReportCheck, ForeignDatabasesAreLeftAlone) {
    REQUIRE_SOURCE_TREE();
    Write("notes.db", "SQLite format 3 is what this text is not\n");
    Write("healthy.txt", ReadFile(kFixtures / "healthy.txt"));
    const Outcome outcome = Check({"collect", "--db", "notes.db", "healthy.txt"});
    EXPECT_EQ(outcome.err, Said("reportcheck: notes.db: file is not a database; nothing written\n"));
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(ReadFile(root_ / "files" / "notes.db"), "SQLite format 3 is what this text is not\n");
}

#if !defined(_WIN32)
TEST_F(ReportCheck, DatabasesOfOthersOrOtherVersionsAreRefused) {
    Write("healthy.txt", ReadFile(kFixtures / "healthy.txt"));
    const std::string folder = (root_ / "files").string();
    ASSERT_EQ(std::system(("cd '" + folder + "' && sqlite3 other.db 'CREATE TABLE t(x); INSERT INTO t VALUES (1);'").c_str()), 0);
    const std::string other = ReadFile(root_ / "files" / "other.db");
    const Outcome foreign = Check({"collect", "--db", "other.db", "healthy.txt"});
    EXPECT_EQ(foreign.err, "reportcheck: other.db: not a database of reportcheck collect --db; nothing written\n");
    EXPECT_EQ(foreign.status, 2);
    EXPECT_TRUE(ReadFile(root_ / "files" / "other.db") == other);
    ASSERT_EQ(Check({"collect", "--db", "fleet.db", "healthy.txt"}).status, 0);
    // A database of the version before (no report times), and one of a newer reportcheck.
    for (const int version : {1, 3}) {
        const std::string pragma = "PRAGMA user_version = " + std::to_string(version) + ";";
        ASSERT_EQ(std::system(("cd '" + folder + "' && sqlite3 fleet.db '" + pragma + "'").c_str()), 0);
        const std::string fleet = ReadFile(root_ / "files" / "fleet.db");
        const Outcome other = Check({"findings", "fleet.db"});
        EXPECT_EQ(other.err, "reportcheck: fleet.db: tables of schema version " + std::to_string(version) +
                                 ", this reportcheck reads version 2\n");
        EXPECT_EQ(other.status, 2);
        EXPECT_EQ(Check({"collect", "--db", "fleet.db", "healthy.txt"}).status, 2);
        EXPECT_TRUE(ReadFile(root_ / "files" / "fleet.db") == fleet);
    }
}
#endif

namespace {

// Each rule's fixtures (tests/findings/fixtures, made by
// scripts/make-findings-fixtures.sh) with every finding and "not checked"
// that findings --json gives for it, as "rule line: detail".
struct FixtureFindings {
    const char* file;
    std::vector<std::string> expected;
};

const FixtureFindings kFixtureFindings[] = {
    {"healthy.txt", {}},
    {"altered-edited.txt", {"report.altered -: trailer says 24565148, body gives 04565168"}},
    {"unrecognised-line-edited.txt", {"report.edited 11: a line the program does not write here"}},
    {"not-elevated-edited.txt", {"program.not-elevated 5: no \"launched as administrator\" line"}},
    {"not-installed.txt",
     {"suite.not-installed 112: no installation data in the registry and nothing in C:\\Program Files\\Orvane "
      "Software V9",
      "not checked suite.install-location-empty: registry data", "not checked suite.registry-version: registry data",
      "not checked suite.install-location-twice: registry data",
      "not checked suite.registry-number-as-text: registry data"}},
    // The uninstaller's data left behind: installed for the registry, with
    // nothing where InstallLocation points.
    {"not-installed-near.txt",
     {"suite.install-location-empty 116: C:\\Program Files\\Orvane Software V9 is listed with nothing in it",
      "program.outside-installation 6: C:\\tools is not the suite's directory"}},
    {"mixed-versions.txt",
     {"suite.mixed-versions 123: Runner.dll carries 3.2.1.0 where 2 of the suite's 3 versioned files carry "
      "9.3.1.1042"}},
    {"registry-version.txt",
     {"suite.registry-version 126: the registry gives 9.2.1.1042, the suite's files carry 9.3.1.1042"}},
    {"registry-version-near.txt", {}},
    {"registry-number-as-text.txt",
     {"suite.registry-version 126: the registry gives 9.51.1.1042, the suite's files carry 9.3.1.1042",
      "suite.registry-number-as-text 127: VersionMinor: 51 is the text \"3\" read as a number"}},
    {"install-location-empty.txt", {"suite.install-location-empty 125: C:\\Orvane is listed with nothing in it"}},
    {"install-location-twice.txt",
     {"suite.install-location-twice 125: c:\\program files\\orvane software v9\\ is C:\\Program Files\\Orvane "
      "Software V9 written differently"}},
    {"outside-installation.txt", {"program.outside-installation 6: C:\\tools is not the suite's directory"}},
    {"empty-file.txt", {"suite.empty-file 119: Core.dll in the standard directory has size 0"}},
    {"unversioned-file.txt",
     {"suite.unversioned-file 122: Legacy.dll has no product version where 3 of its neighbours have one"}},
    {"low-disk-space-edited.txt",
     {"system.low-disk-space 31: 13210604K free for the user of 264212084K (5.0 %)"}},
    {"low-disk-space-near-edited.txt", {}},
    {"no-adapter-up-edited.txt",
     {"network.no-adapter-up 33: 4 adapters listed, none up with an address other than loopback"}},
    {"shared-directory-missing.txt",
     {"suite.shared-directory-missing 135: C:\\ProgramData\\Orvane Software\\Runner is listed with no entries"}},
};

std::vector<std::string> FindingLines(const std::string& json) {
    std::vector<std::string> lines;
    const auto document = nlohmann::json::parse(json);
    for (const auto& report : document["reports"]) {
        for (const auto& f : report["findings"])
            lines.push_back(f["rule"].get<std::string>() + " " +
                            (f["line"].is_null() ? std::string("-") : std::to_string(f["line"].get<int>())) + ": " +
                            f["detail"].get<std::string>());
        for (const auto& u : report["notChecked"])
            lines.push_back("not checked " + u["rule"].get<std::string>() + ": " + u["missing"].get<std::string>());
    }
    return lines;
}

}  // namespace

TEST_F(ReportCheck, EachRuleOnItsFixtures) {
    REQUIRE_SOURCE_TREE();
    for (const FixtureFindings& fixture : kFixtureFindings) {
        fs::copy_file(kFixtures / fixture.file, root_ / "files" / fixture.file);
        const Outcome outcome = Check({"findings", "--json", fixture.file});
        EXPECT_EQ(outcome.err, "") << fixture.file;
        EXPECT_EQ(outcome.status, fixture.expected.empty() ? 0 : 1) << fixture.file;
        EXPECT_EQ(FindingLines(outcome.out), fixture.expected) << fixture.file;
    }
}

TEST_F(ReportCheck, FindingsForAPerson) {
    REQUIRE_SOURCE_TREE();
    fs::create_directories(root_ / "files" / "fleet");
    for (const char* name : {"empty-file.txt", "healthy.txt", "not-elevated-edited.txt"})
        fs::copy_file(kFixtures / name, root_ / "files" / "fleet" / name);
    Write("fleet/notes.txt", "not a report");
    const Outcome outcome = Check({"findings", "fleet"});
    EXPECT_EQ(outcome.err, Said("reportcheck: fleet/notes.txt: not a report (no UTF-16 byte-order mark)\n"));
    EXPECT_EQ(outcome.out,
              Printed("fleet/empty-file.txt") + ": intact (checksum 3a50575c)\n"
              "  error suite.empty-file: A library or program of the suite is empty\n"
              "    line 119: \t00000020          0\t23/11/2026  20:41:07\t23/11/2026  20:41:07\tCore.dll\t\n"
              "    Core.dll in the standard directory has size 0\n"
              "    remedy: Repair or reinstall the suite; check the disk and the antivirus's quarantine.\n" +
              Printed("fleet/healthy.txt") + ": intact (checksum 24565148)\n" +
              Printed("fleet/not-elevated-edited.txt") + ": intact (checksum 6262627b)\n"
              "  info program.not-elevated: The report was made without administrator rights\n"
              "    line 5: OrvaneDiagnostics 9.3.1.1042\n"
              "    no \"launched as administrator\" line\n"
              "    remedy: For a complete picture, ask for a report made with \"Run as administrator\".\n" +
              Printed("fleet/notes.txt") + ": not a report (no UTF-16 byte-order mark)\n"
              "4 reports: 1 error, 0 warnings, 1 info\n");
    const Outcome errorsOnly = Check({"findings", "--min-severity", "error", "fleet/not-elevated-edited.txt"});
    EXPECT_EQ(errorsOnly.out,
              "fleet/not-elevated-edited.txt: intact (checksum 6262627b)\n1 report: 0 errors, 0 warnings, 0 info\n");
    EXPECT_EQ(errorsOnly.status, 0);
    EXPECT_EQ(outcome.status, 2);
}

// collect --db brings the database to the folder's state, reading only what
// changed; findings on the database give what findings on the files give.
TEST_F(ReportCheck, CollectDatabaseIsIncremental) {
    REQUIRE_SOURCE_TREE();
    fs::create_directories(root_ / "files" / "fleet");
    for (const char* name : {"healthy.txt", "empty-file.txt", "mixed-versions.txt"})
        fs::copy_file(kFixtures / name, root_ / "files" / "fleet" / name);
    ASSERT_EQ(Check({"collect", "--db", "fleet.db", "fleet"}).status, 0);
    const Outcome fromFiles = Check({"findings", "fleet"});
    const Outcome fromDatabase = Check({"findings", "fleet.db"});
    EXPECT_EQ(fromDatabase.out, fromFiles.out);
    EXPECT_EQ(fromDatabase.status, 1);
    // One report replaced by another state, one removed, one added.
    fs::copy_file(kFixtures / "shared-directory-missing.txt", root_ / "files" / "fleet" / "healthy.txt",
                  fs::copy_options::overwrite_existing);
    fs::last_write_time(root_ / "files" / "fleet" / "healthy.txt", fs::file_time_type::clock::now() + std::chrono::hours(1));
    fs::remove(root_ / "files" / "fleet" / "mixed-versions.txt");
    fs::copy_file(kFixtures / "registry-version.txt", root_ / "files" / "fleet" / "registry.txt");
    ASSERT_EQ(Check({"collect", "--db", "fleet.db", "fleet"}).status, 0);
    EXPECT_EQ(Check({"findings", "fleet.db"}).out, Check({"findings", "fleet"}).out);
#if !defined(_WIN32)
    const std::string command = "cd '" + (root_ / "files").string() +
                                "' && sqlite3 fleet.db 'SELECT path, rule, line FROM findings JOIN reports USING "
                                "(report) ORDER BY path, rule' >answer.txt 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(ReadFile(root_ / "files" / "answer.txt"),
              "fleet/empty-file.txt|suite.empty-file|119\n"
              "fleet/healthy.txt|suite.shared-directory-missing|135\n"
              "fleet/registry.txt|suite.registry-version|126\n");
#endif
}

TEST_F(ReportCheck, TablesAreAsDocumented) {
    REQUIRE_SOURCE_TREE();
    const std::string page = ReadFile(fs::path(REPORTCHECK_SOURCE_DIR) / "docs/report-tables.md");
    EXPECT_NE(page.find("```sql\n" + std::string(report_tables::TablesSchema()) + "```\n"), std::string::npos)
        << "docs/report-tables.md must show the CREATE statements of src/reader/ReportTables.cpp";
    EXPECT_NE(page.find("# Report tables (schema version " + std::to_string(report_tables::kTablesSchemaVersion) + ")"),
              std::string::npos);
}

TEST_F(ReportCheck, PageOfACollectedDatabase) {
    fs::create_directories(root_ / "files" / "fleet");
    Write("fleet/a.txt", kReportAB);
    Write("fleet/b.txt", AlteredAB());
    ASSERT_EQ(Check({"collect", "--db", "fleet.db", "fleet"}).status, 1);
    const Outcome outcome = Check({"page", "--lang", "fr", "-o", "fleet.html", "fleet.db"});
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 1);  // one report altered, as collect said
    const std::string page = ReadFile(root_ / "files" / "fleet.html");
    EXPECT_NE(page.find("{\"kind\":\"fleet\",\"lang\":\"fr\",\"fleet\":{\"source\":\"fleet.db\",\"reports\":[{\"path\":"),
              std::string::npos);
    EXPECT_LT(page.find("\"verdict\":\"intact\""), page.find("\"verdict\":\"altered\""));
    EXPECT_NE(page.find("\"verdict\":\"altered\""), std::string::npos);

    Write("other.db", "SQLite format 3");
    const Outcome foreign = Check({"page", "-o", "other.html", "other.db"});
    EXPECT_EQ(foreign.status, 2);
    EXPECT_FALSE(fs::exists(root_ / "files" / "other.html"));
    EXPECT_EQ(foreign.err.rfind("reportcheck: other.db: ", 0), 0u) << foreign.err;
}

TEST_F(ReportCheck, DiffLeavesOutTheKindsAskedForAndRefusesUnknownOnes) {
    Write("before.txt", SavedReport(kSampleReportBody));
    Write("after.txt", SavedReport(Replaced(Replaced(kSampleReportBody, "free 81646476K", "free 81000000K"),
                                            "\tid: 12345-oem-0000001-54321", "\tid: 12345-oem-0000001-99999")));
    const Outcome outcome = Check({"diff", "--ignore", "free-space,times", "before.txt", "after.txt"});
    EXPECT_EQ(outcome.out, "Windows:\n\tid: 12345-oem-0000001-54321 \u2192 12345-oem-0000001-99999\n");
    EXPECT_EQ(outcome.status, 1);
    const Outcome quiet = Check({"diff", "--ignore=free-space", "before.txt", "before.txt"});
    EXPECT_EQ(quiet.out, "");
    EXPECT_EQ(quiet.status, 0);
    ExpectUsageError(Check({"diff", "--ignore", "colours", "before.txt", "after.txt"}),
                     "unknown kind of change \"colours\" (known: times, free-space)", "diff",
                     "diff [--json] [--ignore KINDS] OLD NEW");
}

TEST_F(ReportCheck, TransitDamageIsNamedAndRepairRestoresItOnlyWhenTheChecksumMatches) {
    const std::string original = SavedReport(kTinyBody);
    const std::string lf = transit_fixtures::WithLfLineBreaks(original);
    Write("lf.txt", lf);
    const Outcome checked = Check({"check", "lf.txt"});
    EXPECT_EQ(checked.out, std::string("lf.txt: altered (trailer says 14244c76, body gives 6f090968); line breaks "
                                       "converted from CR LF to LF (reportcheck repair restores it)") +
                               kNewline);
    EXPECT_EQ(checked.status, 1);

    const Outcome repaired = Check({"repair", "lf.txt", "restored.txt"});
    EXPECT_EQ(repaired.out, std::string("restored.txt: intact (checksum 14244c76), restored from lf.txt (undone: "
                                        "line breaks converted from CR LF to LF)") +
                                kNewline);
    EXPECT_EQ(repaired.status, 0);
    EXPECT_EQ(ReadFile(root_ / "files" / "restored.txt"), original);
    EXPECT_EQ(ReadFile(root_ / "files" / "lf.txt"), lf);

    std::string edited = original;
    edited[edited.find('1')] = '2';
    Write("edited.txt", edited);
    const Outcome refused = Check({"repair", "edited.txt", "out.txt"});
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err, std::string("reportcheck: edited.txt: altered (trailer says 14244c76, body gives "
                                       "14274c76): cannot be restored, out.txt not written") +
                               kNewline);
    EXPECT_EQ(refused.status, 1);
    EXPECT_FALSE(fs::exists(root_ / "files" / "out.txt"));
}

// Every damage the format's own tests diagnose, on the same report, through
// the program: on Windows too, where the files are opened and written by
// Win32 and the lines end in CR LF.
TEST_F(ReportCheck, RepairUndoesEachTransitDamageByteForByte) {
    using namespace transit_fixtures;
    const std::string original = BuildReportFileBytes(kBody);
    const std::string checksum = ChecksumText(ComputeReportChecksum(kBody));
    const std::string noMark = "not a report (no UTF-16 byte-order mark); ";
    const std::string restores = " (reportcheck repair restores it)";
    const struct {
        const char* file;
        std::string bytes;
        std::string checked;  // check's verdict, after "FILE: "
        std::string undone;
    } restorable[] = {
        {"utf8.txt", Utf8Of(TextOf(original)), noMark + "re-encoded as UTF-8" + restores, "re-encoded as UTF-8"},
        {"utf8-mark.txt", "\xEF\xBB\xBF" + Utf8Of(TextOf(original)), noMark + "re-encoded as UTF-8" + restores,
         "re-encoded as UTF-8"},
        {"latin1.txt", AsLatin1(original), noMark + "re-encoded as Latin-1 (or another single-byte encoding)" + restores,
         "re-encoded as Latin-1 (or another single-byte encoding)"},
        {"big-endian.txt", AsBigEndianUtf16(original), noMark + "re-encoded as big-endian UTF-16" + restores,
         "re-encoded as big-endian UTF-16"},
        {"lf.txt", WithLfLineBreaks(original),
         "altered (trailer says " + checksum + ", body gives " + ChecksumText(ComputeReportChecksum(Without(kBody, u"\r"))) +
             "); line breaks converted from CR LF to LF" + restores,
         "line breaks converted from CR LF to LF"},
        {"crlf-utf8.txt", AsUtf8WithCrLfLineBreaks(original),
         noMark + "re-encoded as UTF-8, line breaks converted from LF to CR LF" + restores,
         "re-encoded as UTF-8, line breaks converted from LF to CR LF"},
    };
    for (const auto& damaged : restorable) {
        Write(damaged.file, damaged.bytes);
        const Outcome checked = Check({"check", damaged.file});
        EXPECT_EQ(checked.out, std::string(damaged.file) + ": " + damaged.checked + kNewline);
        const std::string out = std::string("restored-") + damaged.file;
        const Outcome repaired = Check({"repair", damaged.file, out});
        EXPECT_EQ(repaired.out, out + ": intact (checksum " + checksum + "), restored from " + damaged.file +
                                    " (undone: " + damaged.undone + ")" + kNewline);
        EXPECT_EQ(repaired.err, "");
        EXPECT_EQ(repaired.status, 0);
        EXPECT_TRUE(ReadFile(root_ / "files" / out) == original) << damaged.file;
        EXPECT_TRUE(ReadFile(root_ / "files" / damaged.file) == damaged.bytes) << damaged.file;
    }

    const struct {
        const char* file;
        std::string bytes;
        std::string said;
        int status;
    } lost[] = {
        {"truncated.txt", original.substr(0, 90), "not a report (no checksum trailer at the end); truncated after 90 bytes", 2},
        {"replaced.txt", AsUtf8WithReplacedCharacters(original),
         noMark + "re-encoded as UTF-8, 2 characters replaced by U+FFFD", 2},
    };
    for (const auto& damaged : lost) {
        Write(damaged.file, damaged.bytes);
        const std::string out = std::string("restored-") + damaged.file;
        const Outcome refused = Check({"repair", damaged.file, out});
        EXPECT_EQ(refused.out, "");
        EXPECT_EQ(refused.err, "reportcheck: " + std::string(damaged.file) + ": " + damaged.said + ": cannot be restored, " +
                                   out + " not written" + kNewline);
        EXPECT_EQ(refused.status, damaged.status);
        EXPECT_FALSE(fs::exists(root_ / "files" / out)) << damaged.file;
    }
}

// show --json tells what a transfer did to an altered file where that is
// known, and whether repair restores it; an edited file gets no such words.
TEST_F(ReportCheck, ShowSaysWhatATransferDidToAnAlteredReport) {
    const std::string original = SavedReport(kTinyBody);
    Write("lf.txt", transit_fixtures::WithLfLineBreaks(original));
    std::string replaced = original;
    for (const char* c : {"A", "X"})  // each made U+FFFD
        replaced.replace(replaced.find(std::string(c) + '\0'), 2, "\xFD\xFF");
    Write("replaced.txt", replaced);
    std::string edited = original;
    edited[edited.find('1')] = '2';
    Write("edited.txt", edited);
    const auto integrity = [&](const char* name) {
        const std::string out = Check({"show", "--json", name}).out;
        const std::size_t start = out.find("  \"integrity\"");
        return out.substr(start, out.find("  },\n", start) + 5 - start);
    };
    EXPECT_EQ(integrity("lf.txt"),
              "  \"integrity\": {\n"
              "    \"verdict\": \"altered\",\n"
              "    \"storedChecksum\": \"14244c76\",\n"
              "    \"bodyChecksum\": \"6f090968\",\n"
              "    \"lineBreaks\": \"LF\",\n"
              "    \"lineBreakExceptions\": [],\n"
              "    \"finalLineBreak\": true,\n"
              "    \"transitDamage\": {\n"
              "      \"damage\": \"line breaks converted from CR LF to LF\",\n"
              "      \"repairable\": true\n"
              "    }\n"
              "  },\n");
    EXPECT_EQ(integrity("replaced.txt"),
              "  \"integrity\": {\n"
              "    \"verdict\": \"altered\",\n"
              "    \"storedChecksum\": \"14244c76\",\n"
              "    \"bodyChecksum\": \"b1244cca\",\n"
              "    \"lineBreaks\": \"CR LF\",\n"
              "    \"lineBreakExceptions\": [],\n"
              "    \"finalLineBreak\": true,\n"
              "    \"transitDamage\": {\n"
              "      \"damage\": \"2 characters replaced by U+FFFD\",\n"
              "      \"repairable\": false\n"
              "    }\n"
              "  },\n");
    EXPECT_EQ(integrity("edited.txt"),
              "  \"integrity\": {\n"
              "    \"verdict\": \"altered\",\n"
              "    \"storedChecksum\": \"14244c76\",\n"
              "    \"bodyChecksum\": \"14274c76\",\n"
              "    \"lineBreaks\": \"CR LF\",\n"
              "    \"lineBreakExceptions\": [],\n"
              "    \"finalLineBreak\": true\n"
              "  },\n");
}

// --- redact -------------------------------------------------------------------

namespace {

const std::string kRedactSynopsis = "redact [--map FILE] [--keyword WORD]... IN OUT";

// The text with every original of a redact map file replaced by its
// pseudonym, in any letter case, the longest original first: what the
// redacted report shows where the original showed the value.
std::string WithPseudonyms(std::string text, const std::string& mapText) {
    std::vector<std::pair<std::string, std::string>> pairs;
    std::istringstream lines(mapText);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t tab1 = line.find('\t'), tab2 = line.rfind('\t');
        pairs.emplace_back(line.substr(tab1 + 1, tab2 - tab1 - 1), line.substr(tab2 + 1));
    }
    std::sort(pairs.begin(), pairs.end(), [](const auto& a, const auto& b) { return a.first.size() > b.first.size(); });
    const auto lower = [](std::string t) {
        for (char& c : t) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return t;
    };
    std::string out;
    const std::string folded = lower(text);
    for (std::size_t i = 0; i < text.size();) {
        const auto match = std::find_if(pairs.begin(), pairs.end(),
                                        [&](const auto& p) { return folded.compare(i, p.first.size(), lower(p.first)) == 0; });
        if (match != pairs.end()) {
            out += match->second;
            i += match->first.size();
        } else {
            out += text[i++];
        }
    }
    return out;
}

}  // namespace

TEST_F(ReportCheck, RedactWritesAReportThatSaysItWasRedacted) {
    const std::string original = BuildReportFileBytes(std::u16string(kSampleReportBody.begin(), kSampleReportBody.end()));
    Write("report.txt", original);
    const Outcome outcome = Check({"redact", "--keyword", "suite", "report.txt", "redacted.txt"});
    EXPECT_EQ(outcome.out, Lines({"redacted.txt: redacted (computer name, user, product id, hardware address, "
                                  "adapter name, keyword)"}));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(ReadFile(root_ / "files" / "report.txt"), original);  // IN as it was
    EXPECT_EQ(Check({"redacted.txt"}).status, 0);                    // intact
    const auto json = nlohmann::ordered_json::parse(Check({"show", "--json", "redacted.txt"}).out);
    EXPECT_EQ(json["redaction"].dump(),
              "{\"line\":70,\"kinds\":[\"computer name\",\"user\",\"product id\",\"hardware address\","
              "\"adapter name\",\"keyword\"]}");
    EXPECT_EQ(json["host"]["user"], "USER-0001");
    EXPECT_EQ(json["installation"]["registry"]["InstallLocation"], "D:\\KEYWORD-0001");
    EXPECT_TRUE(json["unrecognised"].empty());
    // No map file unless asked for one.
    std::vector<std::string> files;
    for (const auto& entry : fs::directory_iterator(root_ / "files")) files.push_back(entry.path().filename().string());
    std::sort(files.begin(), files.end());
    EXPECT_EQ(files, (std::vector<std::string>{"redacted.txt", "report.txt"}));
}

// A value that cannot be hidden (here a user named like the times' digits)
// is found by the check: its kind is named, nothing is written.
TEST_F(ReportCheck, RedactWritesNothingWhenAValueWouldSurvive) {
    Write("report.txt",
          BuildReportFileBytes(u"\r\nHost:\r\n\tuser: 09:00\r\n\r\nOrvane Software installation:\r\n"
                               u"* Current directory (C:\\x):\r\n"
                               u"\t00000020          1\t07/03/2021  14:05:09\t08/03/2021  09:00:00\ta\t\r\n"));
    const Outcome outcome = Check({"redact", "--map", "map.tsv", "report.txt", "redacted.txt"});
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, Said("reportcheck: report.txt: a value of the kind \"user\" would still stand in the "
                                "redacted report; nothing written\n"));
    EXPECT_EQ(outcome.status, 3);
    EXPECT_FALSE(fs::exists(root_ / "files" / "redacted.txt"));
    EXPECT_FALSE(fs::exists(root_ / "files" / "map.tsv"));
}

// The redacted report redacted again, with the same map and keywords that
// spell pieces of its pseudonyms, is the same to the byte: its pseudonyms
// stay whole, and the check knows them for the tool's own words.
TEST_F(ReportCheck, RedactingTheRedactedReportAgainChangesNothing) {
    Write("report.txt", BuildReportFileBytes(std::u16string(kSampleReportBody.begin(), kSampleReportBody.end())));
    const std::vector<std::string> keywords{"--keyword", "suite", "--keyword", "host-0001", "--keyword", "-0001"};
    const auto redact = [&](const std::string& in, const std::string& out) {
        std::vector<std::string> arguments{"redact", "--map", "map.tsv"};
        arguments.insert(arguments.end(), keywords.begin(), keywords.end());
        arguments.insert(arguments.end(), {in, out});
        return Check(arguments);
    };
    ASSERT_EQ(redact("report.txt", "once.txt").status, 0);
    const std::string map = ReadFile(root_ / "files" / "map.tsv");
    const Outcome again = redact("once.txt", "twice.txt");
    EXPECT_EQ(again.out, Lines({"twice.txt: redacted (computer name, user, product id, hardware address, "
                                "adapter name, keyword)"}));
    EXPECT_EQ(again.err, "");
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(ReadFile(root_ / "files" / "twice.txt"), ReadFile(root_ / "files" / "once.txt"));
    EXPECT_EQ(ReadFile(root_ / "files" / "map.tsv"), map);
}

TEST_F(ReportCheck, RedactRefusesAnAlteredReportAndBadArguments) {
    Write("altered.txt", AlteredAB());
    Write("report.txt", kReportAB);
    const Outcome altered = Check({"redact", "altered.txt", "out.txt"});
    EXPECT_EQ(altered.err, Said("reportcheck: altered.txt: altered (trailer says 01024145, body gives 01024045): "
                                "only an intact report is redacted\n"));
    EXPECT_EQ(altered.status, 1);
    EXPECT_FALSE(fs::exists(root_ / "files" / "out.txt"));
    ExpectUsageError(Check({"redact", "report.txt", "report.txt"}),
                     "redact: IN is never changed: OUT must be another file", "redact", kRedactSynopsis);
    ExpectUsageError(Check({"redact", "--map", "out.txt", "report.txt", "out.txt"}),
                     "redact: the map must be a file of its own, neither IN nor OUT", "redact", kRedactSynopsis);
    ExpectUsageError(Check({"redact", "--keyword", "a\tb", "report.txt", "out.txt"}),
                     "redact: a keyword holds no tab or line break", "redact", kRedactSynopsis);
    Write("map.tsv", "user\tanne\n");
    const Outcome badMap = Check({"redact", "--map", "map.tsv", "report.txt", "out.txt"});
    EXPECT_EQ(badMap.err, Said("reportcheck: map.tsv: not a map of redact: line 1 is not "
                               "\"<kind>\\t<original>\\t<pseudonym>\"\n"));
    EXPECT_EQ(badMap.status, 2);
    EXPECT_FALSE(fs::exists(root_ / "files" / "out.txt"));
}

// Two reports of one machine redacted with one map compare as the originals
// do, with pseudonyms where the originals show the values.
TEST_F(ReportCheck, RedactedReportsOfOneMachineDiffAsTheOriginals) {
    std::string later = kSampleReportBody;
    later.replace(later.find("\tuser: anne"), 12, "\tuser: bob");
    later.replace(later.find("       4753"), 11, "       4999");
    const auto bytes = [](const std::string& body) {
        return BuildReportFileBytes(std::u16string(body.begin(), body.end()));
    };
    Write("before.txt", bytes(kSampleReportBody));
    Write("after.txt", bytes(later));
    ASSERT_EQ(Check({"redact", "--map", "map.tsv", "before.txt", "before-redacted.txt"}).status, 0);
    ASSERT_EQ(Check({"redact", "--map", "map.tsv", "after.txt", "after-redacted.txt"}).status, 0);
    const std::string map = ReadFile(root_ / "files" / "map.tsv");
    EXPECT_EQ(map, "computer name\tPC1\tHOST-0001\nuser\tanne\tUSER-0001\nproduct id\t12345-oem-0000001-54321\t"
                   "XXXXX-XXX-XXXXXXX-00001\nadapter name\t{00000002-0000-0000-0000-4E6574446576}\tADAPTER-0001\n"
                   "hardware address\t02-FC-00-00-00-01\t02-00-00-00-00-01\nuser\tbob\tUSER-0002\n");
    for (const char* json : {"", "--json"}) {
        std::vector<std::string> original{"diff", "before.txt", "after.txt"}, redacted{"diff", "before-redacted.txt",
                                                                                       "after-redacted.txt"};
        if (*json) {
            original.insert(original.begin() + 1, json);
            redacted.insert(redacted.begin() + 1, json);
        }
        const Outcome a = Check(original), b = Check(redacted);
        EXPECT_EQ(b.status, a.status);
        std::string expected = WithPseudonyms(a.out, map);
        for (const auto& [from, to] : {std::pair<std::string, std::string>{"before.txt", "before-redacted.txt"},
                                       {"after.txt", "after-redacted.txt"}})
            for (std::size_t at = expected.find(from); at != std::string::npos; at = expected.find(from, at + to.size()))
                expected.replace(at, from.size(), to);
        if (*json)  // the checksums are each file's own
            EXPECT_EQ(nlohmann::ordered_json::parse(b.out)["changes"],
                      nlohmann::ordered_json::parse(expected)["changes"]);
        else
            EXPECT_EQ(b.out, expected);
        EXPECT_NE(b.out.find("USER-0002"), std::string::npos) << b.out;
    }
}

// The rules find in a redacted report what they find in its original, at
// the same lines, with pseudonyms where the original's values stood; the
// page is made of it as of any report.
TEST_F(ReportCheck, RedactedReportsGiveTheSameFindingsAndAPage) {
    REQUIRE_SOURCE_TREE();
    for (const auto& entry : fs::directory_iterator(kFixtures)) {
        const std::string name = entry.path().filename().string();
        if (name.find("altered") != std::string::npos) continue;  // redact takes intact reports only
        fs::copy_file(entry.path(), root_ / "files" / name);
        const std::string redacted = "redacted-" + name;
        const Outcome redact = Check({"redact", "--map", name + ".map", name, redacted});
        ASSERT_EQ(redact.status, 0) << name << redact.err;
        const Outcome original = Check({"findings", "--json", name});
        const Outcome after = Check({"findings", "--json", redacted});
        EXPECT_EQ(after.status, original.status) << name;
        auto expected = nlohmann::ordered_json::parse(WithPseudonyms(original.out, ReadFile(root_ / "files" / (name + ".map"))));
        expected["reports"][0]["path"] = redacted;
        EXPECT_EQ(nlohmann::ordered_json::parse(after.out), expected) << name;
        const Outcome page = Check({"page", "--lang", "en", redacted});
        EXPECT_EQ(page.status, 0) << name << page.err;
        EXPECT_NE(page.out.find("\"verdict\":\"intact\""), std::string::npos) << name;
    }
}

// A report the program made under Wine, redacted with a keyword: none of the
// values replaced stands in the file's bytes in any letter case (read as
// UTF-16 and as UTF-8), and every other field is the original's, field by
// field through show --json.
TEST_F(ReportCheck, ARedactedReportOfTheProgramHoldsNoOriginalAndKeepsTheRest) {
    REQUIRE_SOURCE_TREE();
    fs::copy_file(fs::path(REPORTCHECK_SOURCE_DIR) / "tests/reportcheck/data/wine-report.txt",
                  root_ / "files" / "report.txt");
    const Outcome redact = Check({"redact", "--map", "map.tsv", "--keyword", "Bench", "report.txt", "redacted.txt"});
    ASSERT_EQ(redact.status, 0) << redact.err;
    const std::string map = ReadFile(root_ / "files" / "map.tsv");
    const auto lower = [](std::string t) {
        for (char& c : t) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return t;
    };
    const std::string bytes = ReadFile(root_ / "files" / "redacted.txt");
    std::string units;  // the UTF-16 text's low bytes: the report's values here are ASCII
    for (std::size_t i = 2; i < bytes.size(); i += 2) units += bytes[i];
    std::istringstream lines(map);
    int originals = 0;
    for (std::string line; std::getline(lines, line); ++originals) {
        const std::string original = line.substr(line.find('\t') + 1, line.rfind('\t') - line.find('\t') - 1);
        std::string utf16;
        for (char c : lower(original)) utf16 += std::string{c, '\0'};
        EXPECT_EQ(lower(units).find(lower(original)), std::string::npos) << line;
        EXPECT_EQ(lower(bytes).find(lower(original)), std::string::npos) << line;
        EXPECT_EQ(lower(bytes).find(utf16), std::string::npos) << line;
    }
    EXPECT_EQ(originals, 11) << map;  // VM, root, the product id, 4 adapters' names, 3 addresses, the keyword
    auto original = nlohmann::ordered_json::parse(WithPseudonyms(Check({"show", "--json", "report.txt"}).out, map));
    auto redacted = nlohmann::ordered_json::parse(Check({"show", "--json", "redacted.txt"}).out);
    EXPECT_EQ(redacted["integrity"]["verdict"], "intact");
    EXPECT_EQ(redacted["redaction"]["kinds"].dump(),
              "[\"computer name\",\"user\",\"product id\",\"hardware address\",\"adapter name\",\"keyword\"]");
    for (auto* json : {&original, &redacted})
        for (const char* key : {"integrity", "lineCount", "redaction"}) json->erase(key);
    EXPECT_EQ(redacted, original);
}

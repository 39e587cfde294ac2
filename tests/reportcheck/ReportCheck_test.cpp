// Runs the built reportcheck on files written here and checks every line it
// prints and its exit status. The same cases run the Linux binary natively
// and the Windows one under Wine.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "report/ReportChecksum.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/wait.h>

#include <cstdlib>
#endif

namespace fs = std::filesystem;

namespace {

#if defined(_WIN32)
constexpr const char* kNewline = "\r\n";  // stdout in text mode, as on any Windows console program
#else
constexpr const char* kNewline = "\n";
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
    void SetUp() override {
        const std::string test = ::testing::UnitTest::GetInstance()->current_test_info()->name();
        root_ = fs::temp_directory_path() / ("reportcheck-" + test + "-" + std::to_string(std::random_device{}()));
        fs::create_directories(root_ / "files");
    }

    void TearDown() override {
        std::error_code ignored;
        fs::remove_all(root_, ignored);
    }

    // Writes a file, named in UTF-8, into the folder the checker runs in.
    void Write(const std::string& name, const std::string& bytes) {
        std::ofstream out(root_ / "files" / PathFromUtf8(name), std::ios::binary);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        ASSERT_TRUE(out.good()) << name;
    }

    // Runs the checker in the files' folder with these arguments (UTF-8).
    Outcome Check(const std::vector<std::string>& arguments) {
        const fs::path out = root_ / "stdout.txt";
        const fs::path err = root_ / "stderr.txt";
        Outcome outcome;
#if defined(_WIN32)
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
        const BOOL started = ::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW,
                                              nullptr, folder.c_str(), &startup, &process);
        ::CloseHandle(outFile);
        ::CloseHandle(errFile);
        EXPECT_TRUE(started) << "cannot start " << CheckerPath().string() << ": " << ::GetLastError();
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
        command += " >" + quote(out.string()) + " 2>" + quote(err.string());
        const int raw = std::system(command.c_str());
        outcome.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
#endif
        outcome.out = ReadFile(out);
        outcome.err = ReadFile(err);
        return outcome;
    }

    fs::path root_;
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
    EXPECT_EQ(outcome.out, Lines({"cut-1.txt: not a report (odd number of bytes)",
                                  "cut-2.txt: not a report (no checksum trailer at the end)",
                                  "cut-trailer.txt: not a report (no checksum trailer at the end)",
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
    // The reason is the system's own (a folder is "Is a directory" on Linux,
    // "Permission denied" on Windows).
    EXPECT_EQ(outcome.out.rfind("folder: cannot be read (", 0), 0u) << outcome.out;
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

TEST_F(ReportCheck, NoArgumentsPrintsUsageAndGivesTwo) {
    const Outcome outcome = Check({});
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.rfind(std::string("usage: reportcheck FILE...") + kNewline, 0), 0u) << outcome.err;
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(ReportCheck, HelpPrintsUsageAndGivesZero) {
    const Outcome outcome = Check({"--help"});
    EXPECT_EQ(outcome.out.rfind(std::string("usage: reportcheck FILE...") + kNewline, 0), 0u) << outcome.out;
    EXPECT_NE(outcome.out.find("Exit status: 0 when every file is intact, 1 when one is altered,"),
              std::string::npos);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

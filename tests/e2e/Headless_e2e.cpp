// The report written from the command line, without any window.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "e2e/Driver.h"
#include "support/Wine.h"

using namespace e2e;

namespace {

// The body and trailer of a report file, checked for their form.
struct ReportFile {
    std::wstring body;
    std::wstring trailer;
};

ReportFile SplitReportFile(const std::string& bytes) {
    ReportFile file;
    if (bytes.size() < 32 || bytes[0] != '\xFF' || bytes[1] != '\xFE') return file;
    std::wstring text;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2)
        text.push_back(static_cast<wchar_t>(static_cast<unsigned char>(bytes[i]) |
                                            (static_cast<unsigned char>(bytes[i + 1]) << 8)));
    file.body = text.substr(0, text.size() - 15);
    file.trailer = text.substr(text.size() - 15);
    return file;
}

std::wstring ExpectedTrailer(const std::wstring& body) {
    std::uint32_t value = 0x01020304;
    for (std::size_t i = 0; i < body.size(); ++i) value ^= (static_cast<std::uint32_t>(body[i]) & 0xFF) << (8 * (i % 4));
    wchar_t digits[9];
    swprintf(digits, 9, L"%08x", value);
    return std::wstring(L"\n--- \n") + digits + L"\n";
}

std::vector<std::wstring> Lines(const std::wstring& text) {
    std::vector<std::wstring> lines;
    std::wstringstream in(text);
    for (std::wstring line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

// Lines whose values legitimately differ between two reports made moments apart.
bool ChangesBetweenRuns(const std::wstring& line) {
    return line.rfind(L"Orvane Software system report on ", 0) == 0 || line.rfind(L"\tC volume: ", 0) == 0;
}

class Headless : public testing::Test {
protected:
    void SetUp() override {
        SKIP_IF_FRENCH_USER();
        DeleteSettings();
        folder_ = TempFolder(L"orvane-headless");
    }
    void TearDown() override {
        std::error_code ignored;
        if (!folder_.empty()) std::filesystem::remove_all(std::filesystem::path(folder_), ignored);
        DeleteSettings();
    }

    // Runs the program to its end and says whether any window showed meanwhile.
    static bool RunToEnd(Program& program, DWORD& status) {
        bool windowSeen = false;
        WaitUntil([&] {
            if (!TopLevelWindows(program.Pid()).empty()) windowSeen = true;
            return !program.IsRunning();
        });
        return program.WaitForExit(status) && !windowSeen;
    }

    std::wstring folder_;
};

}  // namespace

TEST_F(Headless, WritesTheReportWithoutAnyWindow) {
    const std::wstring path = folder_ + L"\\report.txt";
    LaunchOptions options;
    options.arguments = L"\"" + path + L"\"";
    Program program(options);
    DWORD status = 1234;
    ASSERT_TRUE(RunToEnd(program, status)) << "a window appeared";
    EXPECT_EQ(status, 0u);
    const ReportFile file = SplitReportFile(ReadBytes(path));
    EXPECT_EQ(file.body.rfind(L"Orvane Software system report on ", 0), 0u);
    EXPECT_NE(file.body.find(L"\r\nProgram:\r\nOrvaneDiagnostics 9.3.1.1042\r\n"), std::wstring::npos);
    EXPECT_EQ(file.body.find(L'\n', 0) , file.body.find(L"\r\n") + 1) << "line breaks are CR LF";
    EXPECT_EQ(file.trailer, ExpectedTrailer(file.body));
    std::wstring remembered;
    EXPECT_FALSE(ReadSetting(L"Folder", L"report", remembered)) << "the remembered folder is left alone";
}

TEST_F(Headless, RelativePathIsTakenFromTheCurrentDirectory) {
    LaunchOptions options;
    options.arguments = L"relative-report.txt";
    options.currentDirectory = folder_;
    Program program(options);
    DWORD status = 1234;
    ASSERT_TRUE(RunToEnd(program, status));
    EXPECT_EQ(status, 0u);
    const ReportFile file = SplitReportFile(ReadBytes(folder_ + L"\\relative-report.txt"));
    EXPECT_EQ(file.trailer, ExpectedTrailer(file.body));
}

TEST_F(Headless, SameBytesAsSaveApartFromWhatChangesBetweenRuns) {
    const std::wstring headlessPath = folder_ + L"\\headless.txt";
    const std::wstring savedPath = folder_ + L"\\saved.txt";
    {
        LaunchOptions options;
        options.arguments = L"\"" + headlessPath + L"\"";
        Program program(options);
        DWORD status = 1234;
        ASSERT_TRUE(RunToEnd(program, status));
        ASSERT_EQ(status, 0u);
    }
    {
        Program program;
        HWND main = program.WaitForMainWindow();
        ASSERT_NE(main, nullptr);
        PostButtonClick(main, 1013);
        HWND window = program.WaitForWindow([](HWND hwnd) { return ::GetDlgItem(hwnd, 1003) != nullptr; }, kReportTimeout);
        ASSERT_NE(window, nullptr);
        PostButtonClick(window, 1012);
        ASSERT_NE(CompleteSaveAs(program, savedPath), nullptr);
        ASSERT_TRUE(WaitUntil([&] { return ReadBytes(savedPath).size() > 32; }));
    }
    const ReportFile headless = SplitReportFile(ReadBytes(headlessPath));
    const ReportFile saved = SplitReportFile(ReadBytes(savedPath));
    EXPECT_EQ(headless.trailer, ExpectedTrailer(headless.body));
    EXPECT_EQ(saved.trailer, ExpectedTrailer(saved.body));

    std::vector<std::wstring> a = Lines(headless.body), b = Lines(saved.body);
    ASSERT_EQ(a.size(), b.size());
    std::size_t compared = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        // The saved file lists the headless file beside it in no section: both live in a temp folder.
        if (ChangesBetweenRuns(a[i])) continue;
        EXPECT_EQ(a[i], b[i]) << "line " << i;
        ++compared;
    }
    EXPECT_GT(compared, 40u);
}

TEST_F(Headless, FolderThatDoesNotExistGivesStatusThreeAndNoWindow) {
    LaunchOptions options;
    options.arguments = L"\"" + folder_ + L"\\no such folder\\report.txt\"";
    options.captureOutput = true;
    Program program(options);
    DWORD status = 1234;
    ASSERT_TRUE(RunToEnd(program, status)) << "a window appeared";
    EXPECT_EQ(status, 3u);
    EXPECT_EQ(program.CapturedOutput(), "Unable to open file!\r\n");
}

TEST_F(Headless, TwoPathsAreAnInvalidCommandLine) {
    LaunchOptions options;
    options.arguments = L"a.txt b.txt";
    options.currentDirectory = folder_;
    Program program(options);
    HWND box = program.WaitForMessageBox();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(ReadMessageBox(box).text, L"Invalid launch parameters!");
    ASSERT_TRUE(PressMessageBoxButton(box, L"OK"));
    ASSERT_TRUE(program.WaitForClosed(box));
    HWND usage = program.WaitForMessageBox();
    ASSERT_NE(usage, nullptr);
    EXPECT_EQ(ReadMessageBox(usage).text.rfind(L"Usage: OrvaneDiagnostics.exe [/?] [report-file]", 0), 0u);
    ASSERT_TRUE(PressMessageBoxButton(usage, L"OK"));
    DWORD status = 1234;
    ASSERT_TRUE(program.WaitForExit(status));
    EXPECT_EQ(status, 2u);
    EXPECT_EQ(::GetFileAttributesW((folder_ + L"\\a.txt").c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(Headless, HelpStillShowsOnlyTheUsage) {
    LaunchOptions options;
    options.arguments = L"report.txt /?";
    options.currentDirectory = folder_;
    Program program(options);
    HWND box = program.WaitForMessageBox();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(ReadMessageBox(box).text.rfind(L"Usage: ", 0), 0u);
    ASSERT_TRUE(PressMessageBoxButton(box, L"OK"));
    DWORD status = 1234;
    ASSERT_TRUE(program.WaitForExit(status));
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(::GetFileAttributesW((folder_ + L"\\report.txt").c_str()), INVALID_FILE_ATTRIBUTES);
}

// The report written onto a nearly full drive: a small tmpfs of this test's
// own, mounted in its folder and mapped to a drive letter of the prefix.
// Whatever is written there fails part way; the program must say so, leave
// the report already there as it was and leave no temporary file behind.
// Only Wine lets a test mount a file system (it starts Unix programs, and
// the prefix's drive letters are links in its dosdevices folder); mounting
// needs root, which CI has. Without either the tests skip and say why.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "e2e/Driver.h"
#include "format/ReportVerdict.h"
#include "support/TempDirectory.h"
#include "support/Wine.h"

using namespace e2e;

namespace {

// Mounts, fills to all but a few bytes, unmaps and unmounts. Drive letters
// p to y are tried in turn: the first one not taken becomes the drive.
constexpr char kDriveScript[] = R"(#!/bin/sh
set -u
action=$1 folder=$2
mountpoint=$folder/drive
dosdevices=${WINEPREFIX:-$HOME/.wine}/dosdevices
case $action in
mount)
  mkdir -p "$mountpoint"
  if ! mount -t tmpfs -o "size=$3k" tmpfs "$mountpoint" 2>"$folder/reason"; then
    echo "exit=1" >"$folder/done"; exit 1
  fi
  for letter in p q r s t u v w x y; do
    if ln -s "$mountpoint" "$dosdevices/$letter:" 2>/dev/null; then
      echo "$letter" >"$folder/letter"; echo "exit=0" >"$folder/done"; exit 0
    fi
  done
  echo "no free drive letter from P: to Y:" >"$folder/reason"
  umount "$mountpoint"; echo "exit=1" >"$folder/done"; exit 1 ;;
fill)
  available=$(df -B1 --output=avail "$mountpoint" | tail -n 1)
  head -c $((available - $3)) /dev/zero >"$mountpoint/filler"
  echo "exit=$?" >"$folder/done" ;;
unmount)
  letter=$(cat "$folder/letter" 2>/dev/null) && rm -f "$dosdevices/$letter:"
  umount "$mountpoint" 2>/dev/null || umount -l "$mountpoint"
  rmdir "$mountpoint"
  echo "exit=0" >"$folder/done" ;;
esac
)";

// A Unix path for a Windows one, through Wine's kernel32.
std::optional<std::string> UnixPathOf(const std::wstring& path) {
    using Convert = char*(CDECL*)(LPCWSTR);
    const auto convert = reinterpret_cast<Convert>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    if (!convert) return std::nullopt;
    char* unixPath = convert(path.c_str());
    if (!unixPath) return std::nullopt;
    std::string result(unixPath);
    ::HeapFree(::GetProcessHeap(), 0, unixPath);
    return result;
}

std::wstring Widen(const std::string& text) { return std::wstring(text.begin(), text.end()); }

std::string TrimmedLine(const std::string& text) {
    return text.substr(0, std::min(text.find('\n'), text.size()));
}

// A tmpfs of `kilobytes`, mounted in `folder` (which the test owns) and
// mapped to a drive letter until the object goes.
class NearlyFullDrive {
public:
    NearlyFullDrive(const std::wstring& folder, unsigned kilobytes) : folder_(folder) {
        const auto unixFolder = UnixPathOf(folder_);
        if (!unixFolder) {
            reason_ = "the test folder has no Unix path";
            return;
        }
        unixFolder_ = *unixFolder;
        if (!TempDirectory::WriteFile(folder_ + L"\\drive.sh", kDriveScript)) {
            reason_ = "the drive script could not be written";
            return;
        }
        if (!Run("mount", std::to_string(kilobytes))) {
            reason_ = "cannot mount a tmpfs here: " + TrimmedLine(ReadBytes(folder_ + L"\\reason"));
            return;
        }
        mounted_ = true;
        root_ = Widen(TrimmedLine(ReadBytes(folder_ + L"\\letter"))) + L":\\";
        std::transform(root_.begin(), root_.end(), root_.begin(), ::towupper);
    }
    ~NearlyFullDrive() {
        if (mounted_) Run("unmount");
    }
    NearlyFullDrive(const NearlyFullDrive&) = delete;
    NearlyFullDrive& operator=(const NearlyFullDrive&) = delete;

    bool Ready() const { return mounted_; }
    const std::string& Reason() const { return reason_; }
    const std::wstring& Root() const { return root_; }
    // Fills the drive until only `bytes` remain free.
    bool FillLeaving(unsigned bytes) { return Run("fill", std::to_string(bytes)); }

private:
    // Runs the script through Wine's start of Unix programs and waits for
    // the mark it leaves at its end.
    bool Run(const std::string& action, const std::string& number = {}) {
        const std::wstring done = folder_ + L"\\done";
        ::DeleteFileW(done.c_str());
        const auto shell = DosPathOf("/bin/sh");
        if (!shell) return false;
        const std::wstring folder = Widen(unixFolder_);
        std::wstring commandLine =
            L"\"" + *shell + L"\" \"" + folder + L"/drive.sh\" " + Widen(action) + L" \"" + folder + L"\"";
        if (!number.empty()) commandLine += L" " + Widen(number);
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION process{};
        if (!::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                              &process))
            return false;
        if (process.hThread) ::CloseHandle(process.hThread);
        if (process.hProcess) ::CloseHandle(process.hProcess);
        if (!WaitUntil([&] { return ::GetFileAttributesW(done.c_str()) != INVALID_FILE_ATTRIBUTES; })) return false;
        return TrimmedLine(ReadBytes(done)) == "exit=0";
    }

    static std::optional<std::wstring> DosPathOf(const char* unixPath) {
        using Convert = WCHAR*(CDECL*)(LPCSTR);
        const auto convert = reinterpret_cast<Convert>(reinterpret_cast<void*>(
            ::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "wine_get_dos_file_name")));
        if (!convert) return std::nullopt;
        WCHAR* dosPath = convert(unixPath);
        if (!dosPath) return std::nullopt;
        std::wstring result(dosPath);
        ::HeapFree(::GetProcessHeap(), 0, dosPath);
        return result;
    }

    std::wstring folder_;
    std::string unixFolder_;
    std::wstring root_;
    std::string reason_;
    bool mounted_ = false;
};

std::vector<std::wstring> NamesIn(const std::wstring& folder) {
    std::vector<std::wstring> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(folder), error))
        names.push_back(entry.path().filename().wstring());
    std::sort(names.begin(), names.end());
    return names;
}

bool RunToEnd(Program& program, DWORD& status) {
    WaitUntil([&] { return !program.IsRunning(); }, kReportTimeout);
    return program.WaitForExit(status, 1s);
}

// A report is some ten kilobytes on a fresh prefix: 4 KiB free cuts it short.
constexpr unsigned kDriveKilobytes = 1024;
constexpr unsigned kFreeBytesLeft = 4096;

class FullDrive : public testing::Test {
protected:
    void SetUp() override {
        SKIP_UNLESS_WINE("a tmpfs mapped to a drive letter of the prefix");
        SKIP_IF_FRENCH_USER();
        DeleteSettings();
        folder_ = TempFolder(L"orvane-full-drive");
        drive_ = std::make_unique<NearlyFullDrive>(folder_, kDriveKilobytes);
        if (!drive_->Ready()) GTEST_SKIP() << drive_->Reason();
        report_ = drive_->Root() + L"report.txt";
    }
    void TearDown() override {
        drive_.reset();
        if (!folder_.empty()) TempDirectory::RemoveTree(folder_);
        DeleteSettings();
    }

    // The earlier report, written by the program while the drive had room.
    std::string WriteEarlierReport() {
        LaunchOptions options;
        options.arguments = L"\"" + report_ + L"\"";
        Program program(options);
        DWORD status = 1234;
        if (!RunToEnd(program, status) || status != 0) return {};
        return ReadBytes(report_);
    }

    std::wstring folder_;
    std::unique_ptr<NearlyFullDrive> drive_;
    std::wstring report_;
};

}  // namespace

TEST_F(FullDrive, HeadlessReportGivesStatusThreeAndKeepsTheEarlierReport) {
    const std::string earlier = WriteEarlierReport();
    ASSERT_EQ(CheckReportBytes(earlier).state, ReportState::Intact);
    ASSERT_GT(earlier.size(), kFreeBytesLeft) << "the report must not fit in what is left";
    ASSERT_TRUE(drive_->FillLeaving(kFreeBytesLeft));

    LaunchOptions options;
    options.arguments = L"\"" + report_ + L"\"";
    options.captureOutput = true;
    Program program(options);
    DWORD status = 1234;
    ASSERT_TRUE(RunToEnd(program, status));
    EXPECT_EQ(status, 3u);
    EXPECT_EQ(program.CapturedOutput(), "Unable to write the file!\r\n");
    EXPECT_EQ(ReadBytes(report_), earlier) << "the earlier report, byte for byte";
    EXPECT_EQ(NamesIn(drive_->Root()), (std::vector<std::wstring>{L"filler", L"report.txt"}));
}

TEST_F(FullDrive, SaveShowsTheMessageAndKeepsTheEarlierReport) {
    const std::string earlier = WriteEarlierReport();
    ASSERT_EQ(CheckReportBytes(earlier).state, ReportState::Intact);
    ASSERT_TRUE(drive_->FillLeaving(kFreeBytesLeft));

    Program program;
    HWND window = OpenWholeReport(program);
    ASSERT_NE(window, nullptr);
    PostButtonClick(window, 1012);
    ASSERT_NE(CompleteSaveAs(program, report_), nullptr);
    // The file dialog asks before replacing; then the program says it could not write.
    HWND box = ConfirmReplacementAndWaitForBox(program, L"Unable to write the file!");
    ASSERT_NE(box, nullptr);
    const MessageBoxContent content = ReadMessageBox(box);
    EXPECT_EQ(content.caption, L"OrvaneDiagnostics");
    EXPECT_EQ(content.buttons, std::vector<std::wstring>{L"OK"});
    EXPECT_EQ(ReadMessageBoxIcon(box), IconKind::kStop);
    EXPECT_EQ(ReadBytes(report_), earlier) << "the earlier report, byte for byte";
    EXPECT_EQ(NamesIn(drive_->Root()), (std::vector<std::wstring>{L"filler", L"report.txt"}));
    std::wstring remembered;
    EXPECT_TRUE(ReadSetting(L"Folder", L"report", remembered));
    EXPECT_EQ(remembered, drive_->Root().substr(0, 2)) << "remembered before the file was opened";
    ASSERT_TRUE(PressMessageBoxButton(box, L"OK"));
    ASSERT_TRUE(program.WaitForClosed(box));
    EXPECT_TRUE(program.IsRunning());
}

// The Windows section as other systems would write it. Wine lets a version
// be chosen per program (HKCU\Software\Wine\AppDefaults\<exe>\Version), read
// once when a process starts, so each case runs a copy of the report printer
// under a name of its own. Cases that change the machine-wide registry run
// alone (their suites are run serially, see tests/CMakeLists.txt).
#include "collect/SystemReport.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <regex>

#include "collect/ReportTestSupport.h"
#include "support/TempDirectory.h"
#include "support/Wine.h"
#include "w32/Scoped.h"

namespace {

constexpr wchar_t kNtCurrentVersion[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr char kPerProgramVersion[] = "the Windows version is chosen per program in HKCU\\Software\\Wine\\AppDefaults";
constexpr char kChangesWindowsOwnKeys[] = "changes Windows's own registry, which only a throwaway prefix may lose";

// What a child says of the system: its true version from RtlGetVersion and
// the one GetVersionExW reports to a program without a supportedOS list.
struct SystemView {
    std::wstring realVersion;  // "10.0.18362"
    unsigned servicePack = 0;
    unsigned productType = 0;
    std::wstring reportedVersion;
};

std::optional<SystemView> ParseVersions(const std::wstring& text) {
    const std::wregex line(L"(\\d+\\.\\d+\\.\\d+) (\\d+) (\\d+)\n(\\d+\\.\\d+\\.\\d+) \\d+ \\d+\n");
    std::wsmatch match;
    if (!std::regex_match(text, match, line)) return std::nullopt;
    return SystemView{match[1], static_cast<unsigned>(std::stoul(match[2])),
                      static_cast<unsigned>(std::stoul(match[3])), match[4]};
}

std::wstring Edition(const SystemView& view) { return view.productType == VER_NT_WORKSTATION ? L"Desktop" : L"Server"; }

// A copy of the report printer under its own name, with its own Windows
// version in Wine's per-program settings; both go away with the object.
class PrinterWithVersion {
public:
    explicit PrinterWithVersion(const std::wstring& wineVersion) {
        exeName_ = L"orvane_" + wineVersion + L"_" + std::to_wstring(::GetCurrentProcessId()) + L".exe";
        path_ = NewScratchFolder(L"printer") + L"\\" + exeName_;
        copied_ = ::CopyFileW(ReportPrinterPath().c_str(), path_.c_str(), FALSE) != FALSE;
        const std::wstring key = AppDefaultsKey();
        set_ = ::RegSetKeyValueW(HKEY_CURRENT_USER, key.c_str(), L"Version", REG_SZ, wineVersion.c_str(),
                                 static_cast<DWORD>((wineVersion.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
    }
    ~PrinterWithVersion() {
        ::RegDeleteTreeW(HKEY_CURRENT_USER, AppDefaultsKey().c_str());
        ::DeleteFileW(path_.c_str());
    }
    PrinterWithVersion(const PrinterWithVersion&) = delete;
    PrinterWithVersion& operator=(const PrinterWithVersion&) = delete;

    bool Ready() const { return copied_ && set_; }
    PrintedReport Run(const std::wstring& what) const { return RunReportPrinter(path_, what); }

private:
    std::wstring AppDefaultsKey() const { return L"Software\\Wine\\AppDefaults\\" + exeName_; }
    std::wstring exeName_;
    std::wstring path_;
    bool copied_ = false;
    bool set_ = false;
};

std::vector<std::wstring> WindowsSectionOf(const std::wstring& printerPath) {
    const PrintedReport printed = RunReportPrinter(printerPath, L"windows");
    return printed.ok ? SplitLines(printed.text) : std::vector<std::wstring>{L"<the printer did not run>"};
}

struct VersionCase {
    const wchar_t* wineVersion;
    const wchar_t* label;
};

std::ostream& operator<<(std::ostream& out, const VersionCase& c) {
    return out << testing::PrintToString(std::wstring(c.wineVersion));
}

class WineVersion : public testing::TestWithParam<VersionCase> {};

// The section of a child on the system `view` describes: the version line,
// then the real version as WMI gives it.
void ExpectVersionLines(const std::vector<std::wstring>& lines, const std::wstring& label, const SystemView& view) {
    ASSERT_GE(lines.size(), 4u);
    EXPECT_EQ(lines[0], L"\n");
    EXPECT_EQ(lines[1], L"Windows:\n");
    EXPECT_EQ(lines[2], L"\tversion reported: " + label + L" (" + Edition(view) + L")\n");
    EXPECT_EQ(lines[3], L"\treal version: " + view.realVersion + L"\n");
}

}  // namespace

TEST_P(WineVersion, VersionLineShowsWhatTheSystemReportsToThisProgram) {
    SKIP_UNLESS_WINE(kPerProgramVersion);
    const VersionCase& c = GetParam();
    const PrinterWithVersion printer(c.wineVersion);
    ASSERT_TRUE(printer.Ready());
    const PrintedReport versions = printer.Run(L"version");
    const auto view = ParseVersions(versions.text);
    ASSERT_TRUE(view) << testing::PrintToString(versions.text);
    const PrintedReport section = printer.Run(L"windows");
    ASSERT_TRUE(section.ok);
    ExpectVersionLines(SplitLines(section.text), c.label, *view);
}

// Wine 8 describes "win7" as a server and "win2008r2" as a workstation; the
// edition is therefore taken from what the child's system says, the label
// from the version alone.
INSTANTIATE_TEST_SUITE_P(Wine, WineVersion,
                         testing::Values(VersionCase{L"win10", L"8"}, VersionCase{L"win81", L"8"},
                                         VersionCase{L"win8", L"8"}, VersionCase{L"win7", L"7.1 or more"},
                                         VersionCase{L"win2008r2", L"7.1 or more"}, VersionCase{L"vista", L"Other"},
                                         VersionCase{L"win2008", L"Other"}, VersionCase{L"winxp64", L"Other"},
                                         VersionCase{L"win2003", L"Other"}),
                         [](const testing::TestParamInfo<VersionCase>& info) {
                             const std::wstring name = info.param.wineVersion;
                             return std::string(name.begin(), name.end());
                         });

TEST(WineVersionTen, ReportsEightWithTheRealVersionOnTheNextLine) {
    SKIP_UNLESS_WINE(kPerProgramVersion);
    const PrinterWithVersion printer(L"win10");
    ASSERT_TRUE(printer.Ready());
    const auto view = ParseVersions(printer.Run(L"version").text);
    ASSERT_TRUE(view);
    // Without a supportedOS list the program is told 6.2; RtlGetVersion and
    // WMI tell the truth.
    EXPECT_EQ(view->reportedVersion.substr(0, 4), L"6.2.");
    EXPECT_EQ(view->realVersion.substr(0, 5), L"10.0.");
    const std::vector<std::wstring> lines = SplitLines(printer.Run(L"windows").text);
    ASSERT_GE(lines.size(), 4u);
    EXPECT_EQ(lines[2], L"\tversion reported: 8 (Desktop)\n");
    EXPECT_EQ(lines[3], L"\treal version: " + view->realVersion + L"\n");
}

TEST(WineVersionServer, ServerEditionsSayServer) {
    SKIP_UNLESS_WINE(kPerProgramVersion);
    for (const wchar_t* version : {L"win2008", L"win2003"}) {
        const PrinterWithVersion printer(version);
        ASSERT_TRUE(printer.Ready());
        const std::vector<std::wstring> lines = SplitLines(printer.Run(L"windows").text);
        ASSERT_GE(lines.size(), 3u);
        EXPECT_EQ(lines[2], L"\tversion reported: Other (Server)\n") << testing::PrintToString(version);
    }
}

// --- Child processes with or without elevation ------------------------------

TEST(ChildProgramSection, ElevatedProcessSaysSoRightAfterItsDirectory) {
    SKIP_UNLESS_ELEVATED();
    const PrintedReport printed = RunReportPrinter(ReportPrinterPath(), L"program");
    ASSERT_TRUE(printed.ok);
    EXPECT_EQ(printed.text, L"\nProgram:\nreport_printer " + FixedProductVersion(ReportPrinterPath()) + L"\nin " +
                                TestProgramDirectory() + L"\nlaunched as administrator\n");
}

TEST(ChildProgramSection, ProcessWithoutElevationHasNoAdministratorLine) {
    SKIP_UNLESS_ELEVATED();
    const w32::ScopedHandle limited(OpenLinkedToken());
    ASSERT_TRUE(limited) << "no linked token to start a process without elevation";
    const PrintedReport printed = RunReportPrinter(ReportPrinterPath(), L"program", limited.Get());
    ASSERT_TRUE(printed.ok);
    EXPECT_EQ(printed.text, L"\nProgram:\nreport_printer " + FixedProductVersion(ReportPrinterPath()) + L"\nin " +
                                TestProgramDirectory() + L"\n");
}

TEST(ChildProgramSection, ProgramWithoutVersionResourceKeepsTheBlank) {
    SKIP_UNLESS_ELEVATED();
    const std::wstring printer = TestProgramDirectory() + L"\\report_printer_unversioned.exe";
    DWORD handle = 0;
    ASSERT_EQ(::GetFileVersionInfoSizeW(printer.c_str(), &handle), 0u) << "this printer has a version resource";
    const PrintedReport printed = RunReportPrinter(printer, L"program");
    ASSERT_TRUE(printed.ok);
    EXPECT_EQ(printed.text, L"\nProgram:\nreport_printer_unversioned \nin " + TestProgramDirectory() +
                                L"\nlaunched as administrator\n");
}

// --- Machine-wide registry: these suites run alone ---------------------------

TEST(ProductIdInRegistry, WithoutProductIdTheSystemPathFollowsTheRealVersion) {
    SKIP_UNLESS_WINE(kChangesWindowsOwnKeys);
    const SavedRegistryValue productId(HKEY_LOCAL_MACHINE, kWindowsCurrentVersion, L"ProductId");
    ASSERT_TRUE(productId.Remove());
    RecordingSink sink;
    WriteWindowsSection(sink);
    const std::vector<std::wstring>& pieces = sink.Pieces();
    ASSERT_EQ(pieces.size(), 6u);
    EXPECT_EQ(pieces[0], L"\nWindows:\n");
    EXPECT_EQ(pieces[1].rfind(L"\tversion reported: ", 0), 0u);
    EXPECT_EQ(pieces[2].rfind(L"\treal version: ", 0), 0u);
    EXPECT_EQ(pieces[3], L"\tsystem path: " + EnvironmentValue(L"SystemRoot") + L"\n");
}

TEST(ProductIdInRegistry, ProductIdLargerThanTheBufferGivesNoLine) {
    SKIP_UNLESS_WINE(kChangesWindowsOwnKeys);
    const SavedRegistryValue productId(HKEY_LOCAL_MACHINE, kWindowsCurrentVersion, L"ProductId");
    ASSERT_TRUE(productId.SetString(std::wstring(2048, L'9')));  // 4098 bytes with the terminator
    RecordingSink sink;
    WriteWindowsSection(sink);
    ASSERT_EQ(sink.Pieces().size(), 6u);
    EXPECT_EQ(sink.Pieces()[3].rfind(L"\tsystem path: ", 0), 0u);
}

TEST(ProductIdInRegistry, ProductIdFillingTheBufferIsReadWholeAndNoFurther) {
    SKIP_UNLESS_WINE(kChangesWindowsOwnKeys);
    const SavedRegistryValue productId(HKEY_LOCAL_MACHINE, kWindowsCurrentVersion, L"ProductId");
    ASSERT_TRUE(productId.Existed());
    ASSERT_TRUE(
        SetUnterminatedString(HKEY_LOCAL_MACHINE, kWindowsCurrentVersion, L"ProductId", std::wstring(2048, L'9')));
    ASSERT_EQ(StoredValueSize(HKEY_LOCAL_MACHINE, kWindowsCurrentVersion, L"ProductId"), 4096u);
    RecordingSink sink;
    WriteWindowsSection(sink);
    ASSERT_EQ(sink.Pieces().size(), 7u);
    EXPECT_EQ(sink.Pieces()[3], L"\tid: " + std::wstring(2048, L'9') + L"\n");
}

TEST(ProductIdInRegistry, TypeIsNotChecked) {
    SKIP_UNLESS_WINE(kChangesWindowsOwnKeys);
    const SavedRegistryValue productId(HKEY_LOCAL_MACHINE, kWindowsCurrentVersion, L"ProductId");
    ASSERT_TRUE(productId.SetDword(0x00420041));
    RecordingSink sink;
    WriteWindowsSection(sink);
    ASSERT_EQ(sink.Pieces().size(), 7u);
    EXPECT_EQ(sink.Pieces()[3], L"\tid: AB\n");
}

namespace {

// With no version configured for Wine, a process takes its version from the
// NT registry keys, service pack and product type included. Everything the
// test changes there is put back afterwards.
class RegistryWindowsVersion : public testing::Test {
protected:
    void SetUp() override {
        SKIP_UNLESS_WINE("Windows takes its version from its kernel, not from these registry values");
        if (WineVersionIsConfigured())
            GTEST_SKIP() << "a Windows version is set in HKCU\\Software\\Wine; the registry is not consulted";
    }

    static bool WineVersionIsConfigured() {
        return ::RegGetValueW(HKEY_CURRENT_USER, L"Software\\Wine", L"Version", RRF_RT_ANY, nullptr, nullptr,
                              nullptr) == ERROR_SUCCESS ||
               ::RegGetValueW(HKEY_CURRENT_USER, L"Software\\Wine\\AppDefaults\\report_printer.exe", L"Version",
                              RRF_RT_ANY, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
    }

    // Describes the system as major.minor.build with that service pack and
    // product type ("WinNT" or "ServerNT").
    void DescribeSystem(DWORD major, DWORD minor, const std::wstring& build, DWORD servicePack,
                        const std::wstring& productType) {
        ASSERT_TRUE(major_.SetDword(major));
        ASSERT_TRUE(minor_.SetDword(minor));
        ASSERT_TRUE(version_.SetString(std::to_wstring(major) + L"." + std::to_wstring(minor)));
        ASSERT_TRUE(build_.SetString(build));
        ASSERT_TRUE(csdText_.Remove());
        ASSERT_TRUE(servicePack_.SetDword(servicePack << 8));
        ASSERT_TRUE(productType_.SetString(productType));
    }

    SavedRegistryValue major_{HKEY_LOCAL_MACHINE, kNtCurrentVersion, L"CurrentMajorVersionNumber"};
    SavedRegistryValue minor_{HKEY_LOCAL_MACHINE, kNtCurrentVersion, L"CurrentMinorVersionNumber"};
    SavedRegistryValue version_{HKEY_LOCAL_MACHINE, kNtCurrentVersion, L"CurrentVersion"};
    SavedRegistryValue build_{HKEY_LOCAL_MACHINE, kNtCurrentVersion, L"CurrentBuildNumber"};
    SavedRegistryValue csdText_{HKEY_LOCAL_MACHINE, kNtCurrentVersion, L"CSDVersion"};
    SavedRegistryValue servicePack_{HKEY_LOCAL_MACHINE, L"System\\CurrentControlSet\\Control\\Windows", L"CSDVersion"};
    SavedRegistryValue productType_{HKEY_LOCAL_MACHINE, L"System\\CurrentControlSet\\Control\\ProductOptions",
                                    L"ProductType"};
};

}  // namespace

TEST_F(RegistryWindowsVersion, WindowsSevenWithoutServicePackIsSeven) {
    DescribeSystem(6, 1, L"7600", 0, L"WinNT");
    const auto view = ParseVersions(RunReportPrinter(ReportPrinterPath(), L"version").text);
    ASSERT_TRUE(view);
    ASSERT_EQ(view->realVersion, L"6.1.7600");
    ASSERT_EQ(view->servicePack, 0u);
    ExpectVersionLines(WindowsSectionOf(ReportPrinterPath()), L"7", *view);
}

TEST_F(RegistryWindowsVersion, WindowsSevenWithServicePackOneIsSevenOneOrMore) {
    DescribeSystem(6, 1, L"7601", 1, L"WinNT");
    const auto view = ParseVersions(RunReportPrinter(ReportPrinterPath(), L"version").text);
    ASSERT_TRUE(view);
    ASSERT_EQ(view->servicePack, 1u);
    ExpectVersionLines(WindowsSectionOf(ReportPrinterPath()), L"7.1 or more", *view);
}

TEST_F(RegistryWindowsVersion, WindowsServerTenReportsEightServer) {
    DescribeSystem(10, 0, L"17763", 0, L"ServerNT");
    const auto view = ParseVersions(RunReportPrinter(ReportPrinterPath(), L"version").text);
    ASSERT_TRUE(view);
    ASSERT_EQ(view->realVersion, L"10.0.17763");
    ASSERT_EQ(view->productType, static_cast<unsigned>(VER_NT_SERVER));
    ExpectVersionLines(WindowsSectionOf(ReportPrinterPath()), L"8", *view);
}

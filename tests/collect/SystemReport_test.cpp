// The whole report of the test machine, piece by piece, each value checked
// against a second source where the system offers one (the environment that
// Wine sets up, wmic, the registry, cmd's "vol").
#include "collect/SystemReport.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cwctype>
#include <set>

#include "collect/NetworkAdapters.h"
#include "collect/ReportTestSupport.h"
#include "support/Wine.h"
#include "w32/Application.h"
#include "w32/Scoped.h"
#include "w32/Text.h"

namespace {

// "MM/DD/YY HH:MM:SS", what %x %X give in the "C" locale.
std::wstring CLocaleStamp(const SYSTEMTIME& t) {
    wchar_t text[32];
    swprintf(text, 32, L"%02u/%02u/%02u %02u:%02u:%02u", t.wMonth, t.wDay, t.wYear % 100, t.wHour, t.wMinute,
             t.wSecond);
    return text;
}

ULONGLONG Seconds(const SYSTEMTIME& t) {
    FILETIME f{};
    ::SystemTimeToFileTime(&t, &f);
    return (static_cast<ULONGLONG>(f.dwHighDateTime) << 32 | f.dwLowDateTime) / 10000000;
}

SYSTEMTIME FromSeconds(ULONGLONG seconds) {
    const ULONGLONG ticks = seconds * 10000000;
    FILETIME f{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    SYSTEMTIME t{};
    ::FileTimeToSystemTime(&f, &t);
    return t;
}

// Every header that a report made between `before` and `after` may carry.
std::set<std::wstring> PossibleHeaders(const SYSTEMTIME& before, const SYSTEMTIME& after) {
    std::set<std::wstring> headers;
    for (ULONGLONG s = Seconds(before); s <= Seconds(after); ++s)
        headers.insert(L"Orvane Software system report on " + CLocaleStamp(FromSeconds(s)) + L"\n\n");
    return headers;
}

// The label that the version the system reports to this program deserves,
// worked out from GetVersionExW's numbers rather than VerifyVersionInfoW.
std::wstring ExpectedVersionLabel(const OSVERSIONINFOEXW& v) {
    const auto atLeast = [&v](DWORD major, DWORD minor, WORD sp) {
        if (v.dwMajorVersion != major) return v.dwMajorVersion > major;
        if (v.dwMinorVersion != minor) return v.dwMinorVersion > minor;
        return v.wServicePackMajor >= sp;
    };
    if (atLeast(10, 0, 0)) return L"10 or more";
    if (atLeast(6, 3, 0)) return L"8.1 or more";
    if (atLeast(6, 2, 0)) return L"8";
    if (atLeast(6, 1, 1)) return L"7.1 or more";
    if (atLeast(6, 1, 0)) return L"7";
    return L"Other";
}

OSVERSIONINFOEXW ReportedVersion() {
    OSVERSIONINFOEXW v{};
    v.dwOSVersionInfoSize = sizeof(v);
    ::GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&v));
    return v;
}

std::wstring RegistryString(HKEY root, const wchar_t* subKey, const wchar_t* name) {
    wchar_t value[1024] = {};
    DWORD size = sizeof(value);
    if (::RegGetValueW(root, subKey, name, RRF_RT_REG_SZ, nullptr, value, &size) != ERROR_SUCCESS) return {};
    return value;
}

// "Volume Serial Number is 4300-0000" from cmd, as the report writes it:
// lower-case hex without leading zeros.
std::wstring SerialNumberFromVol() {
    const ProcessOutcome vol = RunProcess(L"cmd /c vol C:");
    const std::wstring text = w32::AnsiToWide(vol.output);
    const std::size_t dash = text.find(L'-', text.find(L"Serial Number is "));
    if (dash == std::wstring::npos || dash < 4) return L"<no serial in vol's output>";
    std::wstring hex = text.substr(dash - 4, 4) + text.substr(dash + 1, 4);
    std::transform(hex.begin(), hex.end(), hex.begin(), ::towlower);
    hex.erase(0, std::min(hex.find_first_not_of(L'0'), hex.size() - 1));
    return hex;
}

std::wstring ArchitectureCode(const std::wstring& name) {
    if (name == L"AMD64") return std::to_wstring(PROCESSOR_ARCHITECTURE_AMD64);
    if (name == L"ARM64") return std::to_wstring(PROCESSOR_ARCHITECTURE_ARM64);
    return L"<architecture " + name + L">";
}

std::wstring FromHex(const std::wstring& hex) { return std::to_wstring(std::wcstoul(hex.c_str(), nullptr, 16)); }

bool SuiteIsInstalledHere() {
    w32::ScopedRegKey key;
    return ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Orvane Software", 0, KEY_READ, key.Put()) == ERROR_SUCCESS ||
           ::GetFileAttributesW((EnvironmentValue(L"ProgramFiles") + L"\\Orvane Software V9").c_str()) !=
               INVALID_FILE_ATTRIBUTES ||
           ::GetFileAttributesW((EnvironmentValue(L"ProgramData") + L"\\Orvane Software").c_str()) !=
               INVALID_FILE_ATTRIBUTES;
}

class WholeReport : public testing::Test {
protected:
    static void SetUpTestSuite() {
        report_ = new RecordingSink;
        ::GetLocalTime(&before_);
        written_ = WriteSystemReport(*report_);
        ::GetLocalTime(&after_);
    }
    static void TearDownTestSuite() {
        delete report_;
        report_ = nullptr;
    }
    void SetUp() override { ASSERT_TRUE(written_); }

    // The pieces that follow `heading`.
    static PieceCursor After(std::wstring_view heading) {
        PieceCursor cursor(report_->Pieces());
        cursor.SkipPast(heading);
        return cursor;
    }

    static inline RecordingSink* report_ = nullptr;
    static inline bool written_ = false;
    static inline SYSTEMTIME before_{};
    static inline SYSTEMTIME after_{};
};

}  // namespace

TEST_F(WholeReport, SectionsComeInOrderEachHeadingOnePiece) {
    std::vector<std::wstring> headings;
    for (const std::wstring& piece : report_->Pieces())
        if (piece.size() > 2 && piece.front() == L'\n' && piece.back() == L'\n' &&
            piece.find(L'\n', 1) == piece.size() - 1 && piece[piece.size() - 2] == L':')
            headings.push_back(piece);
    EXPECT_EQ(headings, (std::vector<std::wstring>{L"\nProgram:\n", L"\nHost:\n", L"\nWindows:\n", L"\nHardware:\n",
                                                   L"\nNetwork:\n", L"\nOrvane Software installation:\n"}));
}

TEST_F(WholeReport, HeaderIsTheLocalTimeInTheCurrentLocale) {
    // The test program never calls setlocale: the runtime is in the "C" locale.
    ASSERT_FALSE(report_->Pieces().empty());
    const std::wstring header = report_->Pieces().front();
    EXPECT_TRUE(PossibleHeaders(before_, after_).count(header)) << testing::PrintToString(header);
}

TEST_F(WholeReport, ProgramSection) {
    SKIP_UNLESS_ELEVATED();
    PieceCursor cursor(report_->Pieces());
    cursor.Next();
    EXPECT_EQ(cursor.Next(), L"\nProgram:\n");
    EXPECT_EQ(w32::CurrentApp()->Name(), L"unit_tests");
    EXPECT_EQ(cursor.Next(), L"unit_tests " + FixedProductVersion(TestProgramPath()) + L"\n");
    EXPECT_EQ(cursor.Next(), L"in " + TestProgramDirectory() + L"\n");
    // Wine runs programs with an elevated token.
    EXPECT_EQ(cursor.Next(), L"launched as administrator\n");
    EXPECT_EQ(cursor.Next(), L"\nHost:\n");
}

TEST_F(WholeReport, HostSection) {
    if (!WmicIsThere()) GTEST_SKIP() << kNoWmic;
    PieceCursor cursor = After(L"\nHost:\n");
    EXPECT_EQ(cursor.Next(), L"\tname: " + EnvironmentValue(L"COMPUTERNAME") + L" (" +
                                 WmicValue(L"computersystem", L"domain") + L"\\" +
                                 WmicValue(L"computersystem", L"name") + L")\n");
    EXPECT_EQ(cursor.Next(), L"\tuser: " + EnvironmentValue(L"USERNAME") + L"\n");
    EXPECT_EQ(cursor.Next(), L"\nWindows:\n");
}

TEST_F(WholeReport, WindowsSection) {
    if (!WmicIsThere()) GTEST_SKIP() << kNoWmic;
    const OSVERSIONINFOEXW reported = ReportedVersion();
    PieceCursor cursor = After(L"\nWindows:\n");
    EXPECT_EQ(cursor.Next(), L"\tversion reported: " + ExpectedVersionLabel(reported) + L" (" +
                                 (reported.wProductType == VER_NT_WORKSTATION ? L"Desktop" : L"Server") + L")\n");
    EXPECT_EQ(cursor.Next(), L"\treal version: " + WmicValue(L"os", L"version") + L"\n");
    const std::wstring productId =
        RegistryString(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion", L"ProductId");
    if (productId.empty() && !testsupport::RunningUnderWine()) GTEST_SKIP() << "this Windows keeps no ProductId there";
    ASSERT_FALSE(productId.empty()) << "Wine's prefix has a product id";
    EXPECT_EQ(cursor.Next(), L"\tid: " + productId + L"\n");
    EXPECT_EQ(cursor.Next(), L"\tsystem path: " + EnvironmentValue(L"SystemRoot") + L"\n");
    EXPECT_EQ(cursor.Next(), L"\tprogram file path: " + EnvironmentValue(L"ProgramFiles") + L"\n");
    EXPECT_EQ(cursor.Next(), L"\tapplication common shared path: " + EnvironmentValue(L"ProgramData") + L"\n");
    EXPECT_EQ(cursor.Next(), L"\nHardware:\n");
}

TEST_F(WholeReport, HardwareSection) {
    if (!WmicIsThere()) GTEST_SKIP() << kNoWmic;
    PieceCursor cursor = After(L"\nHardware:\n");
    EXPECT_EQ(cursor.Next(), L"\tsystem: 64 bits\n");
    EXPECT_EQ(cursor.Next(), L"\tbios: " + WmicValue(L"bios", L"name") + L"\n");
    EXPECT_EQ(cursor.Next(), L"\tboard: " + WmicValue(L"baseboard", L"manufacturer") + L"\n");
    const std::wstring processors = EnvironmentValue(L"NUMBER_OF_PROCESSORS");
    EXPECT_EQ(cursor.Next(), L"\tnumber of processors: " + processors + L"\n");
    EXPECT_EQ(cursor.Next(), L"\tprocessor : " + ArchitectureCode(EnvironmentValue(L"PROCESSOR_ARCHITECTURE")) + L" (" +
                                 EnvironmentValue(L"PROCESSOR_LEVEL") + L"." +
                                 FromHex(EnvironmentValue(L"PROCESSOR_REVISION")) + L")\n");
    const unsigned count = std::stoul(processors);
    const ULONGLONG mask = count >= 64 ? ~0ull : (1ull << count) - 1;
    EXPECT_EQ(cursor.Next(), L"\tactive processor mask: " + std::to_wstring(static_cast<DWORD>(mask)) + L"\n");
    EXPECT_EQ(cursor.Next(), L"\tpage size: 4096\n");
    // The highest address is above 4 GiB; only its low 32 bits show.
    SYSTEM_INFO info{};
    ::GetSystemInfo(&info);
    EXPECT_GT(reinterpret_cast<ULONG_PTR>(info.lpMaximumApplicationAddress), 0xFFFFFFFFull);
    EXPECT_EQ(cursor.Next(), L"\tapplication addresses: 0x10000-0xfffeffff\n");

    MEMORYSTATUSEX memory{};
    memory.dwLength = sizeof(memory);
    ASSERT_TRUE(::GlobalMemoryStatusEx(&memory));
    EXPECT_EQ(cursor.Next(), L"\tmemory: " + std::to_wstring(memory.ullTotalPhys >> 10) + L"K physical, " +
                                 std::to_wstring(memory.ullTotalVirtual >> 10) + L"K virtual, " +
                                 std::to_wstring(memory.ullTotalPageFile >> 10) + L"K paging\n");

    // Free space moves as other tests write files; the rest must match.
    ULARGE_INTEGER available{}, total{}, free{};
    ASSERT_TRUE(::GetDiskFreeSpaceExW(L"C:\\", &available, &total, &free));
    const std::wstring volume = cursor.Next();
    const std::wstring start = L"\tC volume: 0x" + SerialNumberFromVol() + L" 0x";
    EXPECT_EQ(volume.substr(0, start.size()), start) << testing::PrintToString(volume);
    const std::wstring totalText = L" NTFS total " + std::to_wstring(total.QuadPart / 1024) + L"K free ";
    EXPECT_NE(volume.find(totalText), std::wstring::npos) << testing::PrintToString(volume);
    EXPECT_EQ(volume.substr(volume.size() - 3), L"K)\n");
    EXPECT_NE(volume.find(L"K (user "), std::wstring::npos);
    EXPECT_EQ(cursor.Next(), L"\nNetwork:\n");
}

TEST_F(WholeReport, NetworkSectionIsOnePieceAfterItsHeading) {
    PieceCursor cursor = After(L"\nNetwork:\n");
    std::string listing;
    ListNetworkAdapters(listing);
    const std::wstring body = cursor.Next();
    EXPECT_EQ(body, w32::AnsiToWide(listing));
    EXPECT_EQ(body.rfind(L"Adapters enumeration:\n", 0), 0u) << testing::PrintToString(body.substr(0, 80));
    EXPECT_EQ(cursor.Next(), L"\nOrvane Software installation:\n");
}

TEST_F(WholeReport, InstallationSectionOnAMachineWithoutTheSuite) {
    if (SuiteIsInstalledHere()) GTEST_SKIP() << "the suite is installed on this machine";
    PieceCursor cursor = After(L"\nOrvane Software installation:\n");
    EXPECT_EQ(cursor.Next(), L"* Current directory (" + TestProgramDirectory() + L"):\n");
    const std::vector<ListedEntry> entries = ParseEntryLines(cursor.TakeEntries());
    const auto named = [&entries](const std::wstring& name) {
        return std::find_if(entries.begin(), entries.end(), [&](const ListedEntry& e) { return e.name == name; });
    };
    ASSERT_NE(named(L"."), entries.end());
    EXPECT_EQ(named(L".")->attributes & FILE_ATTRIBUTE_DIRECTORY, static_cast<unsigned>(FILE_ATTRIBUTE_DIRECTORY));
    ASSERT_NE(named(L".."), entries.end());
    ASSERT_NE(named(L"unit_tests.exe"), entries.end());
    EXPECT_EQ(named(L"unit_tests.exe")->version, FixedProductVersion(TestProgramPath()));

    EXPECT_EQ(cursor.Next(),
              L"* Standard installation directory (" + EnvironmentValue(L"ProgramFiles") + L"\\Orvane Software V9):\n");
    EXPECT_EQ(cursor.Next(), L"* Registry installation data:\n");
    EXPECT_EQ(cursor.Next(),
              L"* Shared parameters directory (" + EnvironmentValue(L"ProgramData") + L"\\Orvane Software):\n");
    EXPECT_EQ(cursor.Next(),
              L"* Shared Batch directory (" + EnvironmentValue(L"ProgramData") + L"\\Orvane Software\\Runner):\n");
    EXPECT_TRUE(cursor.AtEnd()) << "nothing follows the installation section: "
                                << testing::PrintToString(cursor.Peek());
}

// --- Answers no test machine gives: chosen through the report's sources -----

namespace {

std::wstring MemoryLineOfThisMachine() {
    MEMORYSTATUSEX memory{};
    memory.dwLength = sizeof(memory);
    ::GlobalMemoryStatusEx(&memory);
    return L"\tmemory: " + std::to_wstring(memory.ullTotalPhys >> 10) + L"K physical, " +
           std::to_wstring(memory.ullTotalVirtual >> 10) + L"K virtual, " +
           std::to_wstring(memory.ullTotalPageFile >> 10) + L"K paging\n";
}

// A date and time of `length` characters, as a locale with long formats
// might write them.
ReportSources WithDateAndTimeOf(std::size_t length) {
    ReportSources sources;
    sources.localDateAndTime = [length] { return std::optional<std::wstring>(std::wstring(length, L'x')); };
    return sources;
}

}  // namespace

TEST(ReportWithoutDriveC, MemoryLineIsFollowedDirectlyByTheNetworkHeading) {
    ReportSources sources;
    sources.systemVolume = [] { return std::optional<VolumeRecord>(); };
    RecordingSink report;
    ASSERT_TRUE(WriteSystemReport(report, sources));
    PieceCursor cursor(report.Pieces());
    ASSERT_TRUE(cursor.SkipPast(L"\tpage size: 4096\n"));
    EXPECT_EQ(cursor.Next(), L"\tapplication addresses: 0x10000-0xfffeffff\n");
    EXPECT_EQ(cursor.Next(), MemoryLineOfThisMachine());
    EXPECT_EQ(cursor.Next(), L"\nNetwork:\n");
    for (const std::wstring& piece : report.Pieces())
        EXPECT_NE(piece.rfind(L"\tC volume: ", 0), 0u) << testing::PrintToString(piece);
}

TEST(ReportHeaderAtCapacity, OneHundredAndTwentySevenCharactersOpenTheReport) {
    RecordingSink report;
    ASSERT_TRUE(WriteSystemReport(report, WithDateAndTimeOf(92)));
    const std::wstring header = L"Orvane Software system report on " + std::wstring(92, L'x') + L"\n\n";
    ASSERT_EQ(header.size(), 127u);
    EXPECT_EQ(report.Text().substr(0, 127 + 10), header + L"\nProgram:\n");
}

TEST(ReportHeaderAtCapacity, OneHundredAndTwentyEightCharactersLeaveTheHeaderEmpty) {
    RecordingSink report;
    ASSERT_TRUE(WriteSystemReport(report, WithDateAndTimeOf(93)));
    ASSERT_FALSE(report.Pieces().empty());
    EXPECT_EQ(report.Pieces().front(), L"");
    EXPECT_EQ(report.Text().substr(0, 10), L"\nProgram:\n");
}

TEST(ReportWithoutLocalTime, StopsBeforeAnything) {
    ReportSources sources;
    sources.localDateAndTime = [] { return std::optional<std::wstring>(); };
    RecordingSink report;
    EXPECT_FALSE(WriteSystemReport(report, sources));
    EXPECT_EQ(report.Pieces(), std::vector<std::wstring>{});
}

TEST(VolumeRecord, AMissingDriveHasNone) {
    const DWORD drives = ::GetLogicalDrives();
    wchar_t letter = L'Z';
    while (letter > L'C' && (drives & (1u << (letter - L'A')))) --letter;
    ASSERT_GT(letter, L'C') << "every drive letter is taken";
    const std::wstring root = std::wstring(1, letter) + L":\\";
    EXPECT_FALSE(ReadVolumeRecord(root.c_str()).has_value()) << testing::PrintToString(root);
}

TEST(VolumeRecord, DriveCHasTheSerialNumberThatVolShows) {
    const auto facts = ReadVolumeRecord(L"C:\\");
    ASSERT_TRUE(facts.has_value());
    wchar_t hex[16];
    swprintf(hex, 16, L"%lx", static_cast<unsigned long>(facts->serialNumber));
    EXPECT_EQ(hex, SerialNumberFromVol());
    EXPECT_EQ(facts->fileSystemName, L"NTFS");
}

TEST(ReportHeaderNow, IsMadeFromTheLocalTime) {
    SYSTEMTIME before{}, after{};
    ::GetLocalTime(&before);
    const auto header = MakeReportHeader();
    ::GetLocalTime(&after);
    ASSERT_TRUE(header.has_value());
    EXPECT_TRUE(PossibleHeaders(before, after).count(*header)) << testing::PrintToString(*header);
}

namespace {
// Switches the runtime's locale for the lifetime of the object.
class ScopedRuntimeLocale {
public:
    explicit ScopedRuntimeLocale(const char* name) : previous_(std::setlocale(LC_ALL, nullptr)) {
        switched_ = std::setlocale(LC_ALL, name) != nullptr;
    }
    ~ScopedRuntimeLocale() { std::setlocale(LC_ALL, previous_.c_str()); }
    bool Switched() const { return switched_; }

private:
    std::string previous_;
    bool switched_ = false;
};
}  // namespace

TEST(ReportHeaderNow, FollowsTheRuntimesCurrentLocale) {
    const ScopedRuntimeLocale french("French_France.1252");
    ASSERT_TRUE(french.Switched());
    SYSTEMTIME before{}, after{};
    ::GetLocalTime(&before);
    const auto header = MakeReportHeader();
    ::GetLocalTime(&after);
    ASSERT_TRUE(header.has_value());
    // A French date puts the day first and writes the year in full.
    std::set<std::wstring> possible;
    for (ULONGLONG s = Seconds(before); s <= Seconds(after); ++s) {
        const SYSTEMTIME t = FromSeconds(s);
        wchar_t stamp[32];
        swprintf(stamp, 32, L"%02u/%02u/%04u %02u:%02u:%02u", t.wDay, t.wMonth, t.wYear, t.wHour, t.wMinute, t.wSecond);
        possible.insert(L"Orvane Software system report on " + std::wstring(stamp) + L"\n\n");
    }
    EXPECT_TRUE(possible.count(*header)) << testing::PrintToString(*header);
}

#include "format/ReportText.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace {

// 16 November 2026, 02:31:43: the "C" locale writes 11/16/26 02:31:43.
std::tm SampleTime() {
    std::tm time{};
    time.tm_year = 2026 - 1900;
    time.tm_mon = 10;
    time.tm_mday = 16;
    time.tm_hour = 2;
    time.tm_min = 31;
    time.tm_sec = 43;
    time.tm_wday = 1;
    time.tm_yday = 319;
    return time;
}

constexpr wchar_t kSampleHeader[] = L"Orvane Software system report on 11/16/26 02:31:43\n\n";
constexpr std::size_t kSampleHeaderLength = sizeof(kSampleHeader) / sizeof(kSampleHeader[0]) - 1;

using Threshold = std::tuple<unsigned, unsigned, unsigned>;

// A system that answers the version tests like one of that version would,
// and remembers what it was asked.
struct FakeSystem {
    Threshold version;
    std::vector<Threshold> asked;

    WindowsVersionTest Test() {
        return [this](unsigned major, unsigned minor, unsigned sp) {
            asked.emplace_back(major, minor, sp);
            return version >= Threshold{major, minor, sp};
        };
    }
};

std::wstring LabelFor(Threshold version) {
    FakeSystem system{version, {}};
    return std::wstring(ChooseWindowsVersionLabel(system.Test()));
}

}  // namespace

// --- Header

TEST(ReportHeader, CLocaleGivesDateAndTimeThenAnEmptyLine) {
    EXPECT_EQ(FormatReportHeader(SampleTime()), kSampleHeader);
}

TEST(ReportHeader, TheCapacityCountsTheTerminator) {
    EXPECT_EQ(kSampleHeaderLength, 52u);
    EXPECT_EQ(FormatReportHeader(SampleTime(), kSampleHeaderLength + 1), kSampleHeader);
    EXPECT_EQ(FormatReportHeader(SampleTime(), kSampleHeaderLength), L"");
}

TEST(ReportHeader, TheCapacityIs128Characters) { EXPECT_EQ(kReportHeaderCapacity, 128u); }

TEST(ReportHeader, IsTheLeadTheDateAndTimeAndAnEmptyLine) {
    EXPECT_EQ(FormatLocalDateAndTime(SampleTime()), L"11/16/26 02:31:43");
    EXPECT_EQ(ComposeReportHeader(L"11/16/26 02:31:43"), kSampleHeader);
}

// A locale with long date and time formats, at the header's real capacity:
// the lead is 33 characters and the empty line 2, so a date and time of 92
// characters make a header of 127, the most its 128-character buffer holds.
TEST(ReportHeader, OneHundredAndTwentySevenCharactersAreKept) {
    const std::wstring dateAndTime = L"Montag, 16. November 2026 " + std::wstring(57, L'x') + L" 02:31:43";
    ASSERT_EQ(dateAndTime.size(), 92u);
    const std::wstring header = ComposeReportHeader(dateAndTime);
    EXPECT_EQ(header, L"Orvane Software system report on Montag, 16. November 2026 " + std::wstring(57, L'x') +
                          L" 02:31:43\n\n");
    EXPECT_EQ(header.size(), 127u);
}

TEST(ReportHeader, OneHundredAndTwentyEightCharactersGiveTheEmptyHeader) {
    const std::wstring dateAndTime = L"Montag, 16. November 2026 " + std::wstring(58, L'x') + L" 02:31:43";
    ASSERT_EQ(dateAndTime.size(), 93u);
    EXPECT_EQ(ComposeReportHeader(dateAndTime), L"");
    EXPECT_EQ(ComposeReportHeader(dateAndTime + L"and much more"), L"");
}

// --- Headings

TEST(ReportHeadings, AreAnEmptyLineAWordAndAColon) {
    EXPECT_EQ(kProgramHeading, L"\nProgram:\n");
    EXPECT_EQ(kHostHeading, L"\nHost:\n");
    EXPECT_EQ(kWindowsHeading, L"\nWindows:\n");
    EXPECT_EQ(kHardwareHeading, L"\nHardware:\n");
    EXPECT_EQ(kNetworkHeading, L"\nNetwork:\n");
}

// --- Program

TEST(ProgramSection, NameBlankVersion) {
    EXPECT_EQ(FormatProgramLine(L"OrvaneDiagnostics", L"9.3.1.0"), L"OrvaneDiagnostics 9.3.1.0\n");
}

TEST(ProgramSection, AMissingVersionKeepsTheBlank) {
    EXPECT_EQ(FormatProgramLine(L"OrvaneDiagnostics", L""), L"OrvaneDiagnostics \n");
}

TEST(ProgramSection, DirectoryIsCutAtTheLastBackslash) {
    EXPECT_EQ(ProgramDirectoryOf(L"C:\\Program Files\\Orvane Software V9\\OrvaneDiagnostics.exe"),
              L"C:\\Program Files\\Orvane Software V9");
    EXPECT_EQ(ProgramDirectoryOf(L"C:\\a/b\\c/d.exe"), L"C:\\a/b");
}

TEST(ProgramSection, WithoutBackslashTheLastSlashCuts) {
    EXPECT_EQ(ProgramDirectoryOf(L"C:/tools/orvane/OrvaneDiagnostics.exe"), L"C:/tools/orvane");
}

TEST(ProgramSection, WithNeitherSeparatorThePathStaysWhole) {
    EXPECT_EQ(ProgramDirectoryOf(L"OrvaneDiagnostics.exe"), L"OrvaneDiagnostics.exe");
    EXPECT_EQ(ProgramDirectoryOf(L""), L"");
}

TEST(ProgramSection, ASeparatorInFirstPlaceLeavesAnEmptyDirectory) {
    EXPECT_EQ(ProgramDirectoryOf(L"\\x.exe"), L"");
    EXPECT_EQ(ProgramDirectoryOf(L"/x.exe"), L"");
}

TEST(ProgramSection, PathsLongerThanMaxPathAreCutWhole) {
    const std::wstring directory = L"\\\\?\\C:\\" + std::wstring(300, L'd');
    EXPECT_EQ(ProgramDirectoryOf(directory + L"\\OrvaneDiagnostics.exe"), directory);
}

TEST(ProgramSection, DirectoryLine) {
    EXPECT_EQ(FormatProgramDirectoryLine(L"C:\\Program Files\\Orvane Software V9"),
              L"in C:\\Program Files\\Orvane Software V9\n");
    EXPECT_EQ(FormatProgramDirectoryLine(L"OrvaneDiagnostics.exe"), L"in OrvaneDiagnostics.exe\n");
}

TEST(ProgramSection, AdministratorLine) { EXPECT_EQ(kAdministratorLine, L"launched as administrator\n"); }

// --- Host

TEST(HostSection, NameLineJoinsNetbiosDomainAndWmiName) {
    EXPECT_EQ(FormatHostNameLine(L"PC1", L"WORKGROUP", L"PC1"), L"\tname: PC1 (WORKGROUP\\PC1)\n");
}

TEST(HostSection, MissingWmiValuesLeaveTheJoiners) {
    EXPECT_EQ(FormatHostNameLine(L"PC1", L"", L""), L"\tname: PC1 (\\)\n");
    EXPECT_EQ(FormatHostNameLine(L"", L"", L""), L"\tname:  (\\)\n");
}

TEST(HostSection, UserLine) {
    EXPECT_EQ(FormatUserLine(L"marie"), L"\tuser: marie\n");
    EXPECT_EQ(FormatUserLine(L""), L"\tuser: \n");
}

// --- Windows

TEST(WindowsVersionLabel, EachVersionGetsItsLabel) {
    EXPECT_EQ(LabelFor({10, 0, 0}), L"10 or more");
    EXPECT_EQ(LabelFor({6, 3, 0}), L"8.1 or more");
    EXPECT_EQ(LabelFor({6, 2, 0}), L"8");
    EXPECT_EQ(LabelFor({6, 1, 1}), L"7.1 or more");
    EXPECT_EQ(LabelFor({6, 1, 2}), L"7.1 or more");
    EXPECT_EQ(LabelFor({6, 1, 0}), L"7");
    EXPECT_EQ(LabelFor({6, 0, 2}), L"Other");
    EXPECT_EQ(LabelFor({5, 1, 3}), L"Other");
}

TEST(WindowsVersionLabel, TheTestsAreAskedInOrderUntilOneHolds) {
    FakeSystem eight{{6, 2, 0}, {}};
    EXPECT_EQ(ChooseWindowsVersionLabel(eight.Test()), L"8");
    EXPECT_EQ(eight.asked, (std::vector<Threshold>{{10, 0, 0}, {6, 3, 0}, {6, 2, 0}}));

    FakeSystem vista{{6, 0, 2}, {}};
    EXPECT_EQ(ChooseWindowsVersionLabel(vista.Test()), L"Other");
    EXPECT_EQ(vista.asked, (std::vector<Threshold>{{10, 0, 0}, {6, 3, 0}, {6, 2, 0}, {6, 1, 1}, {6, 1, 0}}));

    FakeSystem ten{{10, 0, 0}, {}};
    ChooseWindowsVersionLabel(ten.Test());
    EXPECT_EQ(ten.asked, (std::vector<Threshold>{{10, 0, 0}}));
}

TEST(WindowsVersionLabel, TheFirstAnswerWinsEvenWhenLaterOnesDiffer) {
    // Only the 6.2 test holds: its label is taken, 6.1 is never asked.
    int calls = 0;
    const auto onlyEight = [&calls](unsigned major, unsigned minor, unsigned) {
        ++calls;
        return major == 6 && minor == 2;
    };
    EXPECT_EQ(ChooseWindowsVersionLabel(onlyEight), L"8");
    EXPECT_EQ(calls, 3);
}

TEST(WindowsVersionLabel, Edition) {
    EXPECT_EQ(WindowsEditionLabel(true), L"Desktop");
    EXPECT_EQ(WindowsEditionLabel(false), L"Server");
}

TEST(WindowsSection, VersionReportedLine) {
    EXPECT_EQ(FormatVersionReportedLine(L"8", L"Desktop"), L"\tversion reported: 8 (Desktop)\n");
    EXPECT_EQ(FormatVersionReportedLine(L"7.1 or more", L"Server"), L"\tversion reported: 7.1 or more (Server)\n");
}

TEST(WindowsSection, EntryLines) {
    EXPECT_EQ(FormatRealVersionLine(L"10.0.19045"), L"\treal version: 10.0.19045\n");
    EXPECT_EQ(FormatRealVersionLine(L""), L"\treal version: \n");
    EXPECT_EQ(FormatSystemPathLine(L"C:\\windows"), L"\tsystem path: C:\\windows\n");
    EXPECT_EQ(FormatProgramFilesLine(L"C:\\Program Files"), L"\tprogram file path: C:\\Program Files\n");
    EXPECT_EQ(FormatCommonAppDataLine(L"C:\\ProgramData"), L"\tapplication common shared path: C:\\ProgramData\n");
    EXPECT_EQ(FormatCommonAppDataLine(L""), L"\tapplication common shared path: \n");
}

// --- Hardware

TEST(HardwareSection, FixedAndWmiLines) {
    EXPECT_EQ(kSystemBitsLine, L"\tsystem: 64 bits\n");
    EXPECT_EQ(FormatBiosLine(L"Default System BIOS"), L"\tbios: Default System BIOS\n");
    EXPECT_EQ(FormatBiosLine(L""), L"\tbios: \n");
    EXPECT_EQ(FormatBoardLine(L"The Wine Project"), L"\tboard: The Wine Project\n");
    EXPECT_EQ(FormatBoardLine(L""), L"\tboard: \n");
}

TEST(HardwareSection, ProcessorCountAndPageSize) {
    EXPECT_EQ(FormatProcessorCountLine(8), L"\tnumber of processors: 8\n");
    EXPECT_EQ(FormatProcessorCountLine(4294967295u), L"\tnumber of processors: 4294967295\n");
    EXPECT_EQ(FormatPageSizeLine(4096), L"\tpage size: 4096\n");
}

TEST(HardwareSection, ProcessorLineKeepsItsBlankAndTheWholeRevision) {
    EXPECT_EQ(FormatProcessorLine(9, 6, 0x9E0A), L"\tprocessor : 9 (6.40458)\n");
    EXPECT_EQ(FormatProcessorLine(12, 8, 0), L"\tprocessor : 12 (8.0)\n");
    EXPECT_EQ(FormatProcessorLine(65535, 65535, 65535), L"\tprocessor : 65535 (65535.65535)\n");
}

TEST(HardwareSection, ProcessorMaskShowsItsLow32BitsOnly) {
    EXPECT_EQ(FormatActiveProcessorMaskLine(0xFF), L"\tactive processor mask: 255\n");
    EXPECT_EQ(FormatActiveProcessorMaskLine(0xFFFFFFFFull), L"\tactive processor mask: 4294967295\n");
    EXPECT_EQ(FormatActiveProcessorMaskLine(0xFFFFFFFFFFFFFFFFull), L"\tactive processor mask: 4294967295\n");
    EXPECT_EQ(FormatActiveProcessorMaskLine(0x100000001ull), L"\tactive processor mask: 1\n");
    EXPECT_EQ(FormatActiveProcessorMaskLine(0x100000000ull), L"\tactive processor mask: 0\n");
}

TEST(HardwareSection, ApplicationAddressesShowTheirLow32Bits) {
    EXPECT_EQ(FormatApplicationAddressesLine(0x10000, 0x7FFFFFFEFFFFull),
              L"\tapplication addresses: 0x10000-0xfffeffff\n");
    EXPECT_EQ(FormatApplicationAddressesLine(0, 0x100000000ull), L"\tapplication addresses: 0x0-0x0\n");
    EXPECT_EQ(FormatApplicationAddressesLine(0xABCDEF, 0x12345678), L"\tapplication addresses: 0xabcdef-0x12345678\n");
}

TEST(HardwareSection, MemoryIsShiftedTo1024ByteUnits) {
    EXPECT_EQ(FormatMemoryLine(17179869184ull, 140737488224256ull, 19327352832ull),
              L"\tmemory: 16777216K physical, 137438953344K virtual, 18874368K paging\n");
    EXPECT_EQ(FormatMemoryLine(1023, 1024, 2047), L"\tmemory: 0K physical, 1K virtual, 1K paging\n");
    EXPECT_EQ(FormatMemoryLine(0xFFFFFFFFFFFFFFFFull, 0, 0),
              L"\tmemory: 18014398509481983K physical, 0K virtual, 0K paging\n");
}

TEST(HardwareSection, VolumeLine) {
    const VolumeRecord volume{0x1234ABCD, 0x03E706FF, L"NTFS", 511101108224ull, 123456789012ull, 123456788990ull};
    EXPECT_EQ(FormatVolumeLine(volume),
              L"\tC volume: 0x1234abcd 0x3e706ff NTFS total 499122176K free 120563270K (user 120563270K)\n");
}

TEST(HardwareSection, VolumeSizesAreDividedAsSignedNumbers) {
    // 2^63 + 1024 bytes reads as a negative count; division rounds toward 0.
    VolumeRecord volume{0, 0, L"", 0x8000000000000400ull, 0xFFFFFFFFFFFFFFFFull, 0xFFFFFFFFFFFFFC00ull};
    EXPECT_EQ(FormatVolumeLine(volume), L"\tC volume: 0x0 0x0  total -9007199254740991K free 0K (user -1K)\n");
}

TEST(HardwareSection, VolumeSizesRoundTowardZero) {
    const VolumeRecord volume{1, 2, L"FAT32", 2047, 1023, 1024};
    EXPECT_EQ(FormatVolumeLine(volume), L"\tC volume: 0x1 0x2 FAT32 total 1K free 0K (user 1K)\n");
}

// Each section of the report from a plain record: the pieces in order, each
// text exact. Runs natively (under the sanitizers) and under Wine.
#include "format/SystemSections.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {
using Pieces = std::vector<std::wstring>;

template <class Record, class Render>
Pieces Rendered(const Record& record, Render render) {
    RecordingSink sink;
    render(record, sink);
    return sink.Pieces();
}

WindowsRecord SampleWindows() {
    WindowsRecord facts;
    facts.versionLabel = L"8";
    facts.editionLabel = L"Desktop";
    facts.realVersion = L"10.0.19045";
    facts.systemPath = L"C:\\windows";
    facts.programFiles = L"C:\\Program Files";
    facts.commonAppData = L"C:\\ProgramData";
    return facts;
}

HardwareRecord SampleHardware() {
    HardwareRecord facts;
    facts.biosName = L"Default System BIOS";
    facts.boardManufacturer = L"Orvane Boards";
    facts.processorCount = 4;
    facts.processorArchitecture = 9;
    facts.processorLevel = 6;
    facts.processorRevision = 0x9e0a;
    facts.activeProcessorMask = 0x10000000fULL;
    facts.pageSize = 4096;
    facts.lowestApplicationAddress = 0x10000;
    facts.highestApplicationAddress = 0x7ffffffeffffULL;
    facts.totalPhysical = 8ULL << 30;
    facts.totalVirtual = 128ULL << 40;
    facts.totalPaging = 12ULL << 30;
    return facts;
}
}  // namespace

TEST(ProgramSectionRecord, RendersHeadingNameAndDirectory) {
    const ProgramRecord facts{L"OrvaneDiagnostics", L"9.3.1.0", L"C:\\Program Files\\Orvane Software V9", false};
    EXPECT_EQ(Rendered(facts, RenderProgramSection),
              (Pieces{L"\nProgram:\n", L"OrvaneDiagnostics 9.3.1.0\n", L"in C:\\Program Files\\Orvane Software V9\n"}));
}

TEST(ProgramSectionRecord, ElevatedAddsTheAdministratorLineLast) {
    const ProgramRecord facts{L"OrvaneDiagnostics", L"", L"C:\\tools", true};
    EXPECT_EQ(Rendered(facts, RenderProgramSection),
              (Pieces{L"\nProgram:\n", L"OrvaneDiagnostics \n", L"in C:\\tools\n", L"launched as administrator\n"}));
}

TEST(ProgramSectionRecord, EmptyRecordKeepsEveryJoiner) {
    EXPECT_EQ(Rendered(ProgramRecord{}, RenderProgramSection), (Pieces{L"\nProgram:\n", L" \n", L"in \n"}));
}

TEST(HostSectionRecord, RendersNameThenUser) {
    const HostRecord facts{L"PC1", L"PC1", L"WORKGROUP", L"alice"};
    EXPECT_EQ(Rendered(facts, RenderHostSection),
              (Pieces{L"\nHost:\n", L"\tname: PC1 (WORKGROUP\\PC1)\n", L"\tuser: alice\n"}));
}

TEST(HostSectionRecord, MissingValuesLeaveTheLabelsAndJoiners) {
    EXPECT_EQ(Rendered(HostRecord{}, RenderHostSection), (Pieces{L"\nHost:\n", L"\tname:  (\\)\n", L"\tuser: \n"}));
}

TEST(WindowsSectionRecord, WithoutProductIdTheSystemPathFollowsTheRealVersion) {
    EXPECT_EQ(Rendered(SampleWindows(), RenderWindowsSection),
              (Pieces{L"\nWindows:\n", L"\tversion reported: 8 (Desktop)\n", L"\treal version: 10.0.19045\n",
                      L"\tsystem path: C:\\windows\n", L"\tprogram file path: C:\\Program Files\n",
                      L"\tapplication common shared path: C:\\ProgramData\n"}));
}

TEST(WindowsSectionRecord, ProductIdComesBetweenRealVersionAndSystemPath) {
    WindowsRecord facts = SampleWindows();
    facts.versionLabel = L"10 or more";
    facts.editionLabel = L"Server";
    // "00330-80000" as UTF-16 little-endian with its terminator.
    facts.productId = std::vector<std::uint8_t>{'0', 0, '0', 0, '3', 0, '3', 0, '0', 0, '-', 0,
                                                '8', 0, '0', 0, '0', 0, '0', 0, '0', 0, 0,   0};
    EXPECT_EQ(Rendered(facts, RenderWindowsSection),
              (Pieces{L"\nWindows:\n", L"\tversion reported: 10 or more (Server)\n", L"\treal version: 10.0.19045\n",
                      L"\tid: 00330-80000\n", L"\tsystem path: C:\\windows\n",
                      L"\tprogram file path: C:\\Program Files\n",
                      L"\tapplication common shared path: C:\\ProgramData\n"}));
}

TEST(WindowsSectionRecord, EmptyProductIdStillGivesItsLine) {
    WindowsRecord facts = SampleWindows();
    facts.productId = std::vector<std::uint8_t>{};
    const Pieces pieces = Rendered(facts, RenderWindowsSection);
    ASSERT_EQ(pieces.size(), 7u);
    EXPECT_EQ(pieces[3], L"\tid: \n");
}

TEST(HardwareSectionRecord, RendersEveryLineInOrderWithTheVolumeLast) {
    HardwareRecord facts = SampleHardware();
    facts.volumeC = VolumeRecord{0x1234abcd, 0x3e706ff, L"NTFS", 256ULL << 30, 100ULL << 30, 99ULL << 30};
    EXPECT_EQ(Rendered(facts, RenderHardwareSection),
              (Pieces{L"\nHardware:\n", L"\tsystem: 64 bits\n", L"\tbios: Default System BIOS\n",
                      L"\tboard: Orvane Boards\n", L"\tnumber of processors: 4\n", L"\tprocessor : 9 (6.40458)\n",
                      L"\tactive processor mask: 15\n", L"\tpage size: 4096\n",
                      L"\tapplication addresses: 0x10000-0xfffeffff\n",
                      L"\tmemory: 8388608K physical, 137438953472K virtual, 12582912K paging\n",
                      L"\tC volume: 0x1234abcd 0x3e706ff NTFS total 268435456K free 104857600K (user 103809024K)\n"}));
}

TEST(HardwareSectionRecord, WithoutVolumeTheMemoryLineIsLast) {
    const Pieces pieces = Rendered(SampleHardware(), RenderHardwareSection);
    ASSERT_EQ(pieces.size(), 10u);
    EXPECT_EQ(pieces.back(), L"\tmemory: 8388608K physical, 137438953472K virtual, 12582912K paging\n");
}

TEST(HardwareSectionRecord, EmptyRecordPrintsZerosAndEmptyWmiValues) {
    EXPECT_EQ(Rendered(HardwareRecord{}, RenderHardwareSection),
              (Pieces{L"\nHardware:\n", L"\tsystem: 64 bits\n", L"\tbios: \n", L"\tboard: \n",
                      L"\tnumber of processors: 0\n", L"\tprocessor : 0 (0.0)\n", L"\tactive processor mask: 0\n",
                      L"\tpage size: 0\n", L"\tapplication addresses: 0x0-0x0\n",
                      L"\tmemory: 0K physical, 0K virtual, 0K paging\n"}));
}

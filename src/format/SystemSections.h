// The report's own sections as plain records and pure renderers. A
// collector (SystemReport.cpp, the only code that asks the system) fills a
// record; its renderer appends the section exactly as the report shows it,
// heading first, one piece per line. A parser of saved reports can read the
// same lines back into the same records.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "format/ReportSink.h"
#include "format/ReportText.h"

// --- Program ------------------------------------------------------------------

struct ProgramRecord {
    std::wstring applicationName;  // the application's registered name
    std::wstring productVersion;   // of the program's own file; empty when it has none
    std::wstring directory;        // ProgramDirectoryOf the module path
    bool elevated = false;         // the process token is elevated
};

// "\nProgram:\n", "<name> <version>\n", "in <directory>\n", and
// "launched as administrator\n" when elevated.
void RenderProgramSection(const ProgramRecord& facts, ReportSink& sink);

// --- Host -----------------------------------------------------------------------

struct HostRecord {
    std::wstring netbiosName;  // GetComputerNameW; empty when it fails
    std::wstring wmiName;      // Win32_ComputerSystem.Name
    std::wstring wmiDomain;    // Win32_ComputerSystem.Domain
    std::wstring userName;     // GetUserNameW; empty when it fails
};

// "\nHost:\n", "\tname: <netbios> (<domain>\<name>)\n", "\tuser: <user>\n".
void RenderHostSection(const HostRecord& facts, ReportSink& sink);

// --- Windows --------------------------------------------------------------------

struct WindowsRecord {
    std::wstring versionLabel;  // ChooseWindowsVersionLabel
    std::wstring editionLabel;  // WindowsEditionLabel
    std::wstring realVersion;   // Win32_OperatingSystem.Version
    // The raw data of the "ProductId" value; nothing when the key or the
    // value cannot be read.
    std::optional<std::vector<std::uint8_t>> productId;
    std::wstring systemPath;     // the Windows directory
    std::wstring programFiles;   // CSIDL_PROGRAM_FILES
    std::wstring commonAppData;  // CSIDL_COMMON_APPDATA
};

// "\nWindows:\n", "\tversion reported: ...", "\treal version: ...",
// "\tid: ..." when there is a product id, "\tsystem path: ...",
// "\tprogram file path: ...", "\tapplication common shared path: ...".
void RenderWindowsSection(const WindowsRecord& facts, ReportSink& sink);

// --- Hardware -------------------------------------------------------------------

struct HardwareRecord {
    std::wstring biosName;           // Win32_BIOS.Name
    std::wstring boardManufacturer;  // Win32_BaseBoard.Manufacturer
    std::uint32_t processorCount = 0;
    std::uint16_t processorArchitecture = 0;
    std::uint16_t processorLevel = 0;
    std::uint16_t processorRevision = 0;
    std::uint64_t activeProcessorMask = 0;
    std::uint32_t pageSize = 0;
    std::uint64_t lowestApplicationAddress = 0;
    std::uint64_t highestApplicationAddress = 0;
    std::uint64_t totalPhysical = 0;
    std::uint64_t totalVirtual = 0;
    std::uint64_t totalPaging = 0;
    std::optional<VolumeRecord> volumeC;  // nothing when C: cannot be read
};

// "\nHardware:\n", "\tsystem: 64 bits\n", the bios, board, processor count,
// processor, active processor mask, page size, application addresses and
// memory lines, and the "\tC volume: " line when there is a volume.
void RenderHardwareSection(const HardwareRecord& facts, ReportSink& sink);

// The lines of the system report's own sections (header, Program, Host,
// Windows, Hardware), made from plain values. Nothing here asks the system:
// SystemReport.cpp collects the values and appends what these functions make.
//
// Some labels are 8-bit text in the report's definition; they are plain ASCII,
// which every ANSI code page maps to the same characters, so they are written
// here as wide literals directly.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <string>
#include <string_view>

#include "format/LineForms.h"

// --- Header -----------------------------------------------------------------

// The header is formatted into a buffer of this many characters, terminator
// included; a longer header is left out.
inline constexpr std::size_t kReportHeaderCapacity = 128;

// "<%x> <%X>": the date and the time in the runtime's current locale.
std::wstring FormatLocalDateAndTime(const std::tm& localTime);

// "Orvane Software system report on <date and time>\n\n", or empty when it
// needs more than `capacity` characters with its terminator.
std::wstring ComposeReportHeader(std::wstring_view dateAndTime, std::size_t capacity = kReportHeaderCapacity);

// The header of `localTime`: ComposeReportHeader of FormatLocalDateAndTime.
std::wstring FormatReportHeader(const std::tm& localTime, std::size_t capacity = kReportHeaderCapacity);

// --- Headings (each appended as one piece) -----------------------------------

inline constexpr auto kProgramHeadingPiece = lineform::HeadingPiece<wchar_t>(lineform::kProgramHeading);
inline constexpr auto kHostHeadingPiece = lineform::HeadingPiece<wchar_t>(lineform::kHostHeading);
inline constexpr auto kWindowsHeadingPiece = lineform::HeadingPiece<wchar_t>(lineform::kWindowsHeading);
inline constexpr auto kHardwareHeadingPiece = lineform::HeadingPiece<wchar_t>(lineform::kHardwareHeading);
inline constexpr auto kNetworkHeadingPiece = lineform::HeadingPiece<wchar_t>(lineform::kNetworkHeading);
inline constexpr std::wstring_view kProgramHeading = kProgramHeadingPiece.View();    // "\nProgram:\n"
inline constexpr std::wstring_view kHostHeading = kHostHeadingPiece.View();          // "\nHost:\n"
inline constexpr std::wstring_view kWindowsHeading = kWindowsHeadingPiece.View();    // "\nWindows:\n"
inline constexpr std::wstring_view kHardwareHeading = kHardwareHeadingPiece.View();  // "\nHardware:\n"
inline constexpr std::wstring_view kNetworkHeading = kNetworkHeadingPiece.View();    // "\nNetwork:\n"

// --- Program ----------------------------------------------------------------

// "<name> <version>\n"; the blank stays when the version is empty.
std::wstring FormatProgramLine(std::wstring_view applicationName, std::wstring_view productVersion);

// The directory part of a module path: cut at the last "\", else at the last
// "/", else the whole path. No trailing separator remains.
std::wstring ProgramDirectoryOf(std::wstring_view modulePath);

// "in <directory>\n"
std::wstring FormatProgramDirectoryLine(std::wstring_view directory);

inline constexpr auto kAdministratorLinePiece = lineform::LinePiece<wchar_t>(lineform::kAdministratorLine);
inline constexpr std::wstring_view kAdministratorLine = kAdministratorLinePiece.View();

// --- Host -------------------------------------------------------------------

// "\tname: <netbios> (<domain>\<name>)\n"
std::wstring FormatHostNameLine(std::wstring_view netbiosName, std::wstring_view wmiDomain, std::wstring_view wmiName);
// "\tuser: <user>\n"
std::wstring FormatUserLine(std::wstring_view userName);

// --- Windows ----------------------------------------------------------------

// Answers whether the system is at least major.minor with at least that
// service pack (the system's own hierarchical comparison).
using WindowsVersionTest = std::function<bool(unsigned major, unsigned minor, unsigned servicePackMajor)>;

// Asks `isAtLeast` about 10.0, 6.3, 6.2, 6.1 SP1 and 6.1, in that order, and
// names the first that holds: "10 or more", "8.1 or more", "8",
// "7.1 or more", "7"; "Other" when none does. Later tests are not asked.
std::wstring_view ChooseWindowsVersionLabel(const WindowsVersionTest& isAtLeast);

// "Desktop" for a workstation, "Server" otherwise.
std::wstring_view WindowsEditionLabel(bool isWorkstation);

// "\tversion reported: <version> (<edition>)\n"
std::wstring FormatVersionReportedLine(std::wstring_view versionLabel, std::wstring_view editionLabel);
// "\treal version: <version>\n"
std::wstring FormatRealVersionLine(std::wstring_view version);
// "\tsystem path: <path>\n"
std::wstring FormatSystemPathLine(std::wstring_view path);
// "\tprogram file path: <path>\n"
std::wstring FormatProgramFilesLine(std::wstring_view path);
// "\tapplication common shared path: <path>\n"
std::wstring FormatCommonAppDataLine(std::wstring_view path);

// --- Hardware ---------------------------------------------------------------

inline constexpr auto kSystemBitsLinePiece =
    lineform::Joined<wchar_t>({lineform::kSystemBits.Narrow(), "64", lineform::kBitsUnit.Narrow(), "\n"});
inline constexpr std::wstring_view kSystemBitsLine = kSystemBitsLinePiece.View();  // "\tsystem: 64 bits\n"

// "\tbios: <name>\n"
std::wstring FormatBiosLine(std::wstring_view name);
// "\tboard: <manufacturer>\n"
std::wstring FormatBoardLine(std::wstring_view manufacturer);
// "\tnumber of processors: <count>\n"
std::wstring FormatProcessorCountLine(std::uint32_t count);
// "\tprocessor : <architecture> (<level>.<revision>)\n", the revision whole.
std::wstring FormatProcessorLine(std::uint16_t architecture, std::uint16_t level, std::uint16_t revision);
// "\tactive processor mask: <mask>\n" with the low 32 bits of the mask only.
std::wstring FormatActiveProcessorMaskLine(std::uint64_t mask);
// "\tpage size: <bytes>\n"
std::wstring FormatPageSizeLine(std::uint32_t pageSize);
// "\tapplication addresses: 0x<lowest>-0x<highest>\n", lower-case hex of the
// low 32 bits of each address.
std::wstring FormatApplicationAddressesLine(std::uint64_t lowest, std::uint64_t highest);
// "\tmemory: <n>K physical, <n>K virtual, <n>K paging\n", each byte count
// shifted right by 10.
std::wstring FormatMemoryLine(std::uint64_t totalPhysical, std::uint64_t totalVirtual, std::uint64_t totalPaging);

struct VolumeRecord {
    std::uint32_t serialNumber = 0;
    std::uint32_t fileSystemFlags = 0;
    std::wstring fileSystemName;
    std::uint64_t totalBytes = 0;
    std::uint64_t totalFreeBytes = 0;
    std::uint64_t bytesAvailableToCaller = 0;
};

// "\tC volume: 0x<serial> 0x<flags> <fs> total <n>K free <n>K (user <n>K)\n";
// the byte counts are divided by 1024 as signed 64-bit numbers.
std::wstring FormatVolumeLine(const VolumeRecord& volume);

#include "format/ReportText.h"

#include <array>
#include <cwchar>

#include "format/NumberText.h"

namespace {

// Room for any date and time the runtime can write; the header's real limit
// is checked afterwards. Asking wcsftime to fill a buffer that is too small
// is an invalid parameter for some runtimes, which would end the program.
constexpr std::size_t kHeaderScratchSize = 1024;

std::wstring Low32Hex(std::uint64_t value) { return numtext::Hex<wchar_t>(static_cast<std::uint32_t>(value), 1, false); }

std::wstring Kilobytes(std::uint64_t bytes) { return std::to_wstring(bytes >> 10); }

// Signed on purpose: byte counts are divided as signed 64-bit numbers,
// rounding toward zero.
std::wstring SignedKilobytes(std::uint64_t bytes) { return std::to_wstring(static_cast<std::int64_t>(bytes) / 1024); }

std::wstring Line(std::wstring_view label, std::wstring_view value) {
    std::wstring line(label);
    line.append(value);
    line.push_back(L'\n');
    return line;
}

struct VersionThreshold {
    unsigned major;
    unsigned minor;
    unsigned servicePackMajor;
    std::wstring_view label;
};

// Windows 7 with service pack 1 is "7.1 or more", while 6.2 and 6.1 carry no
// "or more": these labels are the report's established wording.
constexpr std::array<VersionThreshold, 5> kVersionThresholds{{
    {10, 0, 0, L"10 or more"},
    {6, 3, 0, L"8.1 or more"},
    {6, 2, 0, L"8"},
    {6, 1, 1, L"7.1 or more"},
    {6, 1, 0, L"7"},
}};

}  // namespace

std::wstring FormatLocalDateAndTime(const std::tm& localTime) {
    std::array<wchar_t, kHeaderScratchSize> buffer{};
    const std::size_t length = std::wcsftime(buffer.data(), buffer.size(), L"%x %X", &localTime);
    return std::wstring(buffer.data(), length);
}

std::wstring ComposeReportHeader(std::wstring_view dateAndTime, std::size_t capacity) {
    constexpr std::wstring_view kLead = lineform::kHeaderLead.Wide();
    constexpr std::wstring_view kEnd = L"\n\n";
    // The terminator counts: a buffer of `capacity` holds capacity - 1 characters.
    if (kLead.size() + dateAndTime.size() + kEnd.size() >= capacity) return {};
    std::wstring header(kLead);
    header.append(dateAndTime);
    header.append(kEnd);
    return header;
}

std::wstring FormatReportHeader(const std::tm& localTime, std::size_t capacity) {
    const std::wstring dateAndTime = FormatLocalDateAndTime(localTime);
    // Nothing written means the runtime could not write it: no header either.
    if (dateAndTime.empty()) return {};
    return ComposeReportHeader(dateAndTime, capacity);
}

std::wstring FormatProgramLine(std::wstring_view applicationName, std::wstring_view productVersion) {
    std::wstring line(applicationName);
    line.push_back(L' ');
    line.append(productVersion);
    line.push_back(L'\n');
    return line;
}

std::wstring ProgramDirectoryOf(std::wstring_view modulePath) {
    std::size_t cut = modulePath.rfind(L'\\');
    if (cut == std::wstring_view::npos) cut = modulePath.rfind(L'/');
    if (cut == std::wstring_view::npos) return std::wstring(modulePath);
    return std::wstring(modulePath.substr(0, cut));
}

std::wstring FormatProgramDirectoryLine(std::wstring_view directory) { return Line(lineform::kProgramDirectory.Wide(), directory); }

std::wstring FormatHostNameLine(std::wstring_view netbiosName, std::wstring_view wmiDomain, std::wstring_view wmiName) {
    std::wstring line(lineform::kHostName.Wide());
    line.append(netbiosName);
    line.append(lineform::kOpenParenthesis.Wide());
    line.append(wmiDomain);
    line.append(lineform::kDomainSeparator.Wide());
    line.append(wmiName);
    line.append(lineform::kCloseParenthesis.Wide());
    line.push_back(L'\n');
    return line;
}

std::wstring FormatUserLine(std::wstring_view userName) { return Line(lineform::kUser.Wide(), userName); }

std::wstring_view ChooseWindowsVersionLabel(const WindowsVersionTest& isAtLeast) {
    for (const VersionThreshold& threshold : kVersionThresholds) {
        if (isAtLeast(threshold.major, threshold.minor, threshold.servicePackMajor)) return threshold.label;
    }
    return L"Other";
}

std::wstring_view WindowsEditionLabel(bool isWorkstation) { return isWorkstation ? L"Desktop" : L"Server"; }

std::wstring FormatVersionReportedLine(std::wstring_view versionLabel, std::wstring_view editionLabel) {
    std::wstring line(lineform::kVersionReported.Wide());
    line.append(versionLabel);
    line.append(lineform::kOpenParenthesis.Wide());
    line.append(editionLabel);
    line.append(lineform::kCloseParenthesis.Wide());
    line.push_back(L'\n');
    return line;
}

std::wstring FormatRealVersionLine(std::wstring_view version) { return Line(lineform::kRealVersion.Wide(), version); }

std::wstring FormatSystemPathLine(std::wstring_view path) { return Line(lineform::kSystemPath.Wide(), path); }

std::wstring FormatProgramFilesLine(std::wstring_view path) { return Line(lineform::kProgramFilesPath.Wide(), path); }

std::wstring FormatCommonAppDataLine(std::wstring_view path) {
    return Line(lineform::kCommonAppDataPath.Wide(), path);
}

std::wstring FormatBiosLine(std::wstring_view name) { return Line(lineform::kBios.Wide(), name); }

std::wstring FormatBoardLine(std::wstring_view manufacturer) { return Line(lineform::kBoard.Wide(), manufacturer); }

std::wstring FormatProcessorCountLine(std::uint32_t count) {
    return Line(lineform::kProcessorCount.Wide(), std::to_wstring(count));
}

std::wstring FormatProcessorLine(std::uint16_t architecture, std::uint16_t level, std::uint16_t revision) {
    return std::wstring(lineform::kProcessor.Wide()) + std::to_wstring(architecture) + lineform::kOpenParenthesis.wide +
           std::to_wstring(level) + L"." + std::to_wstring(revision) + lineform::kCloseParenthesis.wide + L"\n";
}

// Only the low half of the 64-bit mask is shown: the line keeps the form it
// has always had in the report.
std::wstring FormatActiveProcessorMaskLine(std::uint64_t mask) {
    return Line(lineform::kActiveProcessorMask.Wide(), std::to_wstring(static_cast<std::uint32_t>(mask)));
}

std::wstring FormatPageSizeLine(std::uint32_t pageSize) { return Line(lineform::kPageSize.Wide(), std::to_wstring(pageSize)); }

// Like the mask, each address shows its low 32 bits only (0x10000-0xfffeffff
// on a usual system).
std::wstring FormatApplicationAddressesLine(std::uint64_t lowest, std::uint64_t highest) {
    const wchar_t* hex = lineform::kHexPrefix.wide;
    return std::wstring(lineform::kApplicationAddresses.Wide()) + hex + Low32Hex(lowest) + L"-" + hex +
           Low32Hex(highest) + L"\n";
}

std::wstring FormatMemoryLine(std::uint64_t totalPhysical, std::uint64_t totalVirtual, std::uint64_t totalPaging) {
    return std::wstring(lineform::kMemory.Wide()) + Kilobytes(totalPhysical) + lineform::kMemoryPhysical.wide +
           Kilobytes(totalVirtual) + lineform::kMemoryVirtual.wide + Kilobytes(totalPaging) +
           lineform::kMemoryPaging.wide + L"\n";
}

std::wstring FormatVolumeLine(const VolumeRecord& volume) {
    const wchar_t* hex = lineform::kHexPrefix.wide;
    return std::wstring(lineform::kVolume.Wide()) + hex + Low32Hex(volume.serialNumber) + L" " + hex +
           Low32Hex(volume.fileSystemFlags) + L" " + volume.fileSystemName + lineform::kVolumeTotal.wide +
           SignedKilobytes(volume.totalBytes) + lineform::kVolumeFree.wide + SignedKilobytes(volume.totalFreeBytes) +
           lineform::kVolumeUser.wide + SignedKilobytes(volume.bytesAvailableToCaller) + lineform::kVolumeEnd.wide +
           L"\n";
}

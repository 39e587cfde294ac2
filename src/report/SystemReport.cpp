#include "report/SystemReport.h"

#include <windows.h>
#include <lmcons.h>
#include <shlobj.h>
#include <versionhelpers.h>

#include <cstdint>
#include <ctime>
#include <cwchar>

#include "w32/Elevation.h"
#include "report/DirectoryListing.h"
#include "report/InstallationSection.h"
#include "report/NetworkAdapters.h"
#include "report/RegistryData.h"
#include "report/RegistryValueText.h"
#include "report/ReportText.h"
#include "report/WmiQuery.h"
#include "w32/Application.h"
#include "w32/GrowingBuffer.h"
#include "w32/Scoped.h"
#include "w32/Text.h"

namespace {

constexpr wchar_t kWindowsCurrentVersionKey[] = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
constexpr wchar_t kVolumeRoot[] = L"C:\\";
constexpr DWORD kFileSystemNameCapacity = 32;

// The class and property names are 8-bit text, like the rest of the report's
// fixed vocabulary.
std::wstring QueryWmi(const char* className, const char* propertyName) {
    return QueryWmiPropertyFromAnyThread(w32::AnsiToWide(className), w32::AnsiToWide(propertyName));
}

// GetComputerNameW and GetUserNameW both report the size they need when the
// buffer is too small; any other failure gives the empty text.
// Two asks at most: the second must fit what the first said.
using NameGetter = BOOL(WINAPI*)(LPWSTR, LPDWORD);
std::wstring ReadName(NameGetter get, DWORD initialSize) {
    auto name = w32::FillGrowingBuffer<std::wstring>(initialSize, 2, [get](std::wstring& buffer) {
        DWORD size = static_cast<DWORD>(buffer.size());
        if (get(buffer.data(), &size)) return w32::BufferAnswer::Filled(buffer.size());
        return w32::BufferAnswer::TooSmall(size);
    });
    if (!name) return {};
    name->resize(std::wcslen(name->c_str()));
    return *name;
}

// The first ask, without a buffer, gives the size with its terminator; the
// second must then hold the path.
std::wstring WindowsDirectory() {
    const auto path = w32::FillGrowingBuffer<std::wstring>(0, 2, [](std::wstring& buffer) {
        const UINT size = static_cast<UINT>(buffer.size());
        const UINT answer = ::GetWindowsDirectoryW(size ? buffer.data() : nullptr, size);
        return answer < size ? w32::BufferAnswer::Filled(answer) : w32::BufferAnswer::TooSmall(answer);
    });
    return path ? *path : std::wstring();
}

// SHGetFolderPathW writes at most MAX_PATH characters by contract.
std::wstring ShellFolder(int csidl) {
    wchar_t path[MAX_PATH] = {};
    if (FAILED(::SHGetFolderPathW(nullptr, csidl, nullptr, 0, path))) return {};
    return path;
}

std::wstring_view WindowsVersionLabel() {
    return ChooseWindowsVersionLabel([](unsigned major, unsigned minor, unsigned servicePack) {
        return ::IsWindowsVersionOrGreater(static_cast<WORD>(major), static_cast<WORD>(minor),
                                           static_cast<WORD>(servicePack)) != FALSE;
    });
}

void WriteProductIdLine(ReportSink& sink) {
    w32::ScopedRegKey key;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, kWindowsCurrentVersionKey, 0, KEY_READ, key.Put()) != ERROR_SUCCESS) return;
    if (const auto data = ReadRegistryData(key.Get(), L"ProductId")) sink.Append(FormatProductIdLine(*data));
}

void WriteProcessorLines(ReportSink& sink, const SYSTEM_INFO& info) {
    sink.Append(FormatProcessorCountLine(info.dwNumberOfProcessors));
    sink.Append(FormatProcessorLine(info.wProcessorArchitecture, info.wProcessorLevel, info.wProcessorRevision));
    sink.Append(FormatActiveProcessorMaskLine(info.dwActiveProcessorMask));
    sink.Append(FormatPageSizeLine(info.dwPageSize));
    sink.Append(FormatApplicationAddressesLine(reinterpret_cast<std::uintptr_t>(info.lpMinimumApplicationAddress),
                                               reinterpret_cast<std::uintptr_t>(info.lpMaximumApplicationAddress)));
}

void WriteMemoryLine(ReportSink& sink) {
    MEMORYSTATUSEX memory{};
    memory.dwLength = sizeof(memory);
    ::GlobalMemoryStatusEx(&memory);
    sink.Append(FormatMemoryLine(memory.ullTotalPhys, memory.ullTotalVirtual, memory.ullTotalPageFile));
}

}  // namespace

std::optional<std::wstring> MakeReportHeader() {
    const __time64_t now = ::_time64(nullptr);
    std::tm local{};
    if (::_localtime64_s(&local, &now) != 0) return std::nullopt;
    return FormatReportHeader(local);
}

std::wstring WriteProgramSection(ReportSink& sink) {
    sink.Append(kProgramHeading);
    const w32::Application* app = w32::CurrentApp();
    const std::wstring modulePath = w32::GetModulePath(app ? app->Instance() : nullptr);
    sink.Append(FormatProgramLine(app ? app->Name() : std::wstring(), ReadProductVersion(modulePath)));
    std::wstring directory = ProgramDirectoryOf(modulePath);
    sink.Append(FormatProgramDirectoryLine(directory));
    if (IsProcessElevated()) sink.Append(kAdministratorLine);
    return directory;
}

void WriteHostSection(ReportSink& sink) {
    sink.Append(kHostHeading);
    const std::wstring computerName = ReadName(::GetComputerNameW, MAX_COMPUTERNAME_LENGTH + 1);
    const std::wstring wmiName = QueryWmi("Win32_ComputerSystem", "Name");
    const std::wstring wmiDomain = QueryWmi("Win32_ComputerSystem", "Domain");
    sink.Append(FormatHostNameLine(computerName, wmiDomain, wmiName));
    sink.Append(FormatUserLine(ReadName(::GetUserNameW, UNLEN + 1)));
}

SystemFolders WriteWindowsSection(ReportSink& sink) {
    sink.Append(kWindowsHeading);
    const std::wstring_view version = WindowsVersionLabel();
    sink.Append(FormatVersionReportedLine(version, WindowsEditionLabel(!::IsWindowsServer())));
    sink.Append(FormatRealVersionLine(QueryWmi("Win32_OperatingSystem", "Version")));
    WriteProductIdLine(sink);
    sink.Append(FormatSystemPathLine(WindowsDirectory()));
    SystemFolders folders{ShellFolder(CSIDL_PROGRAM_FILES), ShellFolder(CSIDL_COMMON_APPDATA)};
    sink.Append(FormatProgramFilesLine(folders.programFiles));
    sink.Append(FormatCommonAppDataLine(folders.commonAppData));
    return folders;
}

std::optional<VolumeFacts> ReadVolumeFacts(const wchar_t* root) {
    DWORD serialNumber = 0;
    DWORD maximumComponentLength = 0;
    DWORD flags = 0;
    wchar_t fileSystemName[kFileSystemNameCapacity] = {};
    if (!::GetVolumeInformationW(root, nullptr, 0, &serialNumber, &maximumComponentLength, &flags, fileSystemName,
                                 kFileSystemNameCapacity))
        return std::nullopt;
    ULARGE_INTEGER available{}, total{}, free{};
    if (!::GetDiskFreeSpaceExW(root, &available, &total, &free)) return std::nullopt;
    return VolumeFacts{serialNumber, flags, fileSystemName, total.QuadPart, free.QuadPart, available.QuadPart};
}

void WriteHardwareSection(ReportSink& sink) {
    sink.Append(kHardwareHeading);
    sink.Append(kSystemBitsLine);
    SYSTEM_INFO info{};
    ::GetSystemInfo(&info);
    sink.Append(FormatBiosLine(QueryWmi("Win32_BIOS", "Name")));
    sink.Append(FormatBoardLine(QueryWmi("Win32_BaseBoard", "Manufacturer")));
    WriteProcessorLines(sink, info);
    WriteMemoryLine(sink);
    // A missing or unreadable C: has no line at all.
    if (const auto volume = ReadVolumeFacts(kVolumeRoot)) sink.Append(FormatVolumeLine(*volume));
}

void WriteNetworkSection(ReportSink& sink) {
    sink.Append(kNetworkHeading);
    std::string listing;
    ListNetworkAdapters(listing);
    sink.Append(w32::AnsiToWide(listing));
}

bool WriteSystemReport(ReportSink& sink) {
    const std::optional<std::wstring> header = MakeReportHeader();
    if (!header) return false;
    sink.Append(*header);
    const std::wstring programDirectory = WriteProgramSection(sink);
    WriteHostSection(sink);
    const SystemFolders folders = WriteWindowsSection(sink);
    WriteHardwareSection(sink);
    WriteNetworkSection(sink);
    WriteInstallationSection(sink, programDirectory, folders.programFiles, folders.commonAppData);
    return true;
}

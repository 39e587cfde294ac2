#include "collect/SystemReport.h"

#include <windows.h>
#include <lmcons.h>
#include <shlobj.h>
#include <versionhelpers.h>

#include <cstdint>
#include <ctime>
#include <cwchar>
#include <utility>
#include <vector>

#include "collect/DirectoryListing.h"
#include "collect/InstallationCollector.h"
#include "collect/NetworkAdapters.h"
#include "collect/RegistryData.h"
#include "collect/WmiQuery.h"
#include "format/RegistryValueText.h"
#include "format/ReportText.h"
#include "format/SystemSections.h"
#include "w32/Application.h"
#include "w32/Elevation.h"
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

std::optional<std::vector<std::uint8_t>> ReadProductId() {
    w32::ScopedRegKey key;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, kWindowsCurrentVersionKey, 0, KEY_READ, key.Put()) != ERROR_SUCCESS)
        return std::nullopt;
    return ReadRegistryData(key.Get(), L"ProductId");
}

void ReadProcessorInto(HardwareRecord& facts) {
    SYSTEM_INFO info{};
    ::GetSystemInfo(&info);
    facts.processorCount = info.dwNumberOfProcessors;
    facts.processorArchitecture = info.wProcessorArchitecture;
    facts.processorLevel = info.wProcessorLevel;
    facts.processorRevision = info.wProcessorRevision;
    facts.activeProcessorMask = info.dwActiveProcessorMask;
    facts.pageSize = info.dwPageSize;
    facts.lowestApplicationAddress = reinterpret_cast<std::uintptr_t>(info.lpMinimumApplicationAddress);
    facts.highestApplicationAddress = reinterpret_cast<std::uintptr_t>(info.lpMaximumApplicationAddress);
}

void ReadMemoryInto(HardwareRecord& facts) {
    MEMORYSTATUSEX memory{};
    memory.dwLength = sizeof(memory);
    ::GlobalMemoryStatusEx(&memory);
    facts.totalPhysical = memory.ullTotalPhys;
    facts.totalVirtual = memory.ullTotalVirtual;
    facts.totalPaging = memory.ullTotalPageFile;
}

// Nothing when there is no local date and time; otherwise the header, empty
// when the runtime wrote nothing or it does not fit its buffer.
std::optional<std::wstring> HeaderOf(const std::optional<std::wstring>& dateAndTime) {
    if (!dateAndTime) return std::nullopt;
    if (dateAndTime->empty()) return std::wstring();
    return ComposeReportHeader(*dateAndTime);
}

}  // namespace

std::optional<std::wstring> ReadLocalDateAndTime() {
    const __time64_t now = ::_time64(nullptr);
    std::tm local{};
    if (::_localtime64_s(&local, &now) != 0) return std::nullopt;
    return FormatLocalDateAndTime(local);
}

std::optional<std::wstring> MakeReportHeader() { return HeaderOf(ReadLocalDateAndTime()); }

ProgramRecord CollectProgramRecord() {
    const w32::Application* app = w32::CurrentApp();
    ProgramRecord facts;
    facts.applicationName = app ? app->Name() : std::wstring();
    const std::wstring modulePath = w32::GetModulePath(app ? app->Instance() : nullptr);
    facts.productVersion = ReadProductVersion(modulePath);
    facts.directory = ProgramDirectoryOf(modulePath);
    facts.elevated = IsProcessElevated();
    return facts;
}

HostRecord CollectHostRecord() {
    HostRecord facts;
    facts.netbiosName = ReadName(::GetComputerNameW, MAX_COMPUTERNAME_LENGTH + 1);
    facts.wmiName = QueryWmi("Win32_ComputerSystem", "Name");
    facts.wmiDomain = QueryWmi("Win32_ComputerSystem", "Domain");
    facts.userName = ReadName(::GetUserNameW, UNLEN + 1);
    return facts;
}

WindowsRecord CollectWindowsRecord() {
    WindowsRecord facts;
    facts.versionLabel = WindowsVersionLabel();
    facts.editionLabel = WindowsEditionLabel(!::IsWindowsServer());
    facts.realVersion = QueryWmi("Win32_OperatingSystem", "Version");
    facts.productId = ReadProductId();
    facts.systemPath = WindowsDirectory();
    facts.programFiles = ShellFolder(CSIDL_PROGRAM_FILES);
    facts.commonAppData = ShellFolder(CSIDL_COMMON_APPDATA);
    return facts;
}

std::optional<VolumeRecord> ReadVolumeRecord(const wchar_t* root) {
    DWORD serialNumber = 0;
    DWORD maximumComponentLength = 0;
    DWORD flags = 0;
    wchar_t fileSystemName[kFileSystemNameCapacity] = {};
    if (!::GetVolumeInformationW(root, nullptr, 0, &serialNumber, &maximumComponentLength, &flags, fileSystemName,
                                 kFileSystemNameCapacity))
        return std::nullopt;
    ULARGE_INTEGER available{}, total{}, free{};
    if (!::GetDiskFreeSpaceExW(root, &available, &total, &free)) return std::nullopt;
    return VolumeRecord{serialNumber, flags, fileSystemName, total.QuadPart, free.QuadPart, available.QuadPart};
}

std::optional<VolumeRecord> ReadSystemVolumeRecord() { return ReadVolumeRecord(kVolumeRoot); }

HardwareRecord CollectHardwareRecord(const ReportSources& sources) {
    HardwareRecord facts;
    ReadProcessorInto(facts);
    facts.biosName = QueryWmi("Win32_BIOS", "Name");
    facts.boardManufacturer = QueryWmi("Win32_BaseBoard", "Manufacturer");
    ReadMemoryInto(facts);
    // A missing or unreadable C: has no line at all.
    facts.volumeC = sources.systemVolume();
    return facts;
}

std::wstring WriteProgramSection(ReportSink& sink) {
    ProgramRecord facts = CollectProgramRecord();
    RenderProgramSection(facts, sink);
    return std::move(facts.directory);
}

void WriteHostSection(ReportSink& sink) { RenderHostSection(CollectHostRecord(), sink); }

SystemFolders WriteWindowsSection(ReportSink& sink) {
    WindowsRecord facts = CollectWindowsRecord();
    RenderWindowsSection(facts, sink);
    return {std::move(facts.programFiles), std::move(facts.commonAppData)};
}

void WriteHardwareSection(ReportSink& sink, const ReportSources& sources) {
    RenderHardwareSection(CollectHardwareRecord(sources), sink);
}

void WriteNetworkSection(ReportSink& sink) {
    sink.Append(kNetworkHeading);
    std::string listing;
    ListNetworkAdapters(listing);
    sink.Append(w32::AnsiToWide(listing));
}

bool WriteSystemReport(ReportSink& sink, const ReportSources& sources) {
    const std::optional<std::wstring> header = HeaderOf(sources.localDateAndTime());
    if (!header) return false;
    sink.Append(*header);
    const std::wstring programDirectory = WriteProgramSection(sink);
    WriteHostSection(sink);
    const SystemFolders folders = WriteWindowsSection(sink);
    WriteHardwareSection(sink, sources);
    WriteNetworkSection(sink);
    WriteInstallationSection(sink, programDirectory, folders.programFiles, folders.commonAppData);
    return true;
}

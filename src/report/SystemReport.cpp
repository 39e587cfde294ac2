#include "report/SystemReport.h"

#include <windows.h>
#include <lmcons.h>
#include <shlobj.h>
#include <versionhelpers.h>

#include <cstdint>
#include <ctime>
#include <cwchar>
#include <utility>
#include <vector>

#include "report/DirectoryListing.h"
#include "report/InstallationSection.h"
#include "report/NetworkAdapters.h"
#include "report/RegistryData.h"
#include "report/RegistryValueText.h"
#include "report/ReportText.h"
#include "report/SystemSections.h"
#include "report/WmiQuery.h"
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

void ReadProcessorFacts(HardwareFacts& facts) {
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

void ReadMemoryFacts(HardwareFacts& facts) {
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

ProgramFacts CollectProgramFacts() {
    const w32::Application* app = w32::CurrentApp();
    ProgramFacts facts;
    facts.applicationName = app ? app->Name() : std::wstring();
    const std::wstring modulePath = w32::GetModulePath(app ? app->Instance() : nullptr);
    facts.productVersion = ReadProductVersion(modulePath);
    facts.directory = ProgramDirectoryOf(modulePath);
    facts.elevated = IsProcessElevated();
    return facts;
}

HostFacts CollectHostFacts() {
    HostFacts facts;
    facts.netbiosName = ReadName(::GetComputerNameW, MAX_COMPUTERNAME_LENGTH + 1);
    facts.wmiName = QueryWmi("Win32_ComputerSystem", "Name");
    facts.wmiDomain = QueryWmi("Win32_ComputerSystem", "Domain");
    facts.userName = ReadName(::GetUserNameW, UNLEN + 1);
    return facts;
}

WindowsFacts CollectWindowsFacts() {
    WindowsFacts facts;
    facts.versionLabel = WindowsVersionLabel();
    facts.editionLabel = WindowsEditionLabel(!::IsWindowsServer());
    facts.realVersion = QueryWmi("Win32_OperatingSystem", "Version");
    facts.productId = ReadProductId();
    facts.systemPath = WindowsDirectory();
    facts.programFiles = ShellFolder(CSIDL_PROGRAM_FILES);
    facts.commonAppData = ShellFolder(CSIDL_COMMON_APPDATA);
    return facts;
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

std::optional<VolumeFacts> ReadSystemVolumeFacts() { return ReadVolumeFacts(kVolumeRoot); }

HardwareFacts CollectHardwareFacts(const ReportSources& sources) {
    HardwareFacts facts;
    ReadProcessorFacts(facts);
    facts.biosName = QueryWmi("Win32_BIOS", "Name");
    facts.boardManufacturer = QueryWmi("Win32_BaseBoard", "Manufacturer");
    ReadMemoryFacts(facts);
    // A missing or unreadable C: has no line at all.
    facts.volumeC = sources.systemVolume();
    return facts;
}

std::wstring WriteProgramSection(ReportSink& sink) {
    ProgramFacts facts = CollectProgramFacts();
    RenderProgramSection(facts, sink);
    return std::move(facts.directory);
}

void WriteHostSection(ReportSink& sink) { RenderHostSection(CollectHostFacts(), sink); }

SystemFolders WriteWindowsSection(ReportSink& sink) {
    WindowsFacts facts = CollectWindowsFacts();
    RenderWindowsSection(facts, sink);
    return {std::move(facts.programFiles), std::move(facts.commonAppData)};
}

void WriteHardwareSection(ReportSink& sink, const ReportSources& sources) {
    RenderHardwareSection(CollectHardwareFacts(sources), sink);
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

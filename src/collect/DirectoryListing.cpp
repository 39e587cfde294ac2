#include "collect/DirectoryListing.h"

#include <cstdio>
#include <cstring>
#include <optional>
#include <vector>

#include "format/EntryText.h"
#include "format/ReportSink.h"
#include "w32/GrowingBuffer.h"
#include "w32/Scoped.h"
#include "w32/Text.h"

namespace {
// Language neutral first, then U.S. English, both in Unicode (code page 1200).
constexpr const wchar_t* kProductVersionKeys[] = {
    L"\\StringFileInfo\\000004b0\\ProductVersion",
    L"\\StringFileInfo\\040904b0\\ProductVersion",
};
// Both buffers of the account look-up announce this many characters.
constexpr DWORD kAccountNameCapacity = 520;

// The mask and SID of the nearest allow or deny entry: an entry of another
// kind shows the account of the one before it.
struct CurrentAce {
    PSID sid = nullptr;
    DWORD mask = 0;
};

std::optional<AccountName> LookUpAccount(PSID sid) {
    wchar_t name[kAccountNameCapacity];
    wchar_t domain[kAccountNameCapacity];
    DWORD nameLength = kAccountNameCapacity;
    DWORD domainLength = kAccountNameCapacity;
    SID_NAME_USE use;
    if (!::LookupAccountSidW(nullptr, sid, name, &nameLength, domain, &domainLength, &use)) return std::nullopt;
    return AccountName{std::wstring(domain, domainLength), std::wstring(name, nameLength)};
}

AceKind KindOf(BYTE aceType) {
    if (aceType == ACCESS_ALLOWED_ACE_TYPE) return AceKind::Allow;
    if (aceType == ACCESS_DENIED_ACE_TYPE) return AceKind::Deny;
    return AceKind::Other;
}

AccessEntryRecord ReadAce(PACL dacl, DWORD index, CurrentAce& current) {
    AccessEntryRecord record;
    void* raw = nullptr;
    if (!::GetAce(dacl, index, &raw)) {
        record.readable = false;
        return record;
    }
    record.kind = KindOf(static_cast<const ACE_HEADER*>(raw)->AceType);
    if (record.kind != AceKind::Other) {
        // Allowed and denied entries share one layout: header, mask, SID.
        auto* ace = static_cast<ACCESS_ALLOWED_ACE*>(raw);
        current.mask = ace->Mask;
        current.sid = &ace->SidStart;
    }
    record.mask = current.mask;
    if (current.sid) record.account = LookUpAccount(current.sid);
    return record;
}

AccessListRecord ReadAccessListOf(const std::wstring& path) {
    // The first ask, without a buffer, only gives the size; the second must fit.
    auto descriptor = w32::FillGrowingBuffer<std::vector<BYTE>>(0, 2, [&path](std::vector<BYTE>& buffer) {
        const DWORD size = static_cast<DWORD>(buffer.size());
        DWORD needed = 0;
        if (::GetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, size ? buffer.data() : nullptr, size,
                               &needed) &&
            size != 0)
            return w32::BufferAnswer::Filled(size);
        return w32::BufferAnswer::TooSmall(needed);
    });
    if (!descriptor) return AccessListRecord{AccessListState::kSecurityUnreadable, ::GetLastError(), {}};
    return ReadAccessListRecord(descriptor->data());
}

// A version resource lives only in an executable image, and every image
// starts with "MZ". Reading two bytes is cheaper than asking the version
// library, which maps the file as a module first (under Wine several times
// over). False only when the file was read and cannot be an image: any doubt
// (no access, a directory, a locked range) leaves the answer to the library.
bool CannotBeAnImage(const std::wstring& path) {
    const w32::ScopedHandle file(::CreateFileW(path.c_str(), GENERIC_READ,
                                               FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                               OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return false;
    char magic[2] = {};
    DWORD read = 0;
    if (!::ReadFile(file.Get(), magic, sizeof(magic), &read, nullptr)) return false;
    return read < sizeof(magic) || magic[0] != 'M' || magic[1] != 'Z';
}

// The ProductVersion of a file that may be an image.
std::wstring AskVersionLibrary(const std::wstring& path) {
    DWORD handle = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(path.c_str(), &handle);
    if (size == 0) return {};
    std::vector<BYTE> data(size);
    ::GetFileVersionInfoW(path.c_str(), 0, size, data.data());
    for (const wchar_t* key : kProductVersionKeys) {
        void* value = nullptr;
        UINT length = 0;
        if (::VerQueryValueW(data.data(), key, &value, &length) && value) {
            return NormaliseVersion(static_cast<const wchar_t*>(value));
        }
    }
    return {};
}

ContentExcerptRecord ReadContentExcerpt(const std::wstring& path) {
    const w32::ScopedCFile file(::_wfopen(path.c_str(), L"rb"));
    if (!file) return {};
    char line[kExcerptBufferSize];
    if (!std::fgets(line, sizeof(line), file.Get())) return {true, {}};
    // The line ends at its first NUL byte, as a C string does.
    return {true, w32::AnsiToWide(CleanExcerpt(std::string_view(line, std::strlen(line))))};
}

bool SameTime(const FILETIME& a, const FILETIME& b) {
    return a.dwLowDateTime == b.dwLowDateTime && a.dwHighDateTime == b.dwHighDateTime;
}

// A folder never has a version resource, and asking the version library
// about one costs dear: under Wine it searches the parent folder for a
// library of that name, so a listing with many folders grew with the square
// of its entries.
std::wstring VersionOf(const std::wstring& path, const WIN32_FIND_DATAW& entry, ProductVersionMemo* memo) {
    if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) return {};
    return memo ? memo->Read(path, entry) : ReadProductVersion(path);
}

// Refills `record` in place, so that a long listing reuses its strings.
void FillEntryRecord(DirectoryEntryRecord& record, const std::wstring& directory, const WIN32_FIND_DATAW& entry,
                     bool withAcl, bool withContent, ProductVersionMemo* memo) {
    record.attributes = entry.dwFileAttributes;
    record.sizeLow = entry.nFileSizeLow;
    record.created = LocalCalendarTime(entry.ftCreationTime);
    record.written = LocalCalendarTime(entry.ftLastWriteTime);
    record.name = entry.cFileName;
    // A forward slash, as the listing has always joined them; the path is as
    // long as it needs to be.
    const std::wstring path = directory + L"/" + record.name;
    record.productVersion = VersionOf(path, entry, memo);
    record.accessList.reset();
    if (withAcl) record.accessList = ReadAccessListOf(path);
    record.content.reset();
    if (withContent && !IsDotEntry(record.name)) record.content = ReadContentExcerpt(path);
}
}  // namespace

CalendarTime LocalCalendarTime(const FILETIME& time) {
    SYSTEMTIME utc{};
    SYSTEMTIME local{};
    ::FileTimeToSystemTime(&time, &utc);
    ::SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local);
    return {local.wDay, local.wMonth, local.wYear, local.wHour, local.wMinute, local.wSecond};
}

std::wstring FormatFileTime(const FILETIME& time) { return FormatCalendarTime(LocalCalendarTime(time)); }

std::wstring ReadProductVersion(const std::wstring& path) {
    if (CannotBeAnImage(path)) return {};
    return AskVersionLibrary(path);
}

AccessListRecord ReadAccessListRecord(PSECURITY_DESCRIPTOR descriptor) {
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    PACL dacl = nullptr;
    // Without a DACL the code shown is whatever the last failing call left.
    if (!::GetSecurityDescriptorDacl(descriptor, &present, &dacl, &defaulted) || !present)
        return AccessListRecord{AccessListState::kDaclUnreadable, ::GetLastError(), {}};
    if (!dacl) return AccessListRecord{AccessListState::kNullList, 0, {}};
    AccessListRecord list;
    list.entries.reserve(dacl->AceCount);
    CurrentAce current;
    for (DWORD index = 0; index < dacl->AceCount; ++index) list.entries.push_back(ReadAce(dacl, index, current));
    return list;
}

std::wstring FormatAccessList(PSECURITY_DESCRIPTOR descriptor) {
    return RenderAccessList(ReadAccessListRecord(descriptor));
}

std::wstring ProductVersionMemo::Read(const std::wstring& path, const WIN32_FIND_DATAW& entry) {
    const auto known = readings_.find(path);
    if (known != readings_.end()) {
        const Reading& reading = known->second;
        if (SameTime(reading.created, entry.ftCreationTime) && SameTime(reading.written, entry.ftLastWriteTime) &&
            reading.sizeHigh == entry.nFileSizeHigh && reading.sizeLow == entry.nFileSizeLow) {
            return reading.version;
        }
    }
    // Only what the version library answered is kept: the first two bytes
    // are cheap to read again, and a directory of a hundred thousand data
    // files must not fill the memo.
    if (CannotBeAnImage(path)) return {};
    std::wstring version = AskVersionLibrary(path);
    readings_.insert_or_assign(path, Reading{entry.ftCreationTime, entry.ftLastWriteTime, entry.nFileSizeHigh,
                                             entry.nFileSizeLow, version});
    return version;
}

DirectoryEntryRecord CollectFileEntry(const std::wstring& directory, const WIN32_FIND_DATAW& entry, bool withAcl,
                                      bool withContent, ProductVersionMemo* memo) {
    DirectoryEntryRecord record;
    FillEntryRecord(record, directory, entry, withAcl, withContent, memo);
    return record;
}

std::wstring FormatFileEntry(const std::wstring& directory, const WIN32_FIND_DATAW& entry, bool withAcl,
                             bool withContent, ProductVersionMemo* memo) {
    return RenderEntryText(CollectFileEntry(directory, entry, withAcl, withContent, memo));
}

void ForEachFileEntry(const std::wstring& directory, bool withAcl, bool withContent, ProductVersionMemo* memo,
                      const DirectoryEntrySource::EntryHandler& handle) {
    WIN32_FIND_DATAW entry{};
    const w32::ScopedFind search(::FindFirstFileW((directory + L"\\*").c_str(), &entry));
    if (!search) return;
    DirectoryEntryRecord record;
    do {
        FillEntryRecord(record, directory, entry, withAcl, withContent, memo);
        handle(record);
    } while (::FindNextFileW(search.Get(), &entry));
}

void ListDirectory(ReportSink& sink, const std::wstring& directory, bool withAcl, bool withContent,
                   ProductVersionMemo* memo) {
    ForEachFileEntry(directory, withAcl, withContent, memo,
                     [&sink](const DirectoryEntryRecord& record) { RenderEntryLine(record, sink); });
}

void SystemDirectoryEntries::ForEachEntry(const std::wstring& directory, const EntryHandler& handle) {
    ForEachFileEntry(directory, withAcl_, withContent_, memo_, handle);
}

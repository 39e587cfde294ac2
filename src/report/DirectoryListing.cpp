#include "report/DirectoryListing.h"

#include <cstdio>
#include <cstring>
#include <optional>
#include <vector>

#include "report/EntryText.h"
#include "report/ReportSink.h"
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

std::wstring DescribeAce(PACL dacl, DWORD index, CurrentAce& current) {
    void* raw = nullptr;
    if (!::GetAce(dacl, index, &raw)) return std::wstring(kUnreadableAccessEntry);
    const AceKind kind = KindOf(static_cast<const ACE_HEADER*>(raw)->AceType);
    if (kind != AceKind::Other) {
        // Allowed and denied entries share one layout: header, mask, SID.
        auto* ace = static_cast<ACCESS_ALLOWED_ACE*>(raw);
        current.mask = ace->Mask;
        current.sid = &ace->SidStart;
    }
    const std::optional<AccountName> account = current.sid ? LookUpAccount(current.sid) : std::nullopt;
    return FormatAccessEntry(kind, account, current.mask);
}

std::wstring ReadAccessList(const std::wstring& path) {
    const std::wstring heading(kAccessListHeading);
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
    if (!descriptor) return heading + FormatApiFailure(L"GetFileSecurity", ::GetLastError());
    return FormatAccessList(descriptor->data());
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

std::wstring ReadContentExcerpt(const std::wstring& path) {
    const w32::ScopedCFile file(::_wfopen(path.c_str(), L"rb"));
    if (!file) return FormatContentPart(kUnableToOpen);
    char line[kExcerptBufferSize];
    if (!std::fgets(line, sizeof(line), file.Get())) return FormatContentPart(L"");
    // The line ends at its first NUL byte, as a C string does.
    return FormatContentPart(w32::AnsiToWide(CleanExcerpt(std::string_view(line, std::strlen(line)))));
}
}  // namespace

std::wstring FormatFileTime(const FILETIME& time) {
    SYSTEMTIME utc{};
    SYSTEMTIME local{};
    ::FileTimeToSystemTime(&time, &utc);
    ::SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local);
    return FormatCalendarTime({local.wDay, local.wMonth, local.wYear, local.wHour, local.wMinute, local.wSecond});
}

std::wstring ReadProductVersion(const std::wstring& path) {
    if (CannotBeAnImage(path)) return {};
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

std::wstring FormatAccessList(PSECURITY_DESCRIPTOR descriptor) {
    std::wstring text(kAccessListHeading);
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    PACL dacl = nullptr;
    // Without a DACL the code shown is whatever the last failing call left.
    if (!::GetSecurityDescriptorDacl(descriptor, &present, &dacl, &defaulted) || !present) {
        return text + FormatApiFailure(L"GetSecurityDescriptorDacl", ::GetLastError());
    }
    if (!dacl) return text + std::wstring(kNullAccessList);
    CurrentAce current;
    for (DWORD index = 0; index < dacl->AceCount; ++index) text += DescribeAce(dacl, index, current);
    return text;
}

namespace {
bool SameTime(const FILETIME& a, const FILETIME& b) {
    return a.dwLowDateTime == b.dwLowDateTime && a.dwHighDateTime == b.dwHighDateTime;
}
}  // namespace

std::wstring ProductVersionMemo::Read(const std::wstring& path, const WIN32_FIND_DATAW& entry) {
    const auto known = readings_.find(path);
    if (known != readings_.end()) {
        const Reading& reading = known->second;
        if (SameTime(reading.created, entry.ftCreationTime) && SameTime(reading.written, entry.ftLastWriteTime) &&
            reading.sizeHigh == entry.nFileSizeHigh && reading.sizeLow == entry.nFileSizeLow) {
            return reading.version;
        }
    }
    std::wstring version = ReadProductVersion(path);
    readings_.insert_or_assign(path, Reading{entry.ftCreationTime, entry.ftLastWriteTime, entry.nFileSizeHigh,
                                             entry.nFileSizeLow, version});
    return version;
}

std::wstring FormatFileEntry(const std::wstring& directory, const WIN32_FIND_DATAW& entry, bool withAcl,
                             bool withContent, ProductVersionMemo* memo) {
    const std::wstring name = entry.cFileName;
    std::wstring text = FormatEntryHead(entry.dwFileAttributes, entry.nFileSizeLow);
    text += FormatFileTime(entry.ftCreationTime) + L"\t" + FormatFileTime(entry.ftLastWriteTime) + L"\t";
    text += name + L"\t";
    // A forward slash, as the listing has always joined them; the path is as
    // long as it needs to be.
    const std::wstring path = directory + L"/" + name;
    text += memo ? memo->Read(path, entry) : ReadProductVersion(path);
    if (withAcl) text += ReadAccessList(path);
    if (withContent && !IsDotEntry(name)) text += ReadContentExcerpt(path);
    return text;
}

void ListDirectory(ReportSink& sink, const std::wstring& directory, bool withAcl, bool withContent,
                   ProductVersionMemo* memo) {
    WIN32_FIND_DATAW entry{};
    const w32::ScopedFind search(::FindFirstFileW((directory + L"\\*").c_str(), &entry));
    if (!search) return;
    do {
        sink.Append(L"\t" + FormatFileEntry(directory, entry, withAcl, withContent, memo) + L"\n");
    } while (::FindNextFileW(search.Get(), &entry));
}

#include "collect/NetworkAdapters.h"

#include <winsock2.h>
#include <windows.h>
#include <iphlpapi.h>

#include <climits>
#include <cwchar>
#include <optional>

#include "format/AdapterText.h"
#include "w32/Scoped.h"

namespace {
// Room for exactly one adapter record; more is asked for once if needed.
constexpr ULONG kFirstBufferSize = 448;

std::uint32_t QueryAdapters(void* buffer, ULONG& size) {
    return ::GetAdaptersAddresses(AF_UNSPEC, GAA_FLAG_INCLUDE_PREFIX, nullptr,
                                  static_cast<IP_ADAPTER_ADDRESSES*>(buffer), &size);
}

template <typename Element>
std::size_t CountList(const Element* first) {
    std::size_t count = 0;
    for (; first; first = first->Next) ++count;
    return count;
}

std::string Narrow(const wchar_t* text) { return text ? NarrowInCurrentLocale(text) : std::string(); }

AdapterRecord RecordOf(const IP_ADAPTER_ADDRESSES& adapter) {
    AdapterRecord record;
    record.adapterName = adapter.AdapterName ? adapter.AdapterName : "";
    record.ifIndex = adapter.IfIndex;
    record.unicastCount = CountList(adapter.FirstUnicastAddress);
    record.anycastCount = CountList(adapter.FirstAnycastAddress);
    record.multicastCount = CountList(adapter.FirstMulticastAddress);
    record.dnsServerCount = CountList(adapter.FirstDnsServerAddress);
    record.dnsSuffix = Narrow(adapter.DnsSuffix);
    record.description = Narrow(adapter.Description);
    record.friendlyName = Narrow(adapter.FriendlyName);
    // Never more than the record's own eight bytes, whatever the length says.
    const ULONG length = adapter.PhysicalAddressLength <= MAX_ADAPTER_ADDRESS_LENGTH ? adapter.PhysicalAddressLength
                                                                                     : MAX_ADAPTER_ADDRESS_LENGTH;
    record.physicalAddress.assign(adapter.PhysicalAddress, adapter.PhysicalAddress + length);
    record.flags = adapter.Flags;
    record.mtu = adapter.Mtu;
    record.ifType = adapter.IfType;
    record.operStatus = static_cast<std::uint32_t>(adapter.OperStatus);
    record.ipv6IfIndex = adapter.Ipv6IfIndex;
    for (std::size_t i = 0; i < record.zoneIndices.size(); ++i) record.zoneIndices[i] = adapter.ZoneIndices[i];
    record.prefixCount = CountList(adapter.FirstPrefix);
    return record;
}

// The listing shows a wide system text through a narrow "%s", which stops
// after its first character: only that character is wanted.
std::optional<std::string> SystemMessageFirstCharacter(DWORD error) {
    wchar_t* message = nullptr;
    const DWORD length = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
        MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), reinterpret_cast<wchar_t*>(&message), 0, nullptr);
    const w32::ScopedLocal owner(message);
    if (length == 0 || !message) return std::nullopt;
    return NarrowInCurrentLocale(std::wstring_view(message, 1));
}
}  // namespace

std::string NarrowInCurrentLocale(std::wstring_view text) {
    std::string narrow;
    std::mbstate_t state{};
    char bytes[MB_LEN_MAX];
    for (std::size_t i = 0; i < text.size(); ++i) {
        const wchar_t c = text[i];
        const bool pair = c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
                          text[i + 1] <= 0xDFFF;
        const std::size_t written = pair ? static_cast<std::size_t>(-1) : std::wcrtomb(bytes, c, &state);
        if (written == static_cast<std::size_t>(-1)) {
            narrow += '?';
            state = std::mbstate_t{};
            if (pair) ++i;
            continue;
        }
        narrow.append(bytes, written);
    }
    return narrow;
}

std::string DescribeAdaptersFailure(std::uint32_t error) {
    return FormatAdaptersFailure(error, error == kErrorNoData ? std::nullopt : SystemMessageFirstCharacter(error));
}

void ListNetworkAdapters(std::string& output) { ListNetworkAdapters(output, QueryAdapters); }

void ListNetworkAdapters(std::string& output, const AdaptersQuery& query) {
    output.clear();
    ULONG size = kFirstBufferSize;
    w32::ScopedHeap buffer(::HeapAlloc(::GetProcessHeap(), 0, size));
    if (query(buffer.Get(), size) == ERROR_BUFFER_OVERFLOW) {
        buffer.Reset();
        buffer.Reset(::HeapAlloc(::GetProcessHeap(), 0, size));
    }
    if (!buffer) {
        output += kAdapterAllocationFailure;
        return;
    }
    // Asked again even when the first answer fitted: the second call's
    // result is the one reported.
    const std::uint32_t result = query(buffer.Get(), size);
    if (result != NO_ERROR) {
        output += DescribeAdaptersFailure(result);
        return;
    }
    output += kAdaptersHeading;
    for (auto* adapter = static_cast<const IP_ADAPTER_ADDRESSES*>(buffer.Get()); adapter; adapter = adapter->Next) {
        AppendAdapterBlock(output, RecordOf(*adapter));
    }
}

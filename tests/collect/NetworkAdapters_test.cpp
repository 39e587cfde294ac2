// The adapter listing against the machine's real adapters (Wine's, made
// from the host's interfaces) and against a made-up machine with one
// adapter, and its failure lines with the system's texts.
#include "collect/NetworkAdapters.h"

#include <winsock2.h>
#include <windows.h>
#include <iphlpapi.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <new>
#include <vector>

namespace {

// The adapters as the test reads them itself, for the expectations.
class AdapterSnapshot {
public:
    AdapterSnapshot() {
        ULONG size = 0;
        ::GetAdaptersAddresses(AF_UNSPEC, GAA_FLAG_INCLUDE_PREFIX, nullptr, nullptr, &size);
        buffer_.resize(size + 4096);
        size = static_cast<ULONG>(buffer_.size());
        ok_ = ::GetAdaptersAddresses(AF_UNSPEC, GAA_FLAG_INCLUDE_PREFIX, nullptr, First(), &size) == NO_ERROR;
    }
    bool Ok() const { return ok_; }
    IP_ADAPTER_ADDRESSES* First() { return reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer_.data()); }

private:
    std::vector<unsigned char> buffer_;
    bool ok_ = false;
};

// The text between "\tAdapter name: <name>\n" and the blank line that ends its block.
std::string BlockOf(const std::string& listing, const char* adapterName) {
    const std::size_t start = listing.find(std::string("\tAdapter name: ") + adapterName + "\n");
    if (start == std::string::npos) return {};
    const std::size_t end = listing.find("\n\n", start);
    return listing.substr(start, end == std::string::npos ? std::string::npos : end + 2 - start);
}

std::string PhysicalAddressLine(const IP_ADAPTER_ADDRESSES& adapter) {
    std::string line = "\tPhysical address: ";
    for (ULONG i = 0; i < adapter.PhysicalAddressLength; ++i) {
        char byte[8];
        std::snprintf(byte, sizeof(byte), i + 1 < adapter.PhysicalAddressLength ? "%.2X-" : "%.2X\n",
                      adapter.PhysicalAddress[i]);
        line += byte;
    }
    return line;
}

// The first character of the system's text for a code, read through the 8-bit API.
std::string SystemTextStart(DWORD error) {
    char text[512] = {};
    const DWORD length = ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                                          MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), text, sizeof(text), nullptr);
    return length > 0 ? std::string(1, text[0]) : std::string();
}

// Switches the C runtime's locale for one test.
class ScopedCLocale {
public:
    explicit ScopedCLocale(const char* name) : previous_(std::setlocale(LC_ALL, nullptr)) {
        ok_ = std::setlocale(LC_ALL, name) != nullptr;
    }
    ~ScopedCLocale() { std::setlocale(LC_ALL, previous_.c_str()); }
    bool Ok() const { return ok_; }

private:
    std::string previous_;
    bool ok_ = false;
};

}  // namespace

TEST(NetworkAdapters, EveryAdapterHasItsBlockInListOrder) {
    AdapterSnapshot adapters;
    ASSERT_TRUE(adapters.Ok());
    std::string listing = "left over";
    ListNetworkAdapters(listing);
    ASSERT_EQ(listing.rfind("Adapters enumeration:\n\tAdapter name: ", 0), 0u) << listing;

    std::size_t previous = 0;
    std::size_t blocks = 0;
    for (auto* adapter = adapters.First(); adapter; adapter = adapter->Next, ++blocks) {
        const std::size_t at = listing.find(std::string("\tAdapter name: ") + adapter->AdapterName + "\n");
        ASSERT_NE(at, std::string::npos) << adapter->AdapterName;
        EXPECT_GT(at, previous);
        previous = at;
    }
    EXPECT_GE(blocks, 1u);
    // Each block ends with the prefix line and a blank line.
    EXPECT_EQ(listing.substr(listing.size() - 2), "\n\n");
}

TEST(NetworkAdapters, LoopbackHasNoPhysicalAddressLine) {
    AdapterSnapshot adapters;
    ASSERT_TRUE(adapters.Ok());
    std::string listing;
    ListNetworkAdapters(listing);
    bool seen = false;
    for (auto* adapter = adapters.First(); adapter; adapter = adapter->Next) {
        if (adapter->IfType != IF_TYPE_SOFTWARE_LOOPBACK) continue;
        seen = true;
        const std::string block = BlockOf(listing, adapter->AdapterName);
        EXPECT_EQ(block.find("\tPhysical address: "), std::string::npos) << block;
        // Straight from the friendly name to the flags.
        EXPECT_NE(block.find("\n\tFriendly name: " + NarrowInCurrentLocale(adapter->FriendlyName) + "\n\tFlags: "),
                  std::string::npos)
            << block;
        EXPECT_NE(block.find("\tIfType: 24\n"), std::string::npos) << block;
        EXPECT_NE(block.find("\tZoneIndices (hex): 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 \n"), std::string::npos) << block;
    }
    EXPECT_TRUE(seen) << "Wine lists the host's loop-back interface";
}

TEST(NetworkAdapters, HardwareAddressInUpperCaseHexWithDashes) {
    AdapterSnapshot adapters;
    ASSERT_TRUE(adapters.Ok());
    std::string listing;
    ListNetworkAdapters(listing);
    for (auto* adapter = adapters.First(); adapter; adapter = adapter->Next) {
        if (adapter->PhysicalAddressLength == 0) continue;
        const std::string block = BlockOf(listing, adapter->AdapterName);
        EXPECT_NE(block.find("\n\tFriendly name: " + NarrowInCurrentLocale(adapter->FriendlyName) + "\n" +
                             PhysicalAddressLine(*adapter) + "\tFlags: "),
                  std::string::npos)
            << block;
    }
}

TEST(NetworkAdapters, NoDataExplainsThatNothingWasFound) {
    EXPECT_EQ(DescribeAdaptersFailure(ERROR_NO_DATA),
              "Call to GetAdaptersAddresses failed with error: 232\n"
              "\tNo addresses were found for the requested parameters\n");
}

TEST(NetworkAdapters, OtherErrorShowsTheFirstCharacterOfTheSystemText) {
    // Windows and Wine both begin this one with "Not enough memory".
    EXPECT_EQ(DescribeAdaptersFailure(ERROR_NOT_ENOUGH_MEMORY),
              "Call to GetAdaptersAddresses failed with error: 8\n\tError: N");
    // "Invalid parameter." under Wine, "The parameter is incorrect." under Windows.
    EXPECT_EQ(DescribeAdaptersFailure(ERROR_INVALID_PARAMETER),
              "Call to GetAdaptersAddresses failed with error: 87\n\tError: " +
                  SystemTextStart(ERROR_INVALID_PARAMETER));
}

TEST(NetworkAdapters, ErrorWithoutSystemTextShowsOnlyTheFailureLine) {
    EXPECT_EQ(DescribeAdaptersFailure(0x2000FFFF), "Call to GetAdaptersAddresses failed with error: 536936447\n");
}

TEST(NarrowInCurrentLocale, ClassicLocaleKeepsLatin1AndMarksTheRest) {
    ScopedCLocale locale("C");
    ASSERT_TRUE(locale.Ok());
    EXPECT_EQ(NarrowInCurrentLocale(L"Ethernet 2"), "Ethernet 2");
    EXPECT_EQ(NarrowInCurrentLocale(L"R\u00e9seau"), "R\xe9seau");
    EXPECT_EQ(NarrowInCurrentLocale(L"\u20ac \u4e2d\u6587"), "? ??");
    EXPECT_EQ(NarrowInCurrentLocale(L"a\U0001F600b"), "a?b");  // one mark for a surrogate pair
}

TEST(NarrowInCurrentLocale, UsersLocaleUsesItsCodePage) {
    ScopedCLocale locale("English_United States.1252");
    ASSERT_TRUE(locale.Ok());
    EXPECT_EQ(NarrowInCurrentLocale(L"R\u00e9seau \u20ac"), "R\xe9seau \x80");
    EXPECT_EQ(NarrowInCurrentLocale(L"\u4e2d\u6587 x"), "?? x");
}

namespace {

// One Ethernet adapter, laid out in the caller's buffer as
// GetAdaptersAddresses lays out its answer: the record, then its address
// and prefix lists and its names, every pointer into the same buffer.
class OneAdapterMachine {
public:
    std::uint32_t Query(void* buffer, unsigned long& size) {
        sizesAsked.push_back(size);
        if (size < kNeeded) {
            size = kNeeded;
            return ERROR_BUFFER_OVERFLOW;
        }
        auto* layout = new (buffer) Layout{};
        IP_ADAPTER_ADDRESSES& adapter = layout->adapter;
        adapter.Length = sizeof(adapter);
        adapter.IfIndex = 7;
        std::strcpy(layout->adapterName, "{4A1B2C3D-5E6F-4A7B-8C9D-0E1F2A3B4C5D}");
        adapter.AdapterName = layout->adapterName;
        layout->unicast[0].Next = &layout->unicast[1];
        adapter.FirstUnicastAddress = &layout->unicast[0];
        adapter.FirstMulticastAddress = &layout->multicast;
        std::wcscpy(layout->dnsSuffix, L"corp.example");
        adapter.DnsSuffix = layout->dnsSuffix;
        std::wcscpy(layout->description, L"Orvane Test Ethernet Adapter");
        adapter.Description = layout->description;
        std::wcscpy(layout->friendlyName, L"Ethernet 2");
        adapter.FriendlyName = layout->friendlyName;
        const BYTE hardware[] = {0x00, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E};
        std::memcpy(adapter.PhysicalAddress, hardware, sizeof(hardware));
        adapter.PhysicalAddressLength = sizeof(hardware);
        adapter.Flags = 0x1C5;
        adapter.Mtu = 1500;
        adapter.IfType = IF_TYPE_ETHERNET_CSMACD;
        adapter.OperStatus = IfOperStatusUp;
        adapter.Ipv6IfIndex = 7;
        adapter.ZoneIndices[0] = 7;
        adapter.ZoneIndices[1] = 7;
        adapter.ZoneIndices[14] = 0x1A;
        layout->prefixes[0].Next = &layout->prefixes[1];
        layout->prefixes[1].Next = &layout->prefixes[2];
        adapter.FirstPrefix = &layout->prefixes[0];
        return NO_ERROR;
    }

    std::vector<unsigned long> sizesAsked;

private:
    struct Layout {
        IP_ADAPTER_ADDRESSES adapter;
        IP_ADAPTER_UNICAST_ADDRESS unicast[2];
        IP_ADAPTER_MULTICAST_ADDRESS multicast;
        IP_ADAPTER_PREFIX prefixes[3];
        char adapterName[64];
        wchar_t dnsSuffix[32];
        wchar_t description[64];
        wchar_t friendlyName[32];
    };

public:
    static constexpr unsigned long kNeeded = sizeof(Layout);
};

}  // namespace

TEST(NetworkAdapters, OneAdapterGivesTheHeadingOneBlockAndItsBlankLine) {
    OneAdapterMachine machine;
    std::string listing = "left over";
    ListNetworkAdapters(listing, [&machine](void* buffer, unsigned long& size) { return machine.Query(buffer, size); });
    EXPECT_EQ(listing,
              "Adapters enumeration:\n"
              "\tAdapter name: {4A1B2C3D-5E6F-4A7B-8C9D-0E1F2A3B4C5D}\n"
              "\tIfIndex (IPv4 interface): 7\n"
              "\tNumber of Unicast Addresses: 2\n"
              "\tNo Anycast Addresses\n"
              "\tNumber of Multicast Addresses: 1\n"
              "\tNo DNS Server Addresses\n"
              "\tDNS Suffix: corp.example\n"
              "\tDescription: Orvane Test Ethernet Adapter\n"
              "\tFriendly name: Ethernet 2\n"
              "\tPhysical address: 00-1A-2B-3C-4D-5E\n"
              "\tFlags: 453\n"
              "\tMtu: 1500\n"
              "\tIfType: 6\n"
              "\tOperStatus: 1\n"
              "\tIpv6IfIndex (IPv6 interface): 7\n"
              "\tZoneIndices (hex): 7 7 0 0 0 0 0 0 0 0 0 0 0 0 1a 0 \n"
              "\tNumber of IP Adapter Prefix entries: 3\n"
              "\n");
    // Room for one record first, then the size the answer asked for.
    EXPECT_EQ(machine.sizesAsked, (std::vector<unsigned long>{448, OneAdapterMachine::kNeeded}));
}

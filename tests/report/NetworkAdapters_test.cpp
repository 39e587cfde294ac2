// The adapter listing against the machine's real adapters (Wine's, made
// from the host's interfaces), and its failure lines with the system's texts.
#include "report/NetworkAdapters.h"

#include <winsock2.h>
#include <windows.h>
#include <iphlpapi.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
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

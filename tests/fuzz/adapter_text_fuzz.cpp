// The Network section's text from arbitrary adapter records: each block is
// compared with what the listing's printf formats make of the same fields
// ("%u", "%d", "%ld" and "%lu" with Windows' 32-bit long, "%.2X", "%lx"),
// and the listing of many adapters, far beyond the 65,536 bytes of the
// original buffer, is checked to be every block whole and in order.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "FuzzCheck.h"
#include "FuzzRecords.h"
#include "format/AdapterText.h"

namespace {

std::string Printed(const char* format, auto... values) {
    char text[64];
    const int length = std::snprintf(text, sizeof text, format, values...);
    FUZZ_CHECK(length >= 0 && length < static_cast<int>(sizeof text));
    return std::string(text, static_cast<std::size_t>(length));
}

std::string Count(const char* what, std::size_t count) {
    if (count == 0) return std::string("\tNo ") + what + "\n";
    return std::string("\tNumber of ") + what + Printed(": %d\n", static_cast<std::int32_t>(count));
}

// The block as the listing's formats write it.
std::string ExpectedBlock(const AdapterRecord& a) {
    std::string text = "\tAdapter name: " + a.adapterName + "\n";
    text += Printed("\tIfIndex (IPv4 interface): %u\n", a.ifIndex);
    text += Count("Unicast Addresses", a.unicastCount);
    text += Count("Anycast Addresses", a.anycastCount);
    text += Count("Multicast Addresses", a.multicastCount);
    text += Count("DNS Server Addresses", a.dnsServerCount);
    text += "\tDNS Suffix: " + a.dnsSuffix + "\n";
    text += "\tDescription: " + a.description + "\n";
    text += "\tFriendly name: " + a.friendlyName + "\n";
    if (!a.physicalAddress.empty()) {
        text += "\tPhysical address: ";
        for (std::size_t i = 0; i < a.physicalAddress.size(); ++i)
            text += Printed(i + 1 < a.physicalAddress.size() ? "%.2X-" : "%.2X\n", a.physicalAddress[i]);
    }
    text += Printed("\tFlags: %d\n", static_cast<std::int32_t>(a.flags));
    text += Printed("\tMtu: %u\n", a.mtu);
    text += Printed("\tIfType: %d\n", static_cast<std::int32_t>(a.ifType));
    text += Printed("\tOperStatus: %d\n", static_cast<std::int32_t>(a.operStatus));
    text += Printed("\tIpv6IfIndex (IPv6 interface): %u\n", a.ipv6IfIndex);
    text += "\tZoneIndices (hex): ";
    for (std::uint32_t zone : a.zoneIndices) text += Printed("%x ", zone);
    text += "\n";
    if (a.prefixCount == 0)
        text += "\tNo IP Adapter Prefix entries\n";
    else
        text += Printed("\tNumber of IP Adapter Prefix entries: %d\n", static_cast<std::int32_t>(a.prefixCount));
    return text + "\n";
}

std::size_t ListLength(FuzzedDataProvider& input) {
    // Mostly short lists, sometimes the longest a size_t can say.
    return input.ConsumeBool() ? input.ConsumeIntegralInRange<std::size_t>(0, 4) : input.ConsumeIntegral<std::size_t>();
}

AdapterRecord Record(FuzzedDataProvider& input) {
    AdapterRecord a;
    a.adapterName = input.ConsumeRandomLengthString(64);
    a.ifIndex = input.ConsumeIntegral<std::uint32_t>();
    a.unicastCount = ListLength(input);
    a.anycastCount = ListLength(input);
    a.multicastCount = ListLength(input);
    a.dnsServerCount = ListLength(input);
    a.dnsSuffix = input.ConsumeRandomLengthString(64);
    a.description = input.ConsumeRandomLengthString(256);
    a.friendlyName = input.ConsumeRandomLengthString(256);
    a.physicalAddress = input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, 12));
    fuzzrecords::DrawAdapterNumbers(input, a);
    a.prefixCount = ListLength(input);
    return a;
}

void CheckFailure(FuzzedDataProvider& input) {
    const auto error = input.ConsumeBool() ? kErrorNoData : input.ConsumeIntegral<std::uint32_t>();
    std::optional<std::string> first;
    if (input.ConsumeBool()) first = input.ConsumeBytesAsString(1);
    std::string expected = Printed("Call to GetAdaptersAddresses failed with error: %d\n", static_cast<std::int32_t>(error));
    if (error == kErrorNoData)
        expected += "\tNo addresses were found for the requested parameters\n";
    else if (first)
        expected += "\tError: " + *first;
    FUZZ_CHECK(FormatAdaptersFailure(error, first) == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    CheckFailure(input);

    // A few distinct adapters, each repeated: hundreds of blocks when the
    // input asks for them, so the listing outgrows 64 KiB.
    std::string listing(kAdaptersHeading);
    std::string expected(kAdaptersHeading);
    const int kinds = input.ConsumeIntegralInRange<int>(0, 4);
    for (int k = 0; k < kinds; ++k) {
        const int copies = input.ConsumeIntegralInRange<int>(1, 100);
        const AdapterRecord record = Record(input);
        const std::string block = ExpectedBlock(record);
        std::string alone;
        AppendAdapterBlock(alone, record);
        FUZZ_CHECK(alone == block);
        for (int c = 0; c < copies; ++c) {
            AppendAdapterBlock(listing, record);
            expected += block;
        }
    }
    // Never cut, whatever its length.
    FUZZ_CHECK(listing == expected);
    return 0;
}

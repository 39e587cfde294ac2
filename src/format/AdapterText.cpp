#include "format/AdapterText.h"

#include "format/NumberText.h"

namespace {
// The listing's numbers follow printf's "%d", "%ld", "%u", "%lu" on Windows,
// where long is 32 bits: "signed" values above 2^31 therefore show negative.
std::string AsSigned(std::uint32_t value) { return numtext::Signed<char>(static_cast<std::int32_t>(value)); }
std::string AsUnsigned(std::uint32_t value) { return numtext::Unsigned<char>(value); }

void AppendLine(std::string& output, std::string_view label, const std::string& value) {
    output += '\t';
    output += label;
    output += value;
    output += '\n';
}

void AppendCount(std::string& output, std::size_t count, std::string_view what) {
    if (count == 0) {
        AppendLine(output, "No " + std::string(what), "");
        return;
    }
    AppendLine(output, "Number of " + std::string(what) + ": ", AsSigned(static_cast<std::uint32_t>(count)));
}

void AppendPhysicalAddress(std::string& output, const std::vector<std::uint8_t>& address) {
    if (address.empty()) return;
    output += "\tPhysical address: ";
    for (std::size_t i = 0; i < address.size(); ++i) {
        output += numtext::Hex<char>(address[i], 2, true);
        output += i + 1 < address.size() ? '-' : '\n';
    }
}

void AppendZoneIndices(std::string& output, const std::array<std::uint32_t, 16>& zones) {
    output += "\tZoneIndices (hex): ";
    for (std::uint32_t zone : zones) {
        output += numtext::Hex<char>(zone, 1, false);
        output += ' ';
    }
    output += '\n';
}

void AppendPrefixCount(std::string& output, std::size_t count) {
    if (count == 0) {
        output += "\tNo IP Adapter Prefix entries\n";
        return;
    }
    AppendLine(output, "Number of IP Adapter Prefix entries: ", AsSigned(static_cast<std::uint32_t>(count)));
}
}  // namespace

void AppendAdapterBlock(std::string& output, const AdapterRecord& adapter) {
    AppendLine(output, "Adapter name: ", adapter.adapterName);
    AppendLine(output, "IfIndex (IPv4 interface): ", AsUnsigned(adapter.ifIndex));
    AppendCount(output, adapter.unicastCount, "Unicast Addresses");
    AppendCount(output, adapter.anycastCount, "Anycast Addresses");
    AppendCount(output, adapter.multicastCount, "Multicast Addresses");
    AppendCount(output, adapter.dnsServerCount, "DNS Server Addresses");
    AppendLine(output, "DNS Suffix: ", adapter.dnsSuffix);
    AppendLine(output, "Description: ", adapter.description);
    AppendLine(output, "Friendly name: ", adapter.friendlyName);
    AppendPhysicalAddress(output, adapter.physicalAddress);
    AppendLine(output, "Flags: ", AsSigned(adapter.flags));
    AppendLine(output, "Mtu: ", AsUnsigned(adapter.mtu));
    AppendLine(output, "IfType: ", AsSigned(adapter.ifType));
    AppendLine(output, "OperStatus: ", AsSigned(adapter.operStatus));
    AppendLine(output, "Ipv6IfIndex (IPv6 interface): ", AsUnsigned(adapter.ipv6IfIndex));
    AppendZoneIndices(output, adapter.zoneIndices);
    AppendPrefixCount(output, adapter.prefixCount);
    output += '\n';
}

std::string FormatAdaptersFailure(std::uint32_t error, const std::optional<std::string>& firstCharacter) {
    std::string text = "Call to GetAdaptersAddresses failed with error: " + AsSigned(error) + "\n";
    if (error == kErrorNoData) return text + "\tNo addresses were found for the requested parameters\n";
    if (firstCharacter) text += "\tError: " + *firstCharacter;
    return text;
}

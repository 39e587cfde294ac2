#include "format/AdapterText.h"

#include "format/NumberText.h"

namespace {
// The listing's numbers follow printf's "%d", "%ld", "%u", "%lu" on Windows,
// where long is 32 bits: "signed" values above 2^31 therefore show negative.
std::string AsSigned(std::uint32_t value) { return numtext::Signed<char>(static_cast<std::int32_t>(value)); }
std::string AsUnsigned(std::uint32_t value) { return numtext::Unsigned<char>(value); }

void AppendLine(std::string& output, std::string_view label, const std::string& value) {
    output += label;
    output += value;
    output += '\n';
}

void AppendCount(std::string& output, std::size_t count, std::string_view what) {
    if (count == 0) {
        output += lineform::kNoCount.Narrow();
        output += what;
        output += '\n';
        return;
    }
    output += lineform::kNumberOf.Narrow();
    output += what;
    AppendLine(output, lineform::kCountSeparator.Narrow(), AsSigned(static_cast<std::uint32_t>(count)));
}

void AppendPhysicalAddress(std::string& output, const std::vector<std::uint8_t>& address) {
    if (address.empty()) return;
    output += lineform::kPhysicalAddress.Narrow();
    for (std::size_t i = 0; i < address.size(); ++i) {
        output += numtext::Hex<char>(address[i], 2, true);
        output += i + 1 < address.size() ? '-' : '\n';
    }
}

void AppendZoneIndices(std::string& output, const std::array<std::uint32_t, 16>& zones) {
    output += lineform::kZoneIndices.Narrow();
    for (std::uint32_t zone : zones) {
        output += numtext::Hex<char>(zone, 1, false);
        output += ' ';
    }
    output += '\n';
}

}  // namespace

void AppendAdapterBlock(std::string& output, const AdapterRecord& adapter) {
    using namespace lineform;
    AppendLine(output, kAdapterName.Narrow(), adapter.adapterName);
    AppendLine(output, kIfIndex.Narrow(), AsUnsigned(adapter.ifIndex));
    AppendCount(output, adapter.unicastCount, kUnicastAddresses.Narrow());
    AppendCount(output, adapter.anycastCount, kAnycastAddresses.Narrow());
    AppendCount(output, adapter.multicastCount, kMulticastAddresses.Narrow());
    AppendCount(output, adapter.dnsServerCount, kDnsServerAddresses.Narrow());
    AppendLine(output, kDnsSuffix.Narrow(), adapter.dnsSuffix);
    AppendLine(output, kDescription.Narrow(), adapter.description);
    AppendLine(output, kFriendlyName.Narrow(), adapter.friendlyName);
    AppendPhysicalAddress(output, adapter.physicalAddress);
    AppendLine(output, kFlags.Narrow(), AsSigned(adapter.flags));
    AppendLine(output, kMtu.Narrow(), AsUnsigned(adapter.mtu));
    AppendLine(output, kIfType.Narrow(), AsSigned(adapter.ifType));
    AppendLine(output, kOperStatus.Narrow(), AsSigned(adapter.operStatus));
    AppendLine(output, kIpv6IfIndex.Narrow(), AsUnsigned(adapter.ipv6IfIndex));
    AppendZoneIndices(output, adapter.zoneIndices);
    AppendCount(output, adapter.prefixCount, kPrefixEntries.Narrow());
    output += '\n';
}

std::string FormatAdaptersFailure(std::uint32_t error, const std::optional<std::string>& firstCharacter) {
    std::string text = std::string(lineform::kEnumerationError.Narrow()) + AsSigned(error) + "\n";
    if (error == kErrorNoData) return text + std::string(lineform::kNoAddressesFound.Narrow()) + "\n";
    if (firstCharacter) text += std::string(lineform::kErrorText.Narrow()) + *firstCharacter;
    return text;
}

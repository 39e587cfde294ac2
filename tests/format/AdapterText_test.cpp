#include "format/AdapterText.h"

#include <gtest/gtest.h>

namespace {
AdapterRecord EthernetRecord() {
    AdapterRecord record;
    record.adapterName = "{4D36E972-E325-11CE-BFC1-08002BE10318}";
    record.ifIndex = 12;
    record.unicastCount = 2;
    record.anycastCount = 1;
    record.multicastCount = 3;
    record.dnsServerCount = 2;
    record.dnsSuffix = "example.lan";
    record.description = "Intel(R) Ethernet Connection";
    record.friendlyName = "Ethernet";
    record.physicalAddress = {0x00, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E};
    record.flags = 0x1C5;
    record.mtu = 1500;
    record.ifType = 6;
    record.operStatus = 1;
    record.ipv6IfIndex = 12;
    record.zoneIndices = {12, 12, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0};
    record.prefixCount = 4;
    return record;
}

AdapterRecord LoopbackRecord() {
    AdapterRecord record;
    record.adapterName = "{00000001-0000-0000-0000-4E6574446576}";
    record.ifIndex = 1;
    record.unicastCount = 2;
    record.friendlyName = "lo";
    record.description = "lo";
    record.flags = 0x180;
    record.mtu = 65536;
    record.ifType = 24;
    record.operStatus = 1;
    return record;
}

std::string Block(const AdapterRecord& record) {
    std::string text;
    AppendAdapterBlock(text, record);
    return text;
}
}  // namespace

TEST(AdapterBlock, EthernetAdapterEveryLineInOrder) {
    EXPECT_EQ(Block(EthernetRecord()),
              "\tAdapter name: {4D36E972-E325-11CE-BFC1-08002BE10318}\n"
              "\tIfIndex (IPv4 interface): 12\n"
              "\tNumber of Unicast Addresses: 2\n"
              "\tNumber of Anycast Addresses: 1\n"
              "\tNumber of Multicast Addresses: 3\n"
              "\tNumber of DNS Server Addresses: 2\n"
              "\tDNS Suffix: example.lan\n"
              "\tDescription: Intel(R) Ethernet Connection\n"
              "\tFriendly name: Ethernet\n"
              "\tPhysical address: 00-1A-2B-3C-4D-5E\n"
              "\tFlags: 453\n"
              "\tMtu: 1500\n"
              "\tIfType: 6\n"
              "\tOperStatus: 1\n"
              "\tIpv6IfIndex (IPv6 interface): 12\n"
              "\tZoneIndices (hex): c c 1 1 1 0 0 0 0 0 0 0 0 0 1 0 \n"
              "\tNumber of IP Adapter Prefix entries: 4\n"
              "\n");
}

TEST(AdapterBlock, LoopbackHasNoPhysicalAddressLineAndTheNoForms) {
    // Straight from the friendly name to the flags; every empty list in its "No" form.
    EXPECT_EQ(Block(LoopbackRecord()),
              "\tAdapter name: {00000001-0000-0000-0000-4E6574446576}\n"
              "\tIfIndex (IPv4 interface): 1\n"
              "\tNumber of Unicast Addresses: 2\n"
              "\tNo Anycast Addresses\n"
              "\tNo Multicast Addresses\n"
              "\tNo DNS Server Addresses\n"
              "\tDNS Suffix: \n"
              "\tDescription: lo\n"
              "\tFriendly name: lo\n"
              "\tFlags: 384\n"
              "\tMtu: 65536\n"
              "\tIfType: 24\n"
              "\tOperStatus: 1\n"
              "\tIpv6IfIndex (IPv6 interface): 0\n"
              "\tZoneIndices (hex): 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 \n"
              "\tNo IP Adapter Prefix entries\n"
              "\n");
}

TEST(AdapterBlock, NoUnicastAddresses) {
    AdapterRecord record = LoopbackRecord();
    record.unicastCount = 0;
    EXPECT_NE(Block(record).find("\tIfIndex (IPv4 interface): 1\n\tNo Unicast Addresses\n\tNo Anycast Addresses\n"),
              std::string::npos);
}

TEST(AdapterBlock, NoDnsServersShowsItsOwnLine) {
    AdapterRecord record = EthernetRecord();
    record.dnsServerCount = 0;
    EXPECT_NE(Block(record).find("\tNumber of Multicast Addresses: 3\n\tNo DNS Server Addresses\n\tDNS Suffix: "),
              std::string::npos);
}

TEST(AdapterBlock, PhysicalAddressUpperCaseWithDashesWhateverItsLength) {
    AdapterRecord record = LoopbackRecord();
    record.physicalAddress = {0xAB};
    EXPECT_NE(Block(record).find("\tFriendly name: lo\n\tPhysical address: AB\n\tFlags: "), std::string::npos);
    record.physicalAddress = {0x02, 0x00, 0x4c, 0x4f, 0x4f, 0x50, 0xfe, 0xff};
    EXPECT_NE(Block(record).find("\tPhysical address: 02-00-4C-4F-4F-50-FE-FF\n"), std::string::npos);
}

TEST(AdapterBlock, SixteenZoneIndicesInLowerCaseHexEachFollowedByABlank) {
    AdapterRecord record = LoopbackRecord();
    record.zoneIndices = {0xffffffff, 0x1a, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x10};
    EXPECT_NE(Block(record).find("\tZoneIndices (hex): ffffffff 1a 0 0 0 0 0 0 0 0 0 0 0 0 0 10 \n"),
              std::string::npos);
}

TEST(AdapterBlock, SignedFieldsAboveTwoToTheThirtyFirstShowNegative) {
    // "%ld" with a 32-bit long, "%lu"/"%u" unsigned.
    AdapterRecord record = LoopbackRecord();
    record.flags = 0x80000000u;
    record.ifType = 0xFFFFFFFFu;
    record.operStatus = 7;
    record.mtu = 0xFFFFFFFFu;
    record.ifIndex = 0xFFFFFFFFu;
    record.ipv6IfIndex = 0x80000001u;
    const std::string text = Block(record);
    EXPECT_NE(text.find("\tIfIndex (IPv4 interface): 4294967295\n"), std::string::npos);
    EXPECT_NE(text.find("\tFlags: -2147483648\n\tMtu: 4294967295\n\tIfType: -1\n\tOperStatus: 7\n"
                        "\tIpv6IfIndex (IPv6 interface): 2147483649\n"),
              std::string::npos);
}

TEST(AdapterBlock, NamesArePassedThroughAsTheyAre) {
    AdapterRecord record = LoopbackRecord();
    record.friendlyName = "Connexion r\xe9seau ?";
    record.dnsSuffix = "corp.example";
    EXPECT_NE(Block(record).find("\tDNS Suffix: corp.example\n\tDescription: lo\n"
                                 "\tFriendly name: Connexion r\xe9seau ?\n"),
              std::string::npos);
}

TEST(AdapterListing, OneAdapterGivesHeadingBlockAndBlankLine) {
    std::string text(kAdaptersHeading);
    AppendAdapterBlock(text, LoopbackRecord());
    EXPECT_EQ(text.rfind("Adapters enumeration:\n\tAdapter name: ", 0), 0u);
    const std::string tail = "\tNo IP Adapter Prefix entries\n\n";
    EXPECT_EQ(text.substr(text.size() - tail.size()), tail);
}

TEST(AdapterListing, MoreThanSixtyFourKibibytesIsNeverCut) {
    std::string text(kAdaptersHeading);
    const std::string oneBlock = Block(EthernetRecord());
    const std::size_t blocks = 65536 / oneBlock.size() + 20;
    for (std::size_t i = 0; i < blocks; ++i) AppendAdapterBlock(text, EthernetRecord());
    ASSERT_GT(text.size(), 65536u);
    EXPECT_EQ(text.size(), kAdaptersHeading.size() + blocks * oneBlock.size());
    EXPECT_EQ(text.substr(text.size() - oneBlock.size()), oneBlock);
}

TEST(AdaptersFailure, NoDataExplainsThatNothingWasFound) {
    EXPECT_EQ(FormatAdaptersFailure(232, std::nullopt),
              "Call to GetAdaptersAddresses failed with error: 232\n"
              "\tNo addresses were found for the requested parameters\n");
    EXPECT_EQ(FormatAdaptersFailure(232, std::string("N")),
              "Call to GetAdaptersAddresses failed with error: 232\n"
              "\tNo addresses were found for the requested parameters\n");
}

TEST(AdaptersFailure, OtherErrorShowsOneCharacterAndNoLineFeed) {
    EXPECT_EQ(FormatAdaptersFailure(87, std::string("T")),
              "Call to GetAdaptersAddresses failed with error: 87\n\tError: T");
    EXPECT_EQ(FormatAdaptersFailure(8, std::string("N")),
              "Call to GetAdaptersAddresses failed with error: 8\n\tError: N");
}

TEST(AdaptersFailure, WithoutSystemTextOnlyTheFailureLine) {
    EXPECT_EQ(FormatAdaptersFailure(12345, std::nullopt), "Call to GetAdaptersAddresses failed with error: 12345\n");
    EXPECT_EQ(FormatAdaptersFailure(0x80004005u, std::nullopt),
              "Call to GetAdaptersAddresses failed with error: -2147467259\n");
}

TEST(AdaptersFailure, AllocationFailureLine) {
    EXPECT_EQ(kAdapterAllocationFailure, "Memory allocation failed for IP_ADAPTER_ADDRESSES struct\n");
}

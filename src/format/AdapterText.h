// The Network section's text, made from plain adapter records so that every
// line form is tested on any host; NetworkAdapters.cpp gathers the records.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "format/LineForms.h"

// What the listing reports of one adapter, already in 8-bit text.
struct AdapterRecord {
    std::string adapterName;
    std::uint32_t ifIndex = 0;
    std::size_t unicastCount = 0;
    std::size_t anycastCount = 0;
    std::size_t multicastCount = 0;
    std::size_t dnsServerCount = 0;
    std::string dnsSuffix;
    std::string description;
    std::string friendlyName;
    std::vector<std::uint8_t> physicalAddress;  // empty: no hardware address
    std::uint32_t flags = 0;
    std::uint32_t mtu = 0;
    std::uint32_t ifType = 0;
    std::uint32_t operStatus = 0;
    std::uint32_t ipv6IfIndex = 0;
    std::array<std::uint32_t, 16> zoneIndices{};
    std::size_t prefixCount = 0;
};

inline constexpr auto kAdaptersHeadingPiece = lineform::LinePiece<char>(lineform::kAdaptersHeading);
inline constexpr auto kAdapterAllocationFailurePiece = lineform::LinePiece<char>(lineform::kAllocationFailure);
inline constexpr std::string_view kAdaptersHeading = kAdaptersHeadingPiece.View();  // "Adapters enumeration:\n"
inline constexpr std::string_view kAdapterAllocationFailure = kAdapterAllocationFailurePiece.View();
inline constexpr std::uint32_t kErrorNoData = 232;  // ERROR_NO_DATA

// Appends the block of one adapter, closed by a blank line.
void AppendAdapterBlock(std::string& output, const AdapterRecord& adapter);

// The lines for a failed enumeration. `firstCharacter` is the first
// character of the system's text for the code (in 8-bit text), when the
// system has one: the listing shows only that, with no line feed after it.
std::string FormatAdaptersFailure(std::uint32_t error, const std::optional<std::string>& firstCharacter);

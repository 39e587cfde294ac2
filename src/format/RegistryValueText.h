// Report lines made from raw registry data. The type of a value is never
// looked at: the report shows what a "%s" or a "%d" makes of its bytes, so a
// number stored as a string shows up as the number its first bytes spell.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// Values are read into a buffer of this many bytes; a larger value is not
// read at all (and so gives no line).
inline constexpr std::size_t kRegistryDataCapacity = 4096;

using RegistryBytes = std::span<const std::uint8_t>;

// The data read as if it stood in a buffer of kRegistryDataCapacity bytes
// cleared before the read: as little-endian UTF-16 up to the first NUL unit,
// or up to the end of the data when there is none (a last odd byte counts as
// a unit whose high byte is 0). Never reads past the buffer's capacity.
std::wstring RegistryDataAsText(RegistryBytes data);

// The first four bytes as a signed little-endian 32-bit number; bytes that a
// shorter value does not have count as 0.
std::int32_t RegistryDataAsNumber(RegistryBytes data);

enum class RegistryValueFormat { kText, kNumber };

struct InstallationValue {
    std::wstring_view name;
    RegistryValueFormat format;
};

// The suite's installation data, in the order in which it is reported.
inline constexpr std::wstring_view kInstallLocationValue = L"InstallLocation";
inline constexpr std::array<InstallationValue, 7> kInstallationValues{{
    {kInstallLocationValue, RegistryValueFormat::kText},
    {L"VersionMajor", RegistryValueFormat::kNumber},
    {L"VersionMinor", RegistryValueFormat::kNumber},
    {L"VersionRevision", RegistryValueFormat::kNumber},
    {L"VersionBuildReleaseRevision", RegistryValueFormat::kNumber},
    {L"VersionBuild", RegistryValueFormat::kText},
    {L"InstalledComponents", RegistryValueFormat::kText},
}};

// "\t<name>: <text or number>\n"
std::wstring FormatInstallationValueLine(const InstallationValue& value, RegistryBytes data);

// "\tid: <text>\n" for the Windows product id.
std::wstring FormatProductIdLine(RegistryBytes data);

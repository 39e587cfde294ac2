// The line forms of the report as the model's writer makes them; the reader
// (ReportParse.cpp) accepts a line only when the form made here from what it
// read gives that same line. Lines are UTF-8, without their line break.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "reader/ReportModel.h"

namespace report_model {

std::string ProgramNameLine(const std::string& name, const std::string& version);
std::string HostNameLine(const HostSection& host);
std::string VersionReportedValue(const WindowsSection& windows);  // the line less its label
std::string VersionReportedLine(const WindowsSection& windows);
std::string ProcessorValue(const ProcessorLine& processor);
std::string ProcessorLineText(const ProcessorLine& processor);
std::string AddressesValue(const AddressRange& range);
std::string AddressesLine(const AddressRange& range);
std::string MemoryLineText(const MemoryLine& memory);
std::string VolumeLineText(const VolumeLine& volume);
std::string CountLine(const std::optional<std::uint64_t>& count, std::string_view what);
std::string ZoneIndicesValue(const std::vector<std::uint32_t>& zones);
std::string ZoneIndicesLine(const std::vector<std::uint32_t>& zones);
std::string PrefixLine(std::uint64_t count);
std::string EnumerationErrorLine(std::int64_t code);
std::string EntryLine(const DirectoryEntry& entry);
// The same appended to `line`: the reader checks every entry it reads this
// way, into one buffer.
void AppendEntryLine(std::string& line, const DirectoryEntry& entry);
std::string ContentLine(const std::string& content);
std::string_view DirectoryTitle(DirectoryKind kind);  // "Current directory"; nothing for the registry's
std::string DirectoryHeadingLine(const Directory& directory);
std::string RegistryValueLine(const RegistryValue& value);
std::string RedactionLine(const std::vector<std::string>& kinds);  // "Redacted: user, keyword"

// Every recognised line in the report's order (no unrecognised ones).
std::vector<std::string> RecognisedLines(const Report& report);

}  // namespace report_model

// A saved report read back as data: what `reportcheck show`, `diff` and
// `collect` work on. The reading side of the report's line formats.
//
// The model is lossless. Every body line lands in exactly one place: a typed
// field below, or, when the reader does not recognise it where it stands, the
// `unrecognised` list with its line number. RenderReportBody() gives back the
// body exactly, byte for byte, whatever the input was.
//
// Texts are UTF-8. A lone UTF-16 surrogate (which no real report holds, but a
// damaged one may) is kept as its three-byte generalised UTF-8 form so that
// the body still renders back exactly; JSON output shows it as U+FFFD.
//
// A line counts as recognised only where the report puts it: each section's
// lines come in a fixed order, each at most once, and numbers only in the
// form the report prints them (no leading zeros, no plus sign). Anything
// else stays as text in `unrecognised`; nothing is dropped.
//
// The section types are plain structs, one per part of the report, so that
// they read like the report itself. Where a value is evidence a support
// engineer points at (a directory entry, an adapter, a registry value, a
// heading, the lines the findings rules cite), its 1-based body line number
// is kept beside it; 0 means the line is not there.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "format/EntryText.h"

namespace report_model {

// Everything the sections below share: where a section's heading stood.
struct Heading {
    bool present = false;
    // Headings are written as "\n<Word>:\n": an empty line, then the word.
    // The empty line can be missing (after the network listing's one-letter
    // error text, which ends without a line feed).
    bool blankLineBefore = true;
    std::size_t line = 0;  // the heading word's line
};

struct LineBreaks {
    bool crlf = true;  // "CR LF" as the program saves, or bare "LF"
    // 1-based numbers of the lines whose break is the other kind (a body
    // edited in an editor that mixed them); normally empty.
    std::vector<std::size_t> exceptions;
    bool finalLineBreak = true;  // whether the body's last line has a break
};

// "Orvane Software system report on <date> <time>", then an empty line.
struct Header {
    bool present = false;
    std::string text;  // the whole line
    bool blankLineAfter = true;
};

// "<name> <version>", "in <directory>", "launched as administrator".
struct ProgramSection {
    Heading heading;
    std::optional<std::string> name;
    std::optional<std::string> version;  // set together with name (may be empty)
    std::optional<std::string> directory;
    bool elevated = false;
    std::size_t nameLine = 0, directoryLine = 0, elevatedLine = 0;
};

// "\tname: <netbios> (<domain>\<wmiName>)", "\tuser: <user>"
struct HostSection {
    Heading heading;
    bool hasNameLine = false;
    std::string netbiosName, domain, wmiName;
    std::optional<std::string> user;
};

// "\tversion reported: <label> (<edition>)", "\treal version: ", "\tid: ",
// "\tsystem path: ", "\tprogram file path: ",
// "\tapplication common shared path: "
struct WindowsSection {
    Heading heading;
    bool hasVersionReported = false;
    std::string versionLabel, edition;
    std::optional<std::string> realVersion;
    std::optional<std::string> productId;
    std::optional<std::string> systemPath;
    std::optional<std::string> programFilesPath;
    std::optional<std::string> commonAppDataPath;
};

struct ProcessorLine {
    std::uint32_t architecture = 0, level = 0, revision = 0;
};
struct AddressRange {
    std::string lowest, highest;  // as printed, "0x10000"
};
struct MemoryLine {
    std::int64_t physicalK = 0, virtualK = 0, pagingK = 0;
};
// "\tC volume: 0x<serial> 0x<flags> <fs> total <n>K free <n>K (user <n>K)"
struct VolumeLine {
    std::string serial, flags;  // as printed, "0x1a2b3c4d"
    std::string fileSystem;
    std::int64_t totalK = 0, freeK = 0, userK = 0;
};

struct HardwareSection {
    Heading heading;
    std::optional<std::uint32_t> bits;  // "\tsystem: 64 bits"
    std::optional<std::string> bios;
    std::optional<std::string> board;
    std::optional<std::uint32_t> processorCount;
    std::optional<ProcessorLine> processor;
    std::optional<std::uint32_t> activeProcessorMask;
    std::optional<std::uint32_t> pageSize;
    std::optional<AddressRange> applicationAddresses;
    std::optional<MemoryLine> memory;
    std::optional<VolumeLine> volume;
    std::size_t volumeLine = 0;
};

// One adapter's block, every field optional because an edited block may lack
// some; counts of zero come from the "\tNo ... Addresses" forms.
struct Adapter {
    std::string name;  // "\tAdapter name: " opens the block
    std::optional<std::uint32_t> ifIndex;
    std::optional<std::uint64_t> unicastCount, anycastCount, multicastCount, dnsServerCount;
    std::optional<std::string> dnsSuffix, description, friendlyName;
    std::optional<std::string> physicalAddress;  // "00-1A-2B-3C-4D-5E"; no line when none
    std::optional<std::int64_t> flags;
    std::optional<std::uint32_t> mtu;
    std::optional<std::int64_t> ifType, operStatus;
    std::optional<std::uint32_t> ipv6IfIndex;
    std::optional<std::vector<std::uint32_t>> zoneIndices;  // "%lx " each
    std::optional<std::uint64_t> prefixCount;
    bool closingBlankLine = true;
    std::size_t line = 0;  // the "Adapter name" line
};

struct NetworkSection {
    Heading heading;
    bool enumerationHeading = false;  // "Adapters enumeration:"
    std::vector<Adapter> adapters;
    // The failure forms, kept as such.
    bool allocationFailed = false;                // "Memory allocation failed for ..."
    std::optional<std::int64_t> enumerationError;  // "Call to GetAdaptersAddresses failed with error: %d"
    bool noAddressesFound = false;                 // "\tNo addresses were found ..."
    std::optional<std::string> errorText;          // "\tError: " and what follows on that line
};

enum class DirectoryKind { Current, Standard, Registry, SharedParameters, SharedBatch };
std::string_view DirectoryKindName(DirectoryKind kind);  // "current", "standard", ...

// A directory entry's time as the report prints it, "07/03/2021  14:05:09"
// (day first, local time). A large report holds two per entry, hundreds of
// thousands of them: each is kept as its numbers (8 bytes, where the two
// texts took 128) and written out again when asked for.
class CalendarStamp {
public:
    // A stamp's text held in place, so that writing one out costs no
    // allocation; valid as a view while it lives.
    class Text {
    public:
        operator std::string_view() const { return {chars_.data(), size_}; }

    private:
        friend class CalendarStamp;
        std::array<char, 20> chars_{};
        std::size_t size_ = 0;
    };

    // Nothing when the text is not a time in the report's form.
    static std::optional<CalendarStamp> FromPrinted(std::string_view printed);
    Text PrintedText() const;  // "07/03/2021  14:05:09", exactly as read
    std::string Printed() const { return std::string(PrintedText()); }
    // "2021-03-07T14:05:09", local time as printed; nothing when the numbers
    // name no real time ("31/02/2026  25:61:61").
    std::optional<Text> IsoText() const;
    std::optional<std::string> Iso() const;
    CalendarTime Time() const;    // its numbers
    bool operator==(const CalendarStamp&) const = default;

private:
    Text Filled(std::string_view form, const std::array<std::size_t, 6>& ends) const;
    std::uint16_t year_ = 0;
    std::uint8_t day_ = 0, month_ = 0, hour_ = 0, minute_ = 0, second_ = 0;
};

// "%08x %10d\t<created>\t<written>\t<name>\t<version>[ ACL:...]" and, on the
// next line, "\t\t\t\tContent:\"...\"" when the listing took excerpts.
struct DirectoryEntry {
    std::uint32_t attributes = 0;
    std::int32_t size = 0;  // the low 32 bits as the report prints them, signed
    CalendarStamp created, written;
    std::string name;
    std::string version;
    std::optional<std::string> accessList;  // after " ACL:", leading blank kept
    std::optional<std::string> content;     // between the quotes
    std::size_t line = 0;
};

struct Directory {
    DirectoryKind kind = DirectoryKind::Current;
    // From the heading; the registry directory's heading names none, and
    // its path is the InstallLocation value of the registry data.
    std::optional<std::string> path;
    std::vector<DirectoryEntry> entries;
    std::size_t line = 0;  // its heading
};

struct RegistryValue {
    std::string name;                   // "VersionMajor"
    std::optional<std::string> text;    // "%s" values
    std::optional<std::int32_t> number; // "%d" values
    std::size_t line = 0;
};

struct InstallationSection {
    Heading heading;
    // In report order; the registry data's heading stands between the
    // standard and the registry directories.
    std::vector<Directory> directories;
    bool registryDataHeading = false;
    std::size_t registryDataLine = 0;
    std::vector<RegistryValue> registryValues;
};

struct UnrecognisedLine {
    std::size_t line = 0;  // 1-based in the body
    std::string text;
};

// The kinds of value `reportcheck redact` replaces, in the order its marker
// names them.
inline constexpr std::string_view kRedactionKinds[] = {
    "computer name", "domain", "user", "account", "product id",
    "hardware address", "adapter name", "DNS suffix", "keyword",
};

// "Redacted: <kind>, <kind>...": the last line of a report that `reportcheck
// redact` made, after an empty line; the kinds of value it replaced, in the
// order of kRedactionKinds.
struct Redaction {
    std::vector<std::string> kinds;
    std::size_t line = 0;  // the marker's line
};

struct Report {
    LineBreaks lineBreaks;
    std::size_t lineCount = 0;
    Header header;
    ProgramSection program;
    HostSection host;
    WindowsSection windows;
    HardwareSection hardware;
    NetworkSection network;
    InstallationSection installation;
    std::vector<UnrecognisedLine> unrecognised;
    std::optional<Redaction> redaction;
};

// Reads a body (the text between the byte-order mark and the trailer).
Report ParseReportBody(std::u16string_view body);
// The same from the body made UTF-8 (Utf8FromUtf16 or Utf8FromUtf16LE): the
// text is the reader's own, freed when it is done.
Report ParseReportUtf8(std::string body);

// The body again, exactly as it was parsed.
std::u16string RenderReportBody(const Report& report);

// UTF-16 to UTF-8 and back; lone surrogates survive both ways.
std::string Utf8FromUtf16(std::u16string_view text);
std::u16string Utf16FromUtf8(std::string_view text);
// Utf8FromUtf16 of UTF-16LE bytes (format/ReportVerdict.h's ReportBodyBytesOf),
// decoded as it goes: a large body is never held as UTF-16 too.
std::string Utf8FromUtf16LE(std::string_view bytes);

// The text with each lone surrogate (as Utf8FromUtf16 keeps it) as one
// U+FFFD: what output for people and programs shows, always valid UTF-8
// when the text came from a report.
std::string WithoutLoneSurrogates(std::string_view text);

// "2021-03-07T14:05:09" from "07/03/2021  14:05:09"; empty when the text is
// not a time in the report's form or names no real time ("31/02/2026
// 25:61:61").
std::string IsoFromReportTime(std::string_view printed);

}  // namespace report_model

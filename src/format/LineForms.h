// The one home of the report's line forms: every label, heading, separator
// and fixed line that the program's writers print and that reportcheck's
// reader, renderer and diff read back. Nothing else spells them out, so the
// two sides cannot drift apart (tests/reader/RoundTrip_test.cpp feeds what
// the writers make into the reader to prove it).
//
// Each form is ASCII and made for both widths at compile time: the writers
// work in UTF-16 (Wide), the reader in UTF-8 (Narrow). Fixed lines are kept
// without their line feed.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string_view>

namespace lineform {

template <std::size_t N>
struct Form {
    char narrow[N];
    wchar_t wide[N];

    consteval Form(const char (&text)[N]) : narrow{}, wide{} {
        for (std::size_t i = 0; i < N; ++i) {
            // Not a constant expression: a form beyond ASCII would read
            // differently through the ANSI code page.
            if (static_cast<unsigned char>(text[i]) > 0x7F) throw "line forms are ASCII";
            narrow[i] = text[i];
            wide[i] = static_cast<wchar_t>(text[i]);
        }
    }
    constexpr std::string_view Narrow() const { return {narrow, N - 1}; }
    constexpr std::wstring_view Wide() const { return {wide, N - 1}; }
    // The field's name as diff shows it: the label without its leading tabs
    // and its trailing ": " (or " : ").
    constexpr std::string_view Name() const {
        std::string_view name = Narrow();
        while (!name.empty() && name.front() == '\t') name.remove_prefix(1);
        while (!name.empty() && (name.back() == ' ' || name.back() == ':')) name.remove_suffix(1);
        return name;
    }
};

// Forms and literals joined at compile time: the pieces the writers append
// whole ("\nProgram:\n", "\tsystem: 64 bits\n").
template <typename Ch>
struct Piece {
    static constexpr std::size_t kCapacity = 96;
    Ch text[kCapacity]{};
    std::size_t size = 0;
    constexpr std::basic_string_view<Ch> View() const { return {text, size}; }
};

template <typename Ch>
consteval Piece<Ch> Joined(std::initializer_list<std::string_view> parts) {
    Piece<Ch> piece;
    for (std::string_view part : parts)
        for (char c : part) {
            if (piece.size == Piece<Ch>::kCapacity) throw "piece too long";
            piece.text[piece.size++] = static_cast<Ch>(c);
        }
    return piece;
}

// "\n<heading>\n": a section heading as the writers append it.
template <typename Ch, std::size_t N>
consteval Piece<Ch> HeadingPiece(const Form<N>& form) {
    return Joined<Ch>({"\n", form.Narrow(), "\n"});
}

// "<line>\n": a fixed line as the writers append it.
template <typename Ch, std::size_t N>
consteval Piece<Ch> LinePiece(const Form<N>& form) {
    return Joined<Ch>({form.Narrow(), "\n"});
}

// --- Header and section headings (each heading is preceded by an empty line)

inline constexpr Form kHeaderLead{"Orvane Software system report on "};
inline constexpr Form kProgramHeading{"Program:"};
inline constexpr Form kHostHeading{"Host:"};
inline constexpr Form kWindowsHeading{"Windows:"};
inline constexpr Form kHardwareHeading{"Hardware:"};
inline constexpr Form kNetworkHeading{"Network:"};
inline constexpr Form kInstallationHeading{"Orvane Software installation:"};

// Separators of the lines that hold more than one value.
inline constexpr Form kOpenParenthesis{" ("};
inline constexpr Form kCloseParenthesis{")"};
inline constexpr Form kDomainSeparator{"\\"};  // "<domain>\<name>"

// --- Program: "<name> <version>", "in <directory>", the administrator line

inline constexpr Form kProgramDirectory{"in "};
inline constexpr Form kAdministratorLine{"launched as administrator"};

// --- Host: "\tname: <netbios> (<domain>\<name>)", "\tuser: <user>"

inline constexpr Form kHostName{"\tname: "};
inline constexpr Form kUser{"\tuser: "};

// --- Windows: "\tversion reported: <label> (<edition>)" and the paths

inline constexpr Form kVersionReported{"\tversion reported: "};
inline constexpr Form kRealVersion{"\treal version: "};
inline constexpr Form kProductId{"\tid: "};
inline constexpr Form kSystemPath{"\tsystem path: "};
inline constexpr Form kProgramFilesPath{"\tprogram file path: "};
inline constexpr Form kCommonAppDataPath{"\tapplication common shared path: "};

// --- Hardware

inline constexpr Form kSystemBits{"\tsystem: "};  // then "<n> bits"
inline constexpr Form kBitsUnit{" bits"};
inline constexpr Form kBios{"\tbios: "};
inline constexpr Form kBoard{"\tboard: "};
inline constexpr Form kProcessorCount{"\tnumber of processors: "};
inline constexpr Form kProcessor{"\tprocessor : "};  // "<architecture> (<level>.<revision>)"
inline constexpr Form kActiveProcessorMask{"\tactive processor mask: "};
inline constexpr Form kPageSize{"\tpage size: "};
inline constexpr Form kApplicationAddresses{"\tapplication addresses: "};  // "0x<lowest>-0x<highest>"
inline constexpr Form kHexPrefix{"0x"};
// "\tmemory: <n>K physical, <n>K virtual, <n>K paging"
inline constexpr Form kMemory{"\tmemory: "};
inline constexpr Form kMemoryPhysical{"K physical, "};
inline constexpr Form kMemoryVirtual{"K virtual, "};
inline constexpr Form kMemoryPaging{"K paging"};
// "\tC volume: 0x<serial> 0x<flags> <fs> total <n>K free <n>K (user <n>K)"
inline constexpr Form kVolume{"\tC volume: "};
inline constexpr Form kVolumeTotal{" total "};
inline constexpr Form kVolumeFree{"K free "};
inline constexpr Form kVolumeUser{"K (user "};
inline constexpr Form kVolumeEnd{"K)"};

// --- Network: the failure forms, then one block per adapter

inline constexpr Form kAllocationFailure{"Memory allocation failed for IP_ADAPTER_ADDRESSES struct"};
inline constexpr Form kEnumerationError{"Call to GetAdaptersAddresses failed with error: "};
inline constexpr Form kNoAddressesFound{"\tNo addresses were found for the requested parameters"};
inline constexpr Form kErrorText{"\tError: "};
inline constexpr Form kAdaptersHeading{"Adapters enumeration:"};
inline constexpr Form kAdapterName{"\tAdapter name: "};
inline constexpr Form kIfIndex{"\tIfIndex (IPv4 interface): "};
// Counts: "\tNo <what>" for none, else "\tNumber of <what>: <n>".
inline constexpr Form kNoCount{"\tNo "};
inline constexpr Form kNumberOf{"\tNumber of "};
inline constexpr Form kCountSeparator{": "};
inline constexpr Form kUnicastAddresses{"Unicast Addresses"};
inline constexpr Form kAnycastAddresses{"Anycast Addresses"};
inline constexpr Form kMulticastAddresses{"Multicast Addresses"};
inline constexpr Form kDnsServerAddresses{"DNS Server Addresses"};
inline constexpr Form kDnsSuffix{"\tDNS Suffix: "};
inline constexpr Form kDescription{"\tDescription: "};
inline constexpr Form kFriendlyName{"\tFriendly name: "};
inline constexpr Form kPhysicalAddress{"\tPhysical address: "};
inline constexpr Form kFlags{"\tFlags: "};
inline constexpr Form kMtu{"\tMtu: "};
inline constexpr Form kIfType{"\tIfType: "};
inline constexpr Form kOperStatus{"\tOperStatus: "};
inline constexpr Form kIpv6IfIndex{"\tIpv6IfIndex (IPv6 interface): "};
inline constexpr Form kZoneIndices{"\tZoneIndices (hex): "};
inline constexpr Form kPrefixEntries{"IP Adapter Prefix entries"};

// --- Installation: directory headings "* <what> (<path>):", the registry
// data, entries and their excerpts

inline constexpr Form kDirectoryLead{"* "};
inline constexpr Form kDirectoryPathOpen{" ("};
inline constexpr Form kDirectoryPathClose{"):"};
inline constexpr Form kCurrentDirectory{"Current directory"};
inline constexpr Form kStandardDirectory{"Standard installation directory"};
inline constexpr Form kSharedParametersDirectory{"Shared parameters directory"};
inline constexpr Form kSharedBatchDirectory{"Shared Batch directory"};
// These two headings name no path: the location was printed with the data.
inline constexpr Form kRegistryDataHeading{"* Registry installation data:"};
inline constexpr Form kRegistryDirectoryHeading{"* Registry installation directory:"};
inline constexpr Form kRegistryValueSeparator{": "};  // "\t<name>: <value>"
inline constexpr Form kAccessList{" ACL:"};
inline constexpr Form kContentLead{"\t\t\t\tContent:\""};
inline constexpr Form kContentEnd{"\""};

// --- The marker of a redacted report: "Redacted: <kind>, <kind>" after an
// empty line, the body's last line

inline constexpr Form kRedactedLead{"Redacted: "};
inline constexpr Form kRedactedSeparator{", "};

}  // namespace lineform

#include "reader/ReportDiff.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <numeric>
#include <span>
#include <type_traits>
#include <utility>

#include "format/LineForms.h"
#include "reader/ReportModelText.h"
#include "reader/ReportRender.h"
#include "reader/TerminalText.h"

namespace report_model {

using namespace lineform;

namespace {

// The sections in the order the comparison tells them, which is also the
// order in which a report's values follow one another.
enum SectionIndex : std::size_t { kProgram, kHost, kWindows, kHardware, kNetwork, kInstallation, kUnrecognised };
constexpr std::string_view kSectionOrder[] = {
    kProgramHeading.Name(), kHostHeading.Name(),         kWindowsHeading.Name(), kHardwareHeading.Name(),
    kNetworkHeading.Name(), kInstallationHeading.Name(), "Unrecognised lines"};

// "Registry installation data" of "* Registry installation data:".
std::string ListHeadingTitle(std::string_view heading) {
    heading.remove_prefix(kDirectoryLead.Narrow().size());
    return std::string(heading.substr(0, heading.size() - 1));  // less its colon
}

std::string K(std::int64_t kilobytes) {
    return SignedText(kilobytes) + "K";
}

// A value as the report prints it, or nothing without its line.
using Value = std::optional<std::string>;

template <typename T>
Value UnsignedOf(const std::optional<T>& v) {
    return v ? Value(UnsignedText(*v)) : std::nullopt;
}
template <typename T>
Value SignedOf(const std::optional<T>& v) {
    return v ? Value(SignedText(*v)) : std::nullopt;
}
template <typename T, typename Show>
Value ShownOf(const std::optional<T>& v, Show show) {
    return v ? Value(show(*v)) : std::nullopt;
}
// One figure or text of a line that holds several (memory, volume C).
template <typename Line, typename Part, typename Show>
Value PartOf(const std::optional<Line>& line, Part Line::*part, Show show) {
    return line ? Value(show((*line).*part)) : std::nullopt;
}
const std::string& Same(const std::string& text) {
    return text;
}
Value Flag(bool set) {
    return set ? Value("yes") : std::nullopt;
}

// One labelled value of a thing compared, read from the model when asked
// for: a large report's values are never all made into text at once.
template <typename T>
struct Field {
    std::string_view name;
    Value (*value)(const T&);
};

constexpr Field<ProgramSection> kProgramFields[] = {
    {"name", [](const ProgramSection& p) { return p.name; }},
    {"version", [](const ProgramSection& p) { return p.version; }},
    {kProgramDirectory.Name(), [](const ProgramSection& p) { return p.directory; }},
    {kAdministratorLine.Name(),
     [](const ProgramSection& p) { return p.heading.present ? Value(p.elevated ? "yes" : "no") : std::nullopt; }},
};

Value NamePart(const HostSection& h, const std::string& part) {
    return h.hasNameLine ? Value(part) : std::nullopt;
}
constexpr Field<HostSection> kHostFields[] = {
    {"name", [](const HostSection& h) { return NamePart(h, h.netbiosName); }},
    {"domain", [](const HostSection& h) { return NamePart(h, h.domain); }},
    {"WMI name", [](const HostSection& h) { return NamePart(h, h.wmiName); }},
    {kUser.Name(), [](const HostSection& h) { return h.user; }},
};

constexpr Field<WindowsSection> kWindowsFields[] = {
    {kVersionReported.Name(),
     [](const WindowsSection& w) { return w.hasVersionReported ? Value(VersionReportedValue(w)) : std::nullopt; }},
    {kRealVersion.Name(), [](const WindowsSection& w) { return w.realVersion; }},
    {kProductId.Name(), [](const WindowsSection& w) { return w.productId; }},
    {kSystemPath.Name(), [](const WindowsSection& w) { return w.systemPath; }},
    {kProgramFilesPath.Name(), [](const WindowsSection& w) { return w.programFilesPath; }},
    {kCommonAppDataPath.Name(), [](const WindowsSection& w) { return w.commonAppDataPath; }},
};

constexpr Field<HardwareSection> kHardwareFields[] = {
    {kSystemBits.Name(),
     [](const HardwareSection& h) {
         return ShownOf(h.bits,
                        [](std::uint32_t bits) { return UnsignedText(bits) + std::string(kBitsUnit.Narrow()); });
     }},
    {kBios.Name(), [](const HardwareSection& h) { return h.bios; }},
    {kBoard.Name(), [](const HardwareSection& h) { return h.board; }},
    {kProcessorCount.Name(), [](const HardwareSection& h) { return UnsignedOf(h.processorCount); }},
    {kProcessor.Name(), [](const HardwareSection& h) { return ShownOf(h.processor, ProcessorValue); }},
    {kActiveProcessorMask.Name(), [](const HardwareSection& h) { return UnsignedOf(h.activeProcessorMask); }},
    {kPageSize.Name(), [](const HardwareSection& h) { return UnsignedOf(h.pageSize); }},
    {kApplicationAddresses.Name(),
     [](const HardwareSection& h) { return ShownOf(h.applicationAddresses, AddressesValue); }},
    {"memory physical", [](const HardwareSection& h) { return PartOf(h.memory, &MemoryLine::physicalK, K); }},
    {"memory virtual", [](const HardwareSection& h) { return PartOf(h.memory, &MemoryLine::virtualK, K); }},
    {"memory paging", [](const HardwareSection& h) { return PartOf(h.memory, &MemoryLine::pagingK, K); }},
    {"C volume serial", [](const HardwareSection& h) { return PartOf(h.volume, &VolumeLine::serial, Same); }},
    {"C volume flags", [](const HardwareSection& h) { return PartOf(h.volume, &VolumeLine::flags, Same); }},
    {"C volume file system", [](const HardwareSection& h) { return PartOf(h.volume, &VolumeLine::fileSystem, Same); }},
    {"C volume total", [](const HardwareSection& h) { return PartOf(h.volume, &VolumeLine::totalK, K); }},
    {"C volume free", [](const HardwareSection& h) { return PartOf(h.volume, &VolumeLine::freeK, K); }},
    {"C volume user", [](const HardwareSection& h) { return PartOf(h.volume, &VolumeLine::userK, K); }},
};

constexpr Field<NetworkSection> kNetworkFields[] = {
    {"memory allocation failed", [](const NetworkSection& n) { return Flag(n.allocationFailed); }},
    {"GetAdaptersAddresses failed with error", [](const NetworkSection& n) { return SignedOf(n.enumerationError); }},
    {"no addresses were found", [](const NetworkSection& n) { return Flag(n.noAddressesFound); }},
    {kErrorText.Name(), [](const NetworkSection& n) { return n.errorText; }},
};

constexpr Field<Adapter> kAdapterFields[] = {
    {kIfIndex.Name(), [](const Adapter& a) { return UnsignedOf(a.ifIndex); }},
    {kUnicastAddresses.Name(), [](const Adapter& a) { return UnsignedOf(a.unicastCount); }},
    {kAnycastAddresses.Name(), [](const Adapter& a) { return UnsignedOf(a.anycastCount); }},
    {kMulticastAddresses.Name(), [](const Adapter& a) { return UnsignedOf(a.multicastCount); }},
    {kDnsServerAddresses.Name(), [](const Adapter& a) { return UnsignedOf(a.dnsServerCount); }},
    {kDnsSuffix.Name(), [](const Adapter& a) { return a.dnsSuffix; }},
    {kDescription.Name(), [](const Adapter& a) { return a.description; }},
    {kFriendlyName.Name(), [](const Adapter& a) { return a.friendlyName; }},
    {kPhysicalAddress.Name(), [](const Adapter& a) { return a.physicalAddress; }},
    {kFlags.Name(), [](const Adapter& a) { return SignedOf(a.flags); }},
    {kMtu.Name(), [](const Adapter& a) { return UnsignedOf(a.mtu); }},
    {kIfType.Name(), [](const Adapter& a) { return SignedOf(a.ifType); }},
    {kOperStatus.Name(), [](const Adapter& a) { return SignedOf(a.operStatus); }},
    {kIpv6IfIndex.Name(), [](const Adapter& a) { return UnsignedOf(a.ipv6IfIndex); }},
    {kZoneIndices.Name(), [](const Adapter& a) { return ShownOf(a.zoneIndices, ZoneIndicesValue); }},
    {kPrefixEntries.Name(), [](const Adapter& a) { return UnsignedOf(a.prefixCount); }},
};

constexpr Field<Directory> kDirectoryFields[] = {
    {"path", [](const Directory& d) { return d.path; }},
};

constexpr Field<DirectoryEntry> kEntryFields[] = {
    {"version", [](const DirectoryEntry& e) { return Value(e.version); }},
    {"size", [](const DirectoryEntry& e) { return Value(SignedText(e.size)); }},
    {"created", [](const DirectoryEntry& e) { return Value(e.created.Printed()); }},
    {"written", [](const DirectoryEntry& e) { return Value(e.written.Printed()); }},
    {"attributes", [](const DirectoryEntry& e) { return Value(ChecksumText(e.attributes)); }},
    {"ACL", [](const DirectoryEntry& e) { return e.accessList; }},
    {"content", [](const DirectoryEntry& e) { return e.content; }},
};

// The things of one list (adapters, a directory's entries...) by name, each
// with its rank among those of its name (1 for the first; only an edited
// report names two alike), found again by name and rank. Positions sorted
// by name: a few bytes a thing, where a map of names would copy them all.
template <typename Thing>
class NameIndex {
public:
    using NameOf = std::string_view (*)(const Thing&);

    NameIndex(const std::vector<Thing>& things, NameOf nameOf)
        : things_(&things), nameOf_(nameOf), order_(things.size()), ranks_(things.size()) {
        std::iota(order_.begin(), order_.end(), std::uint32_t{0});
        std::stable_sort(order_.begin(), order_.end(),
                         [&](std::uint32_t a, std::uint32_t b) { return Name(a) < Name(b); });
        for (std::size_t j = 0; j < order_.size(); ++j)
            ranks_[order_[j]] = j > 0 && Name(order_[j - 1]) == Name(order_[j]) ? ranks_[order_[j - 1]] + 1 : 1;
    }

    std::string_view Name(std::size_t at) const { return nameOf_((*things_)[at]); }
    std::uint32_t Rank(std::size_t at) const { return ranks_[at]; }

    std::optional<std::size_t> Find(std::string_view name, std::uint32_t rank) const {
        const auto first = std::lower_bound(order_.begin(), order_.end(), name,
                                            [&](std::uint32_t at, std::string_view n) { return Name(at) < n; });
        const std::size_t at = static_cast<std::size_t>(first - order_.begin()) + rank - 1;
        if (at >= order_.size() || Name(order_[at]) != name) return std::nullopt;
        return order_[at];
    }
    // Where the thing of `other` at `at` stands here.
    std::optional<std::size_t> Find(const NameIndex& other, std::size_t at) const {
        return Find(other.Name(at), other.Rank(at));
    }

private:
    const std::vector<Thing>* things_;
    NameOf nameOf_;
    std::vector<std::uint32_t> order_;  // positions, by name, then in list order
    std::vector<std::uint32_t> ranks_;  // by position
};

// What the comparison matches from one report to the other: a section's own
// values, an adapter (by name), a directory (by kind), a directory entry (by
// directory and name), the registry data, an unrecognised line (by text).
// All but a section's values and the registry data also stand as a whole,
// added or removed, through an item of their own before their values.
enum class SubjectKind { Values, Adapter, Directory, Entry, Registry, Unrecognised };

struct Subject {
    SubjectKind kind = SubjectKind::Values;
    std::size_t section = kProgram;
    std::size_t index = 0;      // the adapter's, directory's or unrecognised line's place in its list
    std::size_t entry = 0;      // an entry's place in its directory
    std::size_t firstItem = 0;  // where its first item stands among all the report's items
};

bool StandsAsAWhole(SubjectKind kind) {
    return kind != SubjectKind::Values && kind != SubjectKind::Registry;
}

std::string Ranked(std::string text, std::uint32_t rank) {
    return rank > 1 ? text + " (" + std::to_string(rank) + ")" : text;
}

// One report's side of a comparison: its subjects in order, each one's items
// numbered in a single sequence (which orders the changes told), and the
// indices that find a subject of the other report here.
class Side {
public:
    explicit Side(const Report& report)
        : r_(report),
          adapters_(report.network.adapters, [](const Adapter& a) { return std::string_view(a.name); }),
          directories_(report.installation.directories, [](const Directory& d) { return DirectoryKindName(d.kind); }),
          registry_(report.installation.registryValues,
                    [](const RegistryValue& v) { return std::string_view(v.name); }),
          unrecognised_(report.unrecognised, [](const UnrecognisedLine& u) { return std::string_view(u.text); }) {
        std::size_t item = 0;
        for (std::size_t section = kProgram; section <= kNetwork; ++section) {
            valuesFirst_[section] = item;
            item += FieldCount(ValuesSubject(section));
        }
        adaptersFirst_ = item;
        item += r_.network.adapters.size() * (1 + std::size(kAdapterFields));
        entries_.reserve(r_.installation.directories.size());
        for (const Directory& d : r_.installation.directories) {
            directoryFirst_.push_back(item);
            item += 1 + std::size(kDirectoryFields) + d.entries.size() * (1 + std::size(kEntryFields));
            entries_.emplace_back(d.entries, [](const DirectoryEntry& e) { return std::string_view(e.name); });
        }
        registryFirst_ = item;
        unrecognisedFirst_ = item + r_.installation.registryValues.size();
    }

    // Each subject of a section, in the report's order.
    template <typename Visit>
    void ForEachSubject(std::size_t section, Visit visit) const {
        if (section < kInstallation) visit(ValuesSubject(section));
        if (section == kNetwork)
            for (std::size_t i = 0; i < r_.network.adapters.size(); ++i) visit(AdapterSubject(i));
        if (section == kInstallation) {
            for (std::size_t d = 0; d < r_.installation.directories.size(); ++d) {
                visit(DirectorySubject(d));
                for (std::size_t e = 0; e < r_.installation.directories[d].entries.size(); ++e)
                    visit(EntrySubject(d, e));
            }
            visit(RegistrySubject());
        }
        if (section == kUnrecognised)
            for (std::size_t i = 0; i < r_.unrecognised.size(); ++i) visit(UnrecognisedSubject(i));
    }

    // The subject here that `s` of `other` stands for.
    std::optional<Subject> Find(const Side& other, const Subject& s) const {
        const auto then = [](std::optional<std::size_t> at, auto make) {
            return at ? std::optional<Subject>(make(*at)) : std::nullopt;
        };
        switch (s.kind) {
            case SubjectKind::Values: return ValuesSubject(s.section);
            case SubjectKind::Registry: return RegistrySubject();
            case SubjectKind::Adapter:
                return then(adapters_.Find(other.adapters_, s.index), [&](std::size_t i) { return AdapterSubject(i); });
            case SubjectKind::Directory:
                return then(directories_.Find(other.directories_, s.index),
                            [&](std::size_t d) { return DirectorySubject(d); });
            case SubjectKind::Entry: {
                const auto d = directories_.Find(other.directories_, s.index);
                if (!d) return std::nullopt;
                return then(entries_[*d].Find(other.entries_[s.index], s.entry),
                            [&](std::size_t e) { return EntrySubject(*d, e); });
            }
            case SubjectKind::Unrecognised:
                return then(unrecognised_.Find(other.unrecognised_, s.index),
                            [&](std::size_t i) { return UnrecognisedSubject(i); });
        }
        return std::nullopt;
    }

    std::size_t FieldCount(const Subject& s) const {
        if (s.kind == SubjectKind::Registry) return r_.installation.registryValues.size();
        return OnFields(s, [](const auto& fields, const auto&) { return std::size(fields); });
    }
    std::string_view FieldName(const Subject& s, std::size_t k) const {
        if (s.kind == SubjectKind::Registry) return registry_.Name(k);
        return OnFields(s, [&](const auto& fields, const auto&) { return fields[k].name; });
    }
    Value FieldValue(const Subject& s, std::size_t k) const {
        if (s.kind == SubjectKind::Registry) {
            const RegistryValue& v = r_.installation.registryValues[k];
            return v.number ? SignedText(*v.number) : v.text.value_or("");
        }
        return OnFields(s, [&](const auto& fields, const auto& object) { return fields[k].value(object); });
    }
    // Which of this subject's fields is the one named so (the first of
    // that name).
    std::optional<std::size_t> FieldNamed(const Subject& s, std::string_view name, std::size_t k) const {
        if (s.kind == SubjectKind::Registry) return registry_.Find(name, 1);
        return k;  // the same kind of subject has the same fields
    }
    // Where a subject's values start among the report's items.
    std::size_t FieldsFirst(const Subject& s) const { return s.firstItem + (StandsAsAWhole(s.kind) ? 1 : 0); }

    // The value of a subject's own item: a short summary of it.
    Value Summary(const Subject& s) const {
        switch (s.kind) {
            case SubjectKind::Adapter: {
                const auto& name = r_.network.adapters[s.index].friendlyName;
                return name ? "friendly name " + *name : "";
            }
            case SubjectKind::Directory: return DirectoryAt(s).path.value_or("");
            case SubjectKind::Entry: {
                const DirectoryEntry& e = EntryAt(s);
                const std::string size = "size " + SignedText(e.size);
                return e.version.empty() ? size : "version " + e.version + ", " + size;
            }
            case SubjectKind::Unrecognised: return "line " + UnsignedText(r_.unrecognised[s.index].line);
            case SubjectKind::Values:
            case SubjectKind::Registry: break;
        }
        return std::nullopt;
    }

    // The subject as a change names it: "adapter {...}", "Standard
    // installation directory: tool.dll", a rank after a name that comes twice.
    std::string SubjectText(const Subject& s) const {
        switch (s.kind) {
            case SubjectKind::Values: return {};
            case SubjectKind::Registry: return ListHeadingTitle(kRegistryDataHeading.Narrow());
            case SubjectKind::Adapter:
                return Ranked("adapter " + r_.network.adapters[s.index].name, adapters_.Rank(s.index));
            case SubjectKind::Directory: return Ranked(DirectoryName(DirectoryAt(s).kind), directories_.Rank(s.index));
            case SubjectKind::Entry:
                return Ranked(SubjectText(DirectorySubject(s.index)) + ": " + EntryAt(s).name,
                              entries_[s.index].Rank(s.entry));
            case SubjectKind::Unrecognised:
                return Ranked("\"" + r_.unrecognised[s.index].text + "\"", unrecognised_.Rank(s.index));
        }
        return {};
    }

    // A change's directory and entry names, as Change has them.
    std::string DirectoryNameOf(const Subject& s) const {
        const bool inDirectory = s.kind == SubjectKind::Directory || s.kind == SubjectKind::Entry;
        return inDirectory ? DirectoryName(DirectoryAt(s).kind) : std::string();
    }
    std::string EntryNameOf(const Subject& s) const {
        return s.kind == SubjectKind::Entry ? EntryAt(s).name : std::string();
    }
    std::optional<EntryFacts> FactsOf(const Subject& s) const {
        if (s.kind != SubjectKind::Entry) return std::nullopt;
        const DirectoryEntry& e = EntryAt(s);
        return EntryFacts{e.version, e.size, e.created, e.written};
    }

private:
    Subject ValuesSubject(std::size_t section) const {
        return {SubjectKind::Values, section, 0, 0, section <= kNetwork ? valuesFirst_[section] : 0};
    }
    Subject AdapterSubject(std::size_t i) const {
        return {SubjectKind::Adapter, kNetwork, i, 0, adaptersFirst_ + i * (1 + std::size(kAdapterFields))};
    }
    Subject DirectorySubject(std::size_t d) const {
        return {SubjectKind::Directory, kInstallation, d, 0, directoryFirst_[d]};
    }
    Subject EntrySubject(std::size_t d, std::size_t e) const {
        const std::size_t first =
            directoryFirst_[d] + 1 + std::size(kDirectoryFields) + e * (1 + std::size(kEntryFields));
        return {SubjectKind::Entry, kInstallation, d, e, first};
    }
    Subject RegistrySubject() const { return {SubjectKind::Registry, kInstallation, 0, 0, registryFirst_}; }
    Subject UnrecognisedSubject(std::size_t i) const {
        return {SubjectKind::Unrecognised, kUnrecognised, i, 0, unrecognisedFirst_ + i};
    }

    const Directory& DirectoryAt(const Subject& s) const { return r_.installation.directories[s.index]; }
    const DirectoryEntry& EntryAt(const Subject& s) const { return DirectoryAt(s).entries[s.entry]; }

    // `visit(fields, object)` with the table of fields of the subject's kind
    // and the model's object it reads them from.
    template <typename Visit>
    auto OnFields(const Subject& s, Visit visit) const
        -> std::invoke_result_t<Visit&, decltype(kNetworkFields)&, const NetworkSection&> {
        switch (s.kind) {
            case SubjectKind::Adapter: return visit(kAdapterFields, r_.network.adapters[s.index]);
            case SubjectKind::Directory: return visit(kDirectoryFields, DirectoryAt(s));
            case SubjectKind::Entry: return visit(kEntryFields, EntryAt(s));
            case SubjectKind::Unrecognised:
                return visit(std::span<const Field<UnrecognisedLine>>(), r_.unrecognised[s.index]);
            case SubjectKind::Values:
            case SubjectKind::Registry: break;
        }
        switch (s.section) {
            case kProgram: return visit(kProgramFields, r_.program);
            case kHost: return visit(kHostFields, r_.host);
            case kWindows: return visit(kWindowsFields, r_.windows);
            case kHardware: return visit(kHardwareFields, r_.hardware);
            default: return visit(kNetworkFields, r_.network);
        }
    }

    const Report& r_;
    NameIndex<Adapter> adapters_;
    NameIndex<Directory> directories_;
    NameIndex<RegistryValue> registry_;
    NameIndex<UnrecognisedLine> unrecognised_;
    std::vector<NameIndex<DirectoryEntry>> entries_;  // by directory
    std::size_t valuesFirst_[kNetwork + 1] = {};
    std::size_t adaptersFirst_ = 0, registryFirst_ = 0, unrecognisedFirst_ = 0;
    std::vector<std::size_t> directoryFirst_;
};

// Where a change is told: at its place in the new report, and a thing the
// new report no longer has right after what came before it in the old one,
// so that an added or removed entry stands among its directory's other changes.
using Place = std::pair<std::size_t, std::size_t>;

// A change as the comparison keeps it until its section is ordered: where it
// is told, and what to read its texts from again then. A comparison in which
// every entry of a large report changed keeps millions: 48 bytes each, where
// the change made (its texts) takes some 1 kB.
struct PendingChange {
    std::uint32_t place[2];    // Place, each item's number fits (a report is at most 512 MB)
    std::uint32_t made;        // the order it was found in, for changes told at one place
    std::uint32_t index, entry;  // its subject's (Subject::index, Subject::entry)
    std::uint32_t field;       // which of the subject's fields changed (ChangeKind::Changed)
    std::uint32_t matchIndex, matchEntry, matchField;  // the new report's subject and field, for one from the old
    SubjectKind kind;
    std::uint8_t section;
    ChangeKind change;
    bool fromOld;
    bool matched;  // whether the old subject's field has a counterpart in the new report

    Place At() const { return {place[0], place[1]}; }
    bool operator<(const PendingChange& other) const {
        return std::pair(At(), made) < std::pair(other.At(), other.made);
    }
};

Subject SubjectOf(const PendingChange& p) {
    return {p.kind, p.section, p.index, p.entry, 0};
}
Subject MatchOf(const PendingChange& p) {
    return {p.kind, p.section, p.matchIndex, p.matchEntry, 0};
}

// One comparison, section by section: what the old report has (removed or
// changed), then what only the new one has (added), in the order of places.
// Each section's changes are kept in brief, ordered, then made and handed on
// one at a time.
class Comparison {
public:
    Comparison(const Report& oldReport, const Report& newReport) : old_(oldReport), new_(newReport) {}

    void Run(const std::function<void(const Change&)>& visit) {
        for (std::size_t section = kProgram; section <= kUnrecognised; ++section) {
            pending_.clear();
            old_.ForEachSubject(section, [&](const Subject& s) { FromOld(s); });
            new_.ForEachSubject(section, [&](const Subject& s) { FromNew(s); });
            std::sort(pending_.begin(), pending_.end());
            for (const PendingChange& p : pending_) visit(Made(p));
        }
        pending_.clear();
    }

private:
    void FromOld(const Subject& o) {
        const std::optional<Subject> n = new_.Find(old_, o);
        if (StandsAsAWhole(o.kind)) {
            if (!n) {
                Keep(true, o, {anchor_, o.firstItem + 1}, 0, ChangeKind::Removed);
                return;
            }
            anchor_ = n->firstItem + 1;
        }
        for (std::size_t k = 0; k < old_.FieldCount(o); ++k) {
            const std::string_view field = old_.FieldName(o, k);
            const std::optional<std::size_t> m = n ? new_.FieldNamed(*n, field, k) : std::nullopt;
            Place place{anchor_, old_.FieldsFirst(o) + k + 1};
            if (m) {
                anchor_ = new_.FieldsFirst(*n) + *m + 1;
                place = {anchor_, 0};
            }
            const Value oldValue = old_.FieldValue(o, k);
            const Value newValue = m ? new_.FieldValue(*n, *m) : std::nullopt;
            if (oldValue == newValue) continue;
            PendingChange& kept = Keep(true, o, place, k, ChangeKind::Changed);
            if (!m) continue;
            kept.matched = true;
            kept.matchIndex = static_cast<std::uint32_t>(n->index);
            kept.matchEntry = static_cast<std::uint32_t>(n->entry);
            kept.matchField = static_cast<std::uint32_t>(*m);
        }
    }

    void FromNew(const Subject& n) {
        const std::optional<Subject> o = old_.Find(new_, n);
        if (StandsAsAWhole(n.kind) && !o) {
            Keep(false, n, {n.firstItem + 1, 0}, 0, ChangeKind::Added);
            return;
        }
        for (std::size_t k = 0; k < new_.FieldCount(n); ++k) {
            const std::string_view field = new_.FieldName(n, k);
            if (o && old_.FieldNamed(*o, field, k)) continue;  // told from the old report's side
            if (new_.FieldValue(n, k)) Keep(false, n, {new_.FieldsFirst(n) + k + 1, 0}, k, ChangeKind::Changed);
        }
    }

    PendingChange& Keep(bool fromOld, const Subject& s, Place place, std::size_t field, ChangeKind change) {
        const auto narrow = [](std::size_t n) { return static_cast<std::uint32_t>(n); };
        PendingChange kept{};
        kept.place[0] = narrow(place.first);
        kept.place[1] = narrow(place.second);
        kept.made = narrow(pending_.size());
        kept.index = narrow(s.index);
        kept.entry = narrow(s.entry);
        kept.field = narrow(field);
        kept.kind = s.kind;
        kept.section = static_cast<std::uint8_t>(s.section);
        kept.change = change;
        kept.fromOld = fromOld;
        pending_.push_back(kept);
        return pending_.back();
    }

    // The change with its texts, read from the models again.
    Change Made(const PendingChange& p) const {
        const Side& side = p.fromOld ? old_ : new_;
        const Subject s = SubjectOf(p);
        const bool changed = p.change == ChangeKind::Changed;
        Value oldValue, newValue;
        if (p.change == ChangeKind::Removed) oldValue = side.Summary(s);
        if (p.change == ChangeKind::Added) newValue = side.Summary(s);
        if (changed && p.fromOld) {
            oldValue = old_.FieldValue(s, p.field);
            if (p.matched) newValue = new_.FieldValue(MatchOf(p), p.matchField);
        }
        if (changed && !p.fromOld) newValue = side.FieldValue(s, p.field);
        Change change{std::string(kSectionOrder[s.section]),
                      side.SubjectText(s),
                      changed ? std::string(side.FieldName(s, p.field)) : std::string(),
                      p.change,
                      std::move(oldValue),
                      std::move(newValue),
                      side.DirectoryNameOf(s),
                      side.EntryNameOf(s),
                      {},
                      {}};
        if (p.change == ChangeKind::Removed) change.oldEntry = side.FactsOf(s);
        if (p.change == ChangeKind::Added) change.newEntry = side.FactsOf(s);
        return change;
    }

    const Side old_, new_;
    std::size_t anchor_ = 0;  // one past the new report's item that the last old item kept stands at
    // std::deque: no copy of them all as they grow, and sorted in place.
    std::deque<PendingChange> pending_;
};
}  // namespace

std::string DirectoryName(DirectoryKind kind) {
    if (kind != DirectoryKind::Registry) return std::string(DirectoryTitle(kind));
    return ListHeadingTitle(kRegistryDirectoryHeading.Narrow());
}

void ForEachChange(const Report& oldReport, const Report& newReport, const std::function<void(const Change&)>& visit) {
    Comparison(oldReport, newReport).Run(visit);
}

std::vector<Change> DiffReports(const Report& oldReport, const Report& newReport) {
    std::vector<Change> changes;
    ForEachChange(oldReport, newReport, [&](const Change& c) { changes.push_back(c); });
    return changes;
}

namespace {
constexpr std::string_view kIgnoreTimes = "times";
constexpr std::string_view kIgnoreFreeSpace = "free-space";
}  // namespace

std::optional<IgnoredKinds> ParseIgnoredKinds(std::string_view words, std::string& problem) {
    IgnoredKinds ignored;
    for (std::size_t start = 0; start <= words.size();) {
        const std::size_t comma = std::min(words.find(',', start), words.size());
        const std::string_view word = words.substr(start, comma - start);
        if (word == kIgnoreTimes) {
            ignored.times = true;
        } else if (word == kIgnoreFreeSpace) {
            ignored.freeSpace = true;
        } else {
            problem = "unknown kind of change \"" + std::string(word) + "\" (known: " + std::string(kIgnoreTimes) +
                      ", " + std::string(kIgnoreFreeSpace) + ")";
            return std::nullopt;
        }
        start = comma + 1;
    }
    return ignored;
}

bool IsIgnored(const Change& c, const IgnoredKinds& ignored) {
    if (c.kind != ChangeKind::Changed) return false;
    const bool time = !c.entry.empty() && (c.field == "created" || c.field == "written");
    const bool freeSpace =
        c.section == kHardwareHeading.Name() && (c.field == "C volume free" || c.field == "C volume user");
    return (ignored.times && time) || (ignored.freeSpace && freeSpace);
}

std::vector<Change> LeaveOut(std::vector<Change> changes, const IgnoredKinds& ignored) {
    std::erase_if(changes, [&](const Change& c) { return IsIgnored(c, ignored); });
    return changes;
}

namespace {
// "\told: 2 (lines 31, 32)": the first few line numbers, enough to find them.
std::string UnrecognisedLine(const char* which, const Report& report) {
    constexpr std::size_t kLinesNamed = 10;
    const auto& lines = report.unrecognised;
    std::string text = std::string("\t") + which + ": ";
    if (lines.empty()) return text + "none\n";
    text += UnsignedText(lines.size()) + (lines.size() == 1 ? " (line " : " (lines ");
    for (std::size_t i = 0; i < lines.size() && i < kLinesNamed; ++i)
        text += (i ? ", " : "") + UnsignedText(lines[i].line);
    if (lines.size() > kLinesNamed) text += ", ...";
    return text + ")\n";
}

std::string UnrecognisedLines(const ReportSide& oldSide, const ReportSide& newSide) {
    if (oldSide.report->unrecognised.empty() && newSide.report->unrecognised.empty()) return {};
    return "Lines the reader did not recognise (damaged, edited, or forged through a value):\n" +
           UnrecognisedLine("old", *oldSide.report) + UnrecognisedLine("new", *newSide.report);
}

std::string VerdictLine(const char* which, const ReportSide& side) {
    return std::string(which) + ": " + DescribeReportVerdict(side.verdict) + "\n";
}

bool VerdictsMatter(const ReportSide& a, const ReportSide& b) {
    return a.verdict.state != ReportState::Intact || b.verdict.state != ReportState::Intact;
}

// A report's text as a person sees it: a lone surrogate as one U+FFFD, as
// in the JSON, then every control character escaped (TerminalText.h).
std::string Shown(std::string_view text) {
    return ForTerminal(WithoutLoneSurrogates(text));
}

const char* KindName(ChangeKind kind) {
    switch (kind) {
        case ChangeKind::Changed: return "changed";
        case ChangeKind::Added: return "added";
        case ChangeKind::Removed: return "removed";
    }
    return "changed";
}
}  // namespace

namespace {
// The verdicts when either report is altered; "" when both are intact.
std::string VerdictLines(const ReportSide& oldSide, const ReportSide& newSide) {
    if (!VerdictsMatter(oldSide, newSide)) return {};
    std::string text = oldSide.verdict.state == newSide.verdict.state ? "Both reports are altered:\n"
                                                                      : "The checksum verdict changed:\n";
    for (const auto& [which, side] : {std::pair{"old", &oldSide}, std::pair{"new", &newSide}}) {
        text += '\t';
        text += VerdictLine(which, *side);
    }
    return text;
}

// A change's line, under its section's name.
void AppendChangeLine(const Change& c, std::string& text) {
    // Names and values come from the reports: shown, never obeyed (TerminalText.h).
    text += "\t";
    if (!c.subject.empty()) text += Shown(c.subject) + ": ";
    switch (c.kind) {
        case ChangeKind::Added:
        case ChangeKind::Removed:
            text += KindName(c.kind);
            if (const auto& v = c.kind == ChangeKind::Added ? c.newValue : c.oldValue; v && !v->empty())
                text += " (" + Shown(*v) + ")";
            break;
        case ChangeKind::Changed:
            text += Shown(c.field) + ": " + Shown(c.oldValue.value_or("(none)")) + " \u2192 " +
                    Shown(c.newValue.value_or("(none)"));
            break;
    }
    text += "\n";
}

nlohmann::ordered_json IsoOrNull(const CalendarStamp& stamp) {
    const std::optional<std::string> iso = stamp.Iso();
    if (!iso) return nullptr;
    return *iso;
}

nlohmann::ordered_json EntryFactsJson(const std::optional<EntryFacts>& facts) {
    if (!facts) return nullptr;
    nlohmann::ordered_json json;
    json["version"] = facts->version;
    json["size"] = facts->size;
    json["created"] = facts->created.Printed();
    json["createdIso"] = IsoOrNull(facts->created);
    json["written"] = facts->written.Printed();
    json["writtenIso"] = IsoOrNull(facts->written);
    return json;
}

nlohmann::ordered_json ChangeJson(const Change& c) {
    using Json = nlohmann::ordered_json;
    Json j;
    j["section"] = c.section;
    j["subject"] = c.subject;
    j["field"] = c.field;
    j["change"] = KindName(c.kind);
    j["old"] = c.oldValue ? Json(*c.oldValue) : Json(nullptr);
    j["new"] = c.newValue ? Json(*c.newValue) : Json(nullptr);
    j["directory"] = c.directory.empty() ? Json(nullptr) : Json(c.directory);
    j["entry"] = c.entry.empty() ? Json(nullptr) : Json(c.entry);
    j["oldEntry"] = EntryFactsJson(c.oldEntry);
    j["newEntry"] = EntryFactsJson(c.newEntry);
    return j;
}

// Pieces of output this large are handed on: a diff of millions of changes
// is never held whole.
constexpr std::size_t kDiffOutputPiece = 64 * 1024;
}  // namespace

DiffOutput::DiffOutput(Write write) : write_(std::move(write)) {}

void DiffOutput::Append(std::string_view text) {
    buffer_ += text;
    if (buffer_.size() >= kDiffOutputPiece) Flush();
}

void DiffOutput::Flush() {
    if (!buffer_.empty()) write_(buffer_);
    buffer_.clear();
}

DiffTextWriter::DiffTextWriter(const ReportSide& oldSide, const ReportSide& newSide, DiffOutput::Write write)
    : DiffWriter(std::move(write)), oldSide_(oldSide), newSide_(newSide), verdicts_(VerdictLines(oldSide, newSide)) {}

void DiffTextWriter::Add(const Change& c) {
    if (!begun_) Begin();
    std::string text;
    if (c.section != section_) {
        section_ = c.section;
        text += section_ + ":\n";
    }
    AppendChangeLine(c, text);
    output_.Append(text);
}

void DiffTextWriter::Finish() {
    if (!begun_ && !verdicts_.empty()) Begin();
    output_.Flush();
}

void DiffTextWriter::Begin() {
    begun_ = true;
    output_.Append(verdicts_ + UnrecognisedLines(oldSide_, newSide_));
}

std::string FormatDiffText(const ReportSide& oldSide, const ReportSide& newSide, const std::vector<Change>& changes) {
    std::string text;
    DiffTextWriter writer(oldSide, newSide, [&](std::string_view piece) { text += piece; });
    for (const Change& c : changes) writer.Add(c);
    writer.Finish();
    return text;
}

nlohmann::ordered_json DiffToJson(const ReportSide& oldSide, const ReportSide& newSide,
                                  const std::vector<Change>& changes) {
    using Json = nlohmann::ordered_json;
    const auto verdict = [](const ReportSide& side) {
        Json v;
        v["verdict"] = side.verdict.state == ReportState::Intact ? "intact" : "altered";
        v["storedChecksum"] = ChecksumText(side.verdict.stored);
        v["bodyChecksum"] = ChecksumText(side.verdict.computed);
        return v;
    };
    Json json;
    json["schemaVersion"] = kReportSchemaVersion;
    json["old"] = verdict(oldSide);
    json["new"] = verdict(newSide);
    json["verdictChanged"] = oldSide.verdict.state != newSide.verdict.state;
    json["changes"] = Json::array();
    for (const Change& c : changes) json["changes"].push_back(ChangeJson(c));
    return json;
}

namespace {
// The document DiffToJson gives with no changes, laid out with an indent of
// 2: "changes" is its last member, so what follows its "[]" is the end.
constexpr std::string_view kNoChanges = "[]";
constexpr std::string_view kChangeIndent = "    ";  // an element of "changes", two levels in

std::string Indented(std::string_view text) {
    std::string out(kChangeIndent);
    for (char c : text) {
        out += c;
        if (c == '\n') out += kChangeIndent;  // JSON strings hold no raw line feed
    }
    return out;
}
}  // namespace

DiffJsonWriter::DiffJsonWriter(const ReportSide& oldSide, const ReportSide& newSide, DiffOutput::Write write)
    : DiffWriter(std::move(write)) {
    const std::string empty = DumpJson(DiffToJson(oldSide, newSide, {}), 2);
    const std::size_t changes = empty.rfind(kNoChanges);
    output_.Append(std::string_view(empty).substr(0, changes));
    end_ = empty.substr(changes + kNoChanges.size()) + "\n";
}

void DiffJsonWriter::Add(const Change& c) {
    output_.Append(any_ ? ",\n" : "[\n");
    any_ = true;
    output_.Append(Indented(DumpJson(ChangeJson(c), 2)));
}

void DiffJsonWriter::Finish() {
    output_.Append(any_ ? "\n  ]" : kNoChanges);
    output_.Append(end_);
    output_.Flush();
}

}  // namespace report_model

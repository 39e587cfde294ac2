#include "reader/ReportDiff.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "format/LineForms.h"
#include "reader/ReportModelText.h"
#include "reader/ReportRender.h"
#include "reader/TerminalText.h"

namespace report_model {

using namespace lineform;

namespace {

// One comparable value. A subject's own item (field "") stands for the whole
// subject; its value is a short summary shown when it is added or removed.
struct Item {
    std::string section, subject, field;
    std::optional<std::string> value;
    std::string directory, entry;     // Change's
    std::optional<EntryFacts> facts;  // a directory entry's own item
};

constexpr std::string_view kSectionOrder[] = {kProgramHeading.Name(),  kHostHeading.Name(),
                                              kWindowsHeading.Name(),  kHardwareHeading.Name(),
                                              kNetworkHeading.Name(),  kInstallationHeading.Name(),
                                              "Unrecognised lines"};

// "Registry installation data" of "* Registry installation data:".
std::string ListHeadingTitle(std::string_view heading) {
    heading.remove_prefix(kDirectoryLead.Narrow().size());
    return std::string(heading.substr(0, heading.size() - 1));  // less its colon
}

std::string Key(const Item& item) {
    return item.section + '\x1f' + item.subject + '\x1f' + item.field;
}
std::string SubjectKey(const Item& item) {
    return item.section + '\x1f' + item.subject;
}

std::string K(std::int64_t kilobytes) {
    return SignedText(kilobytes) + "K";
}

class Flattener {
public:
    std::vector<Item> Run(const Report& r) {
        Program(r.program);
        Host(r.host);
        Windows(r.windows);
        Hardware(r.hardware);
        Network(r.network);
        Installation(r.installation);
        for (const UnrecognisedLine& u : r.unrecognised)
            AddSubject("Unrecognised lines", "\"" + u.text + "\"", "line " + UnsignedText(u.line));
        return std::move(items_);
    }

private:
    void Add(const std::string& section, const std::string& subject, std::string_view field,
             std::optional<std::string> value) {
        items_.push_back({section, subject, std::string(field), std::move(value), directory_, entry_, {}});
    }
    // Subjects are matched by name; a name that comes twice (only an edited
    // report can do that) is told apart by its rank.
    std::string AddSubject(const std::string& section, std::string subject, std::string summary) {
        const int rank = ++seen_[section + '\x1f' + subject];
        if (rank > 1) subject += " (" + std::to_string(rank) + ")";
        Add(section, subject, "", std::move(summary));
        return subject;
    }

    void Program(const ProgramSection& p) {
        const std::string s(kProgramHeading.Name());
        Add(s, "", "name", p.name);
        Add(s, "", "version", p.version);
        Add(s, "", kProgramDirectory.Name(), p.directory);
        Add(s, "", kAdministratorLine.Name(), p.heading.present ? std::optional<std::string>(p.elevated ? "yes" : "no")
                                                                  : std::nullopt);
    }

    void Host(const HostSection& h) {
        const std::string s(kHostHeading.Name());
        const auto part = [&](const std::string& v) { return h.hasNameLine ? std::optional(v) : std::nullopt; };
        Add(s, "", "name", part(h.netbiosName));
        Add(s, "", "domain", part(h.domain));
        Add(s, "", "WMI name", part(h.wmiName));
        Add(s, "", kUser.Name(), h.user);
    }

    void Windows(const WindowsSection& w) {
        const std::string s(kWindowsHeading.Name());
        Add(s, "", kVersionReported.Name(),
            w.hasVersionReported ? std::optional(VersionReportedValue(w)) : std::nullopt);
        Add(s, "", kRealVersion.Name(), w.realVersion);
        Add(s, "", kProductId.Name(), w.productId);
        Add(s, "", kSystemPath.Name(), w.systemPath);
        Add(s, "", kProgramFilesPath.Name(), w.programFilesPath);
        Add(s, "", kCommonAppDataPath.Name(), w.commonAppDataPath);
    }

    void Hardware(const HardwareSection& h) {
        const std::string s(kHardwareHeading.Name());
        const auto num = [](const auto& v) {
            return v ? std::optional<std::string>(UnsignedText(*v)) : std::nullopt;
        };
        Add(s, "", kSystemBits.Name(),
            h.bits ? std::optional(UnsignedText(*h.bits) + std::string(kBitsUnit.Narrow())) : std::nullopt);
        Add(s, "", kBios.Name(), h.bios);
        Add(s, "", kBoard.Name(), h.board);
        Add(s, "", kProcessorCount.Name(), num(h.processorCount));
        Add(s, "", kProcessor.Name(), h.processor ? std::optional(ProcessorValue(*h.processor)) : std::nullopt);
        Add(s, "", kActiveProcessorMask.Name(), num(h.activeProcessorMask));
        Add(s, "", kPageSize.Name(), num(h.pageSize));
        Add(s, "", kApplicationAddresses.Name(),
            h.applicationAddresses ? std::optional(AddressesValue(*h.applicationAddresses)) : std::nullopt);
        const auto& m = h.memory;
        Add(s, "", "memory physical", m ? std::optional(K(m->physicalK)) : std::nullopt);
        Add(s, "", "memory virtual", m ? std::optional(K(m->virtualK)) : std::nullopt);
        Add(s, "", "memory paging", m ? std::optional(K(m->pagingK)) : std::nullopt);
        const auto& v = h.volume;
        Add(s, "", "C volume serial", v ? std::optional(v->serial) : std::nullopt);
        Add(s, "", "C volume flags", v ? std::optional(v->flags) : std::nullopt);
        Add(s, "", "C volume file system", v ? std::optional(v->fileSystem) : std::nullopt);
        Add(s, "", "C volume total", v ? std::optional(K(v->totalK)) : std::nullopt);
        Add(s, "", "C volume free", v ? std::optional(K(v->freeK)) : std::nullopt);
        Add(s, "", "C volume user", v ? std::optional(K(v->userK)) : std::nullopt);
    }

    void Network(const NetworkSection& n) {
        const std::string s(kNetworkHeading.Name());
        const auto flag = [](bool b) { return b ? std::optional<std::string>("yes") : std::nullopt; };
        Add(s, "", "memory allocation failed", flag(n.allocationFailed));
        Add(s, "", "GetAdaptersAddresses failed with error",
            n.enumerationError ? std::optional(SignedText(*n.enumerationError)) : std::nullopt);
        Add(s, "", "no addresses were found", flag(n.noAddressesFound));
        Add(s, "", kErrorText.Name(), n.errorText);
        for (const Adapter& a : n.adapters) {
            const std::string subject =
                AddSubject(s, "adapter " + a.name, a.friendlyName ? "friendly name " + *a.friendlyName : "");
            const auto u = [](const auto& v) {
                return v ? std::optional<std::string>(UnsignedText(*v)) : std::nullopt;
            };
            const auto i = [](const auto& v) {
                return v ? std::optional<std::string>(SignedText(*v)) : std::nullopt;
            };
            Add(s, subject, kIfIndex.Name(), u(a.ifIndex));
            Add(s, subject, kUnicastAddresses.Name(), u(a.unicastCount));
            Add(s, subject, kAnycastAddresses.Name(), u(a.anycastCount));
            Add(s, subject, kMulticastAddresses.Name(), u(a.multicastCount));
            Add(s, subject, kDnsServerAddresses.Name(), u(a.dnsServerCount));
            Add(s, subject, kDnsSuffix.Name(), a.dnsSuffix);
            Add(s, subject, kDescription.Name(), a.description);
            Add(s, subject, kFriendlyName.Name(), a.friendlyName);
            Add(s, subject, kPhysicalAddress.Name(), a.physicalAddress);
            Add(s, subject, kFlags.Name(), i(a.flags));
            Add(s, subject, kMtu.Name(), u(a.mtu));
            Add(s, subject, kIfType.Name(), i(a.ifType));
            Add(s, subject, kOperStatus.Name(), i(a.operStatus));
            Add(s, subject, kIpv6IfIndex.Name(), u(a.ipv6IfIndex));
            Add(s, subject, kZoneIndices.Name(),
                a.zoneIndices ? std::optional(ZoneIndicesValue(*a.zoneIndices)) : std::nullopt);
            Add(s, subject, kPrefixEntries.Name(), u(a.prefixCount));
        }
    }

    void Installation(const InstallationSection& inst) {
        const std::string s(kInstallationHeading.Name());
        for (const Directory& d : inst.directories) {
            directory_ = DirectoryName(d.kind);
            const std::string dir = AddSubject(s, directory_, d.path.value_or(""));
            Add(s, dir, "path", d.path);
            for (const DirectoryEntry& e : d.entries) {
                std::string summary = "size " + SignedText(e.size);
                if (!e.version.empty()) summary = "version " + e.version + ", " + summary;
                entry_ = e.name;
                const std::string subject = AddSubject(s, dir + ": " + e.name, summary);
                items_.back().facts = EntryFacts{e.version, e.size, e.created, e.written};
                Add(s, subject, "version", e.version);
                Add(s, subject, "size", SignedText(e.size));
                Add(s, subject, "created", e.created.Printed());
                Add(s, subject, "written", e.written.Printed());
                Add(s, subject, "attributes", ChecksumText(e.attributes));
                Add(s, subject, "ACL", e.accessList);
                Add(s, subject, "content", e.content);
                entry_.clear();
            }
            directory_.clear();
        }
        for (const RegistryValue& v : inst.registryValues)
            Add(s, ListHeadingTitle(kRegistryDataHeading.Narrow()), v.name, v.number ? SignedText(*v.number) : v.text.value_or(""));
    }

    std::vector<Item> items_;
    std::map<std::string, int> seen_;
    std::string directory_, entry_;  // of the items being added
};

// Where a change is told: at its place in the new report, and a thing the
// new report no longer has right after what came before it in the old one,
// so that an added or removed entry stands among its directory's other changes.
using Place = std::pair<std::size_t, std::size_t>;

struct PlacedChange {
    Place place;
    Change change;
};

void Emit(std::vector<PlacedChange>& out, Place place, const Item& item, ChangeKind kind,
          std::optional<std::string> oldValue, std::optional<std::string> newValue) {
    Change change{item.section, item.subject, item.field, kind, std::move(oldValue), std::move(newValue),
                  item.directory, item.entry, {}, {}};
    if (kind == ChangeKind::Removed) change.oldEntry = item.facts;
    if (kind == ChangeKind::Added) change.newEntry = item.facts;
    out.push_back({place, std::move(change)});
}

}  // namespace

std::string DirectoryName(DirectoryKind kind) {
    if (kind != DirectoryKind::Registry) return std::string(DirectoryTitle(kind));
    return ListHeadingTitle(kRegistryDirectoryHeading.Narrow());
}


std::vector<Change> DiffReports(const Report& oldReport, const Report& newReport) {
    const std::vector<Item> oldItems = Flattener().Run(oldReport);
    const std::vector<Item> newItems = Flattener().Run(newReport);
    std::map<std::string, std::size_t> oldByKey, newByKey;
    std::set<std::string> oldSubjects, newSubjects;
    // Subjects with an item of their own come and go as a whole.
    for (std::size_t i = 0; i < oldItems.size(); ++i) {
        oldByKey.emplace(Key(oldItems[i]), i);
        if (oldItems[i].field.empty()) oldSubjects.insert(SubjectKey(oldItems[i]));
    }
    for (std::size_t i = 0; i < newItems.size(); ++i) {
        newByKey.emplace(Key(newItems[i]), i);
        if (newItems[i].field.empty()) newSubjects.insert(SubjectKey(newItems[i]));
    }
    // Places count from 1 so that what the old report had before anything
    // the new one keeps goes first.
    std::vector<Place> oldPlaces(oldItems.size());
    std::size_t anchor = 0;
    for (std::size_t i = 0; i < oldItems.size(); ++i) {
        const auto kept = newByKey.find(Key(oldItems[i]));
        if (kept != newByKey.end()) anchor = kept->second + 1;
        oldPlaces[i] = kept != newByKey.end() ? Place{anchor, 0} : Place{anchor, i + 1};
    }
    std::vector<Change> changes;
    for (std::string_view section : kSectionOrder) {
        std::vector<PlacedChange> placed;
        for (std::size_t i = 0; i < oldItems.size(); ++i) {
            const Item& o = oldItems[i];
            if (o.section != section) continue;
            if (oldSubjects.count(SubjectKey(o)) && !newSubjects.count(SubjectKey(o))) {
                if (o.field.empty()) Emit(placed, oldPlaces[i], o, ChangeKind::Removed, o.value, std::nullopt);
                continue;
            }
            if (o.field.empty()) continue;
            const auto n = newByKey.find(Key(o));
            const std::optional<std::string> newValue =
                n == newByKey.end() ? std::nullopt : newItems[n->second].value;
            if (o.value != newValue) Emit(placed, oldPlaces[i], o, ChangeKind::Changed, o.value, newValue);
        }
        for (std::size_t i = 0; i < newItems.size(); ++i) {
            const Item& n = newItems[i];
            if (n.section != section) continue;
            const Place place{i + 1, 0};
            if (newSubjects.count(SubjectKey(n)) && !oldSubjects.count(SubjectKey(n))) {
                if (n.field.empty()) Emit(placed, place, n, ChangeKind::Added, std::nullopt, n.value);
                continue;
            }
            if (n.field.empty() || oldByKey.count(Key(n))) continue;
            if (n.value) Emit(placed, place, n, ChangeKind::Changed, std::nullopt, n.value);
        }
        std::stable_sort(placed.begin(), placed.end(),
                         [](const PlacedChange& a, const PlacedChange& b) { return a.place < b.place; });
        for (PlacedChange& p : placed) changes.push_back(std::move(p.change));
    }
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

std::vector<Change> LeaveOut(std::vector<Change> changes, const IgnoredKinds& ignored) {
    const auto isIgnored = [&](const Change& c) {
        if (c.kind != ChangeKind::Changed) return false;
        const bool time = !c.entry.empty() && (c.field == "created" || c.field == "written");
        const bool freeSpace = c.section == kHardwareHeading.Name() &&
                               (c.field == "C volume free" || c.field == "C volume user");
        return (ignored.times && time) || (ignored.freeSpace && freeSpace);
    };
    std::erase_if(changes, isIgnored);
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

std::string FormatDiffText(const ReportSide& oldSide, const ReportSide& newSide, const std::vector<Change>& changes) {
    std::string text;
    if (VerdictsMatter(oldSide, newSide)) {
        text += oldSide.verdict.state == newSide.verdict.state ? "Both reports are altered:\n"
                                                               : "The checksum verdict changed:\n";
        for (const auto& [which, side] : {std::pair{"old", &oldSide}, std::pair{"new", &newSide}}) {
            text += '\t';
            text += VerdictLine(which, *side);
        }
    }
    if (!changes.empty() || !text.empty()) text += UnrecognisedLines(oldSide, newSide);
    std::string section;
    for (const Change& c : changes) {
        if (c.section != section) {
            section = c.section;
            text += section + ":\n";
        }
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
    return text;
}

namespace {
nlohmann::ordered_json EntryFactsJson(const std::optional<EntryFacts>& facts) {
    if (!facts) return nullptr;
    nlohmann::ordered_json json;
    json["version"] = facts->version;
    json["size"] = facts->size;
    json["created"] = facts->created.Printed();
    json["createdIso"] = facts->created.Iso();
    json["written"] = facts->written.Printed();
    json["writtenIso"] = facts->written.Iso();
    return json;
}
}  // namespace

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
    for (const Change& c : changes) {
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
        json["changes"].push_back(std::move(j));
    }
    return json;
}

}  // namespace report_model

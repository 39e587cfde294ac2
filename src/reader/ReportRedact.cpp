#include "reader/ReportRedact.h"

#include <algorithm>
#include <bitset>

#include "format/EntryText.h"
#include "format/LineForms.h"
#include "reader/ReportRender.h"

namespace report_redact {

using namespace report_model;

namespace {

// Accounts of access lists that every Windows has: they say nothing of the
// customer, and support reads them.
constexpr std::string_view kBuiltInDomains[] = {"builtin", "nt authority", "nt service",
                                                "application package authority"};
constexpr std::string_view kBuiltInNames[] = {
    "everyone",       "creator owner", "creator group",  "system",        "administrators",
    "administrator",  "users",         "guests",         "guest",         "authenticated users",
    "trustedinstaller", "domain admins", "domain users", "defaultaccount", "none",
};
// What sets a pseudonym apart from the text around it in the check.
constexpr char kApart[] = "\x01";

// A workgroup's usual name says nothing either.
constexpr std::string_view kUsualWorkgroup = "workgroup";

template <std::size_t N>
bool IsOneOf(std::string_view folded, const std::string_view (&names)[N]) {
    return std::find(std::begin(names), std::end(names), folded) != std::end(names);
}

std::string Numbered(std::string_view lead, unsigned number, int digits) {
    std::string text = std::to_string(number);
    if (text.size() < static_cast<std::size_t>(digits)) text.insert(0, digits - text.size(), '0');
    return std::string(lead) + text;
}

// "02-00-00-00-00-01": a locally administered address, which no maker's
// card carries.
std::string HardwareAddressPseudonym(unsigned number) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string text = "02-00";
    for (int shift = 24; shift >= 0; shift -= 8) {
        text += '-';
        text += kHex[number >> (shift + 4) & 0xF];
        text += kHex[number >> shift & 0xF];
    }
    return text;
}

std::string MakePseudonym(Kind kind, unsigned number) {
    switch (kind) {
        case Kind::ComputerName: return Numbered("HOST-", number, 4);
        case Kind::Domain: return Numbered("DOMAIN-", number, 4);
        case Kind::User: return Numbered("USER-", number, 4);
        case Kind::Account: return Numbered("ACCOUNT-", number, 4);
        case Kind::ProductId: return Numbered("XXXXX-XXX-XXXXXXX-", number, 5);
        case Kind::HardwareAddress: return HardwareAddressPseudonym(number);
        case Kind::AdapterName: return Numbered("ADAPTER-", number, 4);
        case Kind::DnsSuffix: return Numbered("DNS-", number, 4);
        case Kind::Keyword: break;
    }
    return Numbered("KEYWORD-", number, 4);
}

std::optional<Kind> KindNamed(std::string_view name) {
    for (std::size_t i = 0; i < kKindCount; ++i)
        if (kRedactionKinds[i] == name) return static_cast<Kind>(i);
    return std::nullopt;
}

std::string MapKey(Kind kind, std::string_view original) {
    return std::to_string(static_cast<int>(kind)) + '\t' + FoldCase(original);
}

// Replaces every original, in any letter case, by its pseudonym; the longest
// original first where several start at the same place.
class Substitution {
public:
    void Add(const std::string& original, const std::string& pseudonym) {
        if (original.empty()) return;
        pairs_.push_back({FoldCase(original), pseudonym});
        firstBytes_.set(static_cast<unsigned char>(pairs_.back().folded[0]));
    }
    void Sort() {
        std::stable_sort(pairs_.begin(), pairs_.end(),
                         [](const Pair& a, const Pair& b) { return a.folded.size() > b.folded.size(); });
    }
    void Apply(std::string& text) const {
        if (!MayHold(text)) return;  // most texts hold none: no copy
        const std::string folded = FoldCase(text);
        std::string out;
        out.reserve(text.size());
        for (std::size_t i = 0; i < text.size();) {
            const Pair* match = MatchAt(folded, i);
            if (match) {
                out += match->pseudonym;
                i += match->folded.size();
            } else {
                out += text[i++];
            }
        }
        text = std::move(out);
    }

private:
    struct Pair {
        std::string folded, pseudonym;
    };
    bool MayHold(const std::string& text) const {
        for (char c : text) {
            const unsigned char b = static_cast<unsigned char>(c);
            // A capital folds to its small letter: look for both.
            if (firstBytes_.test(b) || (b >= 'A' && b <= 'Z' && firstBytes_.test(b + 32)) || b >= 0x80) return true;
        }
        return false;
    }
    const Pair* MatchAt(const std::string& folded, std::size_t at) const {
        if (!firstBytes_.test(static_cast<unsigned char>(folded[at]))) return nullptr;
        for (const Pair& pair : pairs_)
            if (folded.compare(at, pair.folded.size(), pair.folded) == 0) return &pair;
        return nullptr;
    }
    std::vector<Pair> pairs_;
    std::bitset<256> firstBytes_;
};

template <typename Optional, typename Visit>
void VisitIf(Optional& text, Visit& visit) {
    if (text) visit(*text);
}

// Every text of the model that may hold a value to hide (const or not, as
// `r` is). Times and the hex numbers of the hardware section are not among
// them: a value there would break the line's form (VisitKeptTexts).
template <typename ReportType, typename Visit>
void VisitTexts(ReportType& r, Visit&& visit) {
    VisitIf(r.program.name, visit);
    VisitIf(r.program.version, visit);
    VisitIf(r.program.directory, visit);
    auto& host = r.host;
    for (auto* text : {&host.netbiosName, &host.domain, &host.wmiName}) visit(*text);
    VisitIf(host.user, visit);
    auto& w = r.windows;
    for (auto* text : {&w.versionLabel, &w.edition}) visit(*text);
    for (auto* text : {&w.realVersion, &w.productId, &w.systemPath, &w.programFilesPath, &w.commonAppDataPath})
        VisitIf(*text, visit);
    VisitIf(r.hardware.bios, visit);
    VisitIf(r.hardware.board, visit);
    if (r.hardware.volume) visit(r.hardware.volume->fileSystem);
    VisitIf(r.network.errorText, visit);
    for (auto& a : r.network.adapters) {
        visit(a.name);
        for (auto* text : {&a.dnsSuffix, &a.description, &a.friendlyName, &a.physicalAddress}) VisitIf(*text, visit);
    }
    for (auto& d : r.installation.directories) {
        VisitIf(d.path, visit);
        for (auto& e : d.entries) {
            visit(e.name);
            visit(e.version);
            VisitIf(e.accessList, visit);
            VisitIf(e.content, visit);
        }
    }
    for (auto& v : r.installation.registryValues) VisitIf(v.text, visit);
    for (auto& u : r.unrecognised) visit(u.text);
}

// The texts kept as they are, for the check to search too.
template <typename Visit>
void VisitKeptTexts(const Report& r, Visit&& visit) {
    const HardwareSection& hw = r.hardware;
    if (hw.applicationAddresses) {
        visit(hw.applicationAddresses->lowest);
        visit(hw.applicationAddresses->highest);
    }
    if (hw.volume) {
        visit(hw.volume->serial);
        visit(hw.volume->flags);
    }
    for (const Directory& d : r.installation.directories)
        for (const DirectoryEntry& e : d.entries) {
            visit(e.created.Printed());
            visit(e.written.Printed());
        }
}

// The header's time, after its fixed words.
std::size_t HeaderValueStart(const Report& r) {
    const std::string_view lead = lineform::kHeaderLead.Narrow();
    return r.header.text.compare(0, lead.size(), lead) == 0 ? lead.size() : 0;
}

void ApplyEverywhere(const Substitution& s, Report& r) {
    VisitTexts(r, [&](std::string& text) { s.Apply(text); });
    std::string time = r.header.text.substr(HeaderValueStart(r));
    s.Apply(time);
    r.header.text.replace(HeaderValueStart(r), std::string::npos, time);
}

// Whether the text holds a letter: one that can only be a value's, never
// one of the digits or signs around the values.
bool HoldsALetter(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char c) {
        const unsigned char b = static_cast<unsigned char>(c);
        return b >= 0x80 || (b | 0x20u) - 'a' < 26u;
    });
}

// The values of one report to hide, each with its kind, found in order.
class ValueFinder {
public:
    ValueFinder(const Report& report, const PseudonymMap& map) : report_(report), map_(map) {}

    std::vector<std::pair<Kind, std::string>> Find() {
        const HostSection& host = report_.host;
        Add(Kind::ComputerName, host.netbiosName);
        Add(Kind::ComputerName, host.wmiName);
        if (FoldCase(host.domain) != kUsualWorkgroup) Add(Kind::Domain, host.domain);
        if (host.user) Add(Kind::User, *host.user);
        if (report_.windows.productId) Add(Kind::ProductId, *report_.windows.productId);
        for (const Adapter& a : report_.network.adapters) {
            Add(Kind::AdapterName, a.name);
            if (a.physicalAddress) Add(Kind::HardwareAddress, *a.physicalAddress);
            if (a.dnsSuffix) Add(Kind::DnsSuffix, *a.dnsSuffix);
        }
        for (const Directory& d : report_.installation.directories)
            for (const DirectoryEntry& e : d.entries)
                if (e.accessList) AddAccounts(*e.accessList);
        return std::move(found_);
    }

private:
    void Add(Kind kind, std::string_view value) {
        if (value.empty() || seen_.count(FoldCase(value)) || map_.HoldsPseudonym(value)) return;
        seen_.insert(FoldCase(value));
        found_.emplace_back(kind, std::string(value));
    }

    // " Allow DOMAIN\name [RWX]; Deny name [ W ];": the accounts between the
    // kind of entry and the letters.
    void AddAccounts(std::string_view list) {
        std::size_t start = 0;
        while (start < list.size()) {
            std::size_t end = list.find(';', start);
            if (end == std::string_view::npos) end = list.size();
            AddAccount(list.substr(start, end - start));
            start = end + 1;
        }
    }

    void AddAccount(std::string_view entry) {
        for (const AceKind kind : {AceKind::Allow, AceKind::Deny, AceKind::Other}) {
            const std::wstring lead = FormatAccessEntry(kind, std::nullopt, 0);  // " Allow ;"
            const std::string leadText(lead.begin(), lead.end() - 1);            // ASCII
            if (entry.substr(0, leadText.size()) != leadText) continue;
            std::string_view account = entry.substr(leadText.size());
            const std::size_t letters = account.rfind(" [");
            if (letters == std::string_view::npos) return;
            account = account.substr(0, letters);
            const std::size_t slash = account.find('\\');
            const std::string_view domain = slash == std::string_view::npos ? "" : account.substr(0, slash);
            const std::string_view name = slash == std::string_view::npos ? account : account.substr(slash + 1);
            if (IsOneOf(FoldCase(domain), kBuiltInDomains)) return;
            if (!domain.empty() && FoldCase(domain) != kUsualWorkgroup) Add(Kind::Domain, domain);
            if (!IsOneOf(FoldCase(name), kBuiltInNames)) Add(Kind::Account, name);
            return;
        }
    }

    const Report& report_;
    const PseudonymMap& map_;
    std::vector<std::pair<Kind, std::string>> found_;
    std::unordered_set<std::string> seen_;
};

// The marker's kinds: those of an earlier redaction and of this one.
std::vector<std::string> MarkerKinds(const Report& report, const std::vector<Replacement>& replaced) {
    std::bitset<kKindCount> kinds;
    if (report.redaction)
        for (const std::string& name : report.redaction->kinds)
            if (auto kind = KindNamed(name)) kinds.set(static_cast<std::size_t>(*kind));
    for (const Replacement& r : replaced) kinds.set(static_cast<std::size_t>(r.kind));
    std::vector<std::string> names;
    for (std::size_t i = 0; i < kKindCount; ++i)
        if (kinds.test(i)) names.emplace_back(kRedactionKinds[i]);
    return names;
}

// Latin Extended-A pairs a capital with the small letter after it, with the
// parity changing at U+0138 and U+0178.
char32_t FoldLatinExtendedA(char32_t c) {
    if (c >= 0x100 && c <= 0x137 && c % 2 == 0) return c + 1;
    if (c >= 0x139 && c <= 0x148 && c % 2 == 1) return c + 1;
    if (c >= 0x14A && c <= 0x177 && c % 2 == 0) return c + 1;
    if (c >= 0x179 && c <= 0x17E && c % 2 == 1) return c + 1;
    return c;
}

char32_t FoldTwoByte(char32_t c) {
    if ((c >= 0xC0 && c <= 0xDE && c != 0xD7) || (c >= 0x391 && c <= 0x3A9 && c != 0x3A2) ||
        (c >= 0x410 && c <= 0x42F))
        return c + 0x20;
    if (c >= 0x400 && c <= 0x40F) return c + 0x50;
    return FoldLatinExtendedA(c);
}

}  // namespace

std::string_view KindName(Kind kind) { return kRedactionKinds[static_cast<std::size_t>(kind)]; }

std::string FoldCase(std::string_view text) {
    std::string folded(text);
    for (std::size_t i = 0; i < folded.size(); ++i) {
        const unsigned char b = static_cast<unsigned char>(folded[i]);
        if (b >= 'A' && b <= 'Z') {
            folded[i] = static_cast<char>(b + 32);
        } else if ((b & 0xE0) == 0xC0 && i + 1 < folded.size() && (folded[i + 1] & 0xC0) == 0x80) {
            const char32_t c = static_cast<char32_t>((b & 0x1F) << 6 | (folded[i + 1] & 0x3F));
            const char32_t small = FoldTwoByte(c);
            // Every fold above stays within two bytes (below U+0800).
            folded[i] = static_cast<char>(0xC0 | small >> 6);
            folded[i + 1] = static_cast<char>(0x80 | (small & 0x3F));
            ++i;
        }
    }
    return folded;
}

bool PseudonymMap::Read(std::string_view text, std::string& problem) {
    std::size_t number = 0;
    while (!text.empty()) {
        ++number;
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (line.empty()) continue;
        const std::size_t tab1 = line.find('\t');
        const std::size_t tab2 = tab1 == std::string_view::npos ? tab1 : line.find('\t', tab1 + 1);
        const auto kind = KindNamed(line.substr(0, tab1));
        if (!kind || tab2 == std::string_view::npos || tab2 == tab1 + 1 || tab2 + 1 == line.size() ||
            line.find('\t', tab2 + 1) != std::string_view::npos) {
            problem = "line " + std::to_string(number) + " is not \"<kind>\\t<original>\\t<pseudonym>\"";
            return false;
        }
        const std::string original(line.substr(tab1 + 1, tab2 - tab1 - 1));
        if (byOriginal_.count(MapKey(*kind, original))) {
            problem = "line " + std::to_string(number) + " maps a value mapped before";
            return false;
        }
        Add({*kind, original, std::string(line.substr(tab2 + 1))});
    }
    return true;
}

std::string PseudonymMap::Text() const {
    std::string text;
    for (const Mapping& m : mappings_)
        text.append(KindName(m.kind)).append(1, '\t').append(m.original).append(1, '\t').append(m.pseudonym) += '\n';
    return text;
}

bool PseudonymMap::HoldsPseudonym(std::string_view text) const {
    const std::string folded = FoldCase(text);
    return std::any_of(pseudonyms_.begin(), pseudonyms_.end(),
                       [&](const std::string& pseudonym) { return folded.find(pseudonym) != std::string::npos; });
}

std::vector<std::string> PseudonymMap::Pseudonyms() const {
    std::vector<std::string> all;
    for (const Mapping& m : mappings_) all.push_back(m.pseudonym);
    return all;
}

const std::string& PseudonymMap::PseudonymOf(Kind kind, std::string_view original) {
    const auto found = byOriginal_.find(MapKey(kind, original));
    if (found != byOriginal_.end()) return mappings_[found->second].pseudonym;
    unsigned& made = made_[static_cast<std::size_t>(kind)];
    unsigned number = made;
    std::string pseudonym;
    do pseudonym = MakePseudonym(kind, ++number);
    while (pseudonyms_.count(FoldCase(pseudonym)));
    made = number - 1;  // Add() counts the new one
    Add({kind, std::string(original), std::move(pseudonym)});
    return mappings_.back().pseudonym;
}

void PseudonymMap::Add(Mapping mapping) {
    byOriginal_.emplace(MapKey(mapping.kind, mapping.original), mappings_.size());
    pseudonyms_.insert(FoldCase(mapping.pseudonym));
    ++made_[static_cast<std::size_t>(mapping.kind)];
    mappings_.push_back(std::move(mapping));
}

Redacted RedactReport(const Report& report, const std::vector<std::string>& keywords, PseudonymMap& map) {
    Redacted result{report, {}};
    std::vector<std::pair<Kind, std::string>> values = ValueFinder(report, map).Find();
    for (const std::string& keyword : keywords)
        if (!keyword.empty()) values.emplace_back(Kind::Keyword, keyword);
    Substitution substitution;
    for (auto& [kind, original] : values) {
        const std::string& pseudonym = map.PseudonymOf(kind, original);
        substitution.Add(original, pseudonym);
        result.replaced.push_back({kind, std::move(original), pseudonym});
    }
    // A pseudonym already in the text (a report redacted before) stays
    // whole: a keyword such as "user" must not eat into "USER-0001".
    for (const std::string& pseudonym : map.Pseudonyms()) substitution.Add(pseudonym, pseudonym);
    substitution.Sort();
    ApplyEverywhere(substitution, result.report);
    Redaction marker;
    marker.kinds = MarkerKinds(report, result.replaced);
    marker.line = report.lineCount + (report.redaction ? 0 : 2);
    result.report.lineCount = marker.line;
    result.report.redaction = std::move(marker);
    return result;
}

std::optional<Kind> FindSurvivor(std::u16string_view body, const std::vector<Replacement>& replaced) {
    const Report reread = ParseReportBody(body);
    // The pseudonyms and the marker are the tool's own words: set apart, so
    // that a keyword such as "host" is not found in "HOST-0001", and so that
    // no two pieces around one join into a value.
    Substitution apart;
    for (const Replacement& r : replaced) apart.Add(r.pseudonym, kApart);
    if (reread.redaction) apart.Add(RedactionLine(reread.redaction->kinds), kApart);
    apart.Sort();
    const auto prepared = [&](std::string text) {
        apart.Apply(text);
        return FoldCase(text);
    };
    // A value with a letter is searched in every value of the body, each on
    // its own: the labels around them ("\tuser: ") are the report's own
    // words, not the customer's, and a keyword may well be one of them. Any
    // other value (digits and signs) is searched in the whole body.
    std::string values;
    const auto add = [&](const std::string& text) { (values += text) += kApart; };
    VisitTexts(reread, add);
    VisitKeptTexts(reread, add);
    add(reread.header.text.substr(HeaderValueStart(reread)));
    const std::string inValues = prepared(std::move(values));
    const std::string inBody = prepared(Utf8FromUtf16(body));
    for (const Replacement& r : replaced) {
        const std::string& text = HoldsALetter(r.original) ? inValues : inBody;
        if (text.find(FoldCase(r.original)) != std::string::npos) return r.kind;
    }
    return std::nullopt;
}

}  // namespace report_redact

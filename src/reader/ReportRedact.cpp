#include "reader/ReportRedact.h"

#include <algorithm>
#include <bitset>
#include <functional>

#include "format/EntryText.h"
#include "format/LineForms.h"
#include "format/NumberText.h"
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
// What stands for a pseudonym in the check: a byte that UTF-8 text never
// holds, read as a letter, since a pseudonym begins with a letter and ends
// with a digit (IsWordCharacter).
constexpr char kPseudonymMark = '\xFF';
// What parts the values searched by the check: a break, which no value and
// no keyword holds.
constexpr char kValueBreak = '\n';

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
    std::string text = "02-00";
    for (int shift = 24; shift >= 0; shift -= 8)
        text += '-' + numtext::Hex<char>(number >> shift & 0xFF, 2, /*upper=*/true);
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

bool AllHex(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || ((c | 0x20) >= 'a' && (c | 0x20) <= 'f');
    });
}

// Whether the value reads as a pseudonym redact makes, of any kind:
// "HOST-0001", "XXXXX-XXX-XXXXXXX-00001", "02-00-00-00-00-01". Such a value
// (of a report redacted before, with no map at hand) says nothing of the
// customer: it is left as it is, never given a pseudonym of its own.
bool ReadsAsPseudonym(std::string_view value) {
    for (std::size_t i = 0; i < kKindCount; ++i) {
        const Kind kind = static_cast<Kind>(i);
        const std::string form = MakePseudonym(kind, 0);  // "HOST-0000"
        if (kind == Kind::HardwareAddress) {
            constexpr std::string_view kLead = "02-00-";
            if (value.size() == form.size() && value.substr(0, kLead.size()) == kLead &&
                AllHex(value.substr(6, 2)) && AllHex(value.substr(9, 2)) && AllHex(value.substr(12, 2)) &&
                AllHex(value.substr(15, 2)) && value[8] == '-' && value[11] == '-' && value[14] == '-')
                return true;
            continue;
        }
        const std::size_t digits = form.size() - form.find_last_not_of('0') - 1;
        const std::string_view lead = std::string_view(form).substr(0, form.size() - digits);
        const std::string_view number = value.substr(std::min(lead.size(), value.size()));
        if (FoldCase(value.substr(0, lead.size())) == FoldCase(lead) && number.size() >= digits &&
            std::all_of(number.begin(), number.end(), [](char c) { return c >= '0' && c <= '9'; }))
            return true;
    }
    return false;
}

std::optional<Kind> KindNamed(std::string_view name) {
    for (std::size_t i = 0; i < kKindCount; ++i)
        if (kRedactionKinds[i] == name) return static_cast<Kind>(i);
    return std::nullopt;
}

std::string MapKey(Kind kind, std::string_view original) {
    return std::to_string(static_cast<int>(kind)) + '\t' + FoldCase(original);
}

// A letter or a digit, of any script: what a name may not touch to stand
// as a word. Beyond ASCII everything is, but the punctuation and symbol
// blocks (Latin-1's signs, general punctuation to the arrows and shapes,
// CJK punctuation, the specials). The check's pseudonym mark is one too.
bool IsWordCharacter(char32_t c) {
    if (c < 0x80) return (c | 0x20u) - 'a' < 26u || c - '0' < 10u;
    const bool sign = c <= 0xBF || c == 0xD7 || c == 0xF7 || (c >= 0x2000 && c <= 0x2BFF) ||
                      (c >= 0x3000 && c <= 0x303F) || (c >= 0xFFF0 && c <= 0xFFFF);
    return !sign;
}

// The character whose UTF-8 form starts at `at`, and its length; a byte
// that starts no whole form stands for itself (the mark among them).
std::pair<char32_t, std::size_t> CharacterAt(std::string_view text, std::size_t at) {
    const unsigned char lead = static_cast<unsigned char>(text[at]);
    const std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF8 ? 4 : 1;
    if (length == 1 || at + length > text.size()) return {lead < 0x80 ? lead : 0xE000, 1};  // U+E000: a letter
    char32_t c = lead & (0x7F >> length);
    for (std::size_t k = 1; k < length; ++k) {
        const unsigned char next = static_cast<unsigned char>(text[at + k]);
        if ((next & 0xC0) != 0x80) return {0xE000, 1};
        c = c << 6 | (next & 0x3F);
    }
    return {c, length};
}

bool WordCharacterAt(std::string_view text, std::size_t at) { return IsWordCharacter(CharacterAt(text, at).first); }

// Whether the character that ends just before `end` is a letter or digit.
bool WordCharacterBefore(std::string_view text, std::size_t end) {
    std::size_t start = end - 1;
    while (start > 0 && end - start < 4 && (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80) --start;
    const auto [c, length] = CharacterAt(text, start);
    if (start + length == end) return IsWordCharacter(c);
    return WordCharacterAt(text, end - 1);
}

// Whether `value`, found at `at` in `text`, stands there as a word of its
// own: no letter or digit joins it on a side where it begins or ends with
// one. "or" stands so in "C:\Users\or\", "or-notes.txt" and "(or)", not in
// "Orvane", "memory" or "WORKGROUP".
bool StandsAsWord(std::string_view text, std::size_t at, std::string_view value) {
    if (at > 0 && WordCharacterAt(value, 0) && WordCharacterBefore(text, at)) return false;
    const std::size_t end = at + value.size();
    return end >= text.size() || !WordCharacterBefore(value, value.size()) || !WordCharacterAt(text, end);
}

// Where a value is replaced and searched: a keyword wherever it stands,
// inside longer words too; every other value (names above all, which may
// be as short as "or") only where it stands as a word.
enum class Reach { Anywhere, WholeWord };

Reach ReachOf(Kind kind) { return kind == Kind::Keyword ? Reach::Anywhere : Reach::WholeWord; }

// Where the folded value next stands in the folded text, from `from`. The
// text is a whole report's: a long value is looked for by a searcher that
// skips ahead by its length, where one such as "02-fc-..." would stop at
// every "0"; a short one by its first byte.
class ValueSearch {
public:
    explicit ValueSearch(std::string_view value) : value_(value), skipping_(value.begin(), value.end()) {}
    std::size_t Next(std::string_view text, std::size_t from) const {
        if (value_.size() < kSkippingLength) return text.find(value_, from);
        const auto at = std::search(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(), skipping_);
        return at == text.end() ? std::string_view::npos : static_cast<std::size_t>(at - text.begin());
    }

private:
    static constexpr std::size_t kSkippingLength = 8;
    std::string_view value_;
    std::boyer_moore_horspool_searcher<std::string_view::const_iterator> skipping_;
};

// Whether the folded text holds the folded value within that reach.
bool Holds(std::string_view text, std::string_view value, Reach reach) {
    const ValueSearch search(value);
    for (std::size_t at = search.Next(text, 0); at != std::string_view::npos; at = search.Next(text, at + 1))
        if (reach == Reach::Anywhere || StandsAsWord(text, at, value)) return true;
    return false;
}

// Replaces every original, in any letter case, by its pseudonym; the longest
// original first where several start at the same place. A word to keep (a
// pseudonym of an earlier redaction) is left whole wherever it stands: it
// wins over any original at its place, and no original is replaced across
// its edge. Index() must come after the last Add() and Keep(), and before
// Apply().
//
// A map kept for a fleet holds many thousands of pseudonyms, each kept
// whole: so a place is first asked whether any original begins with its
// two bytes (one bit), and only then, for each length an original of its
// first byte has, whether the text of that length there is one (one hash
// look-up each), instead of comparing every original at every place.
class Substitution {
public:
    Substitution() = default;
    Substitution(const Substitution&) = delete;  // byFolded_ points into pairs_
    Substitution& operator=(const Substitution&) = delete;

    void Add(const std::string& original, const std::string& pseudonym, Reach reach = Reach::Anywhere) {
        if (!original.empty()) pairs_.push_back({FoldCase(original), pseudonym, reach, /*keep=*/false});
    }
    void Keep(const std::string& word) {
        if (!word.empty()) pairs_.push_back({FoldCase(word), {}, Reach::Anywhere, /*keep=*/true});
        keeps_ |= !word.empty();
    }
    void Index() {
        for (std::size_t i = 0; i < pairs_.size(); ++i) {
            const std::string& folded = pairs_[i].folded;
            const auto first = static_cast<unsigned char>(folded[0]);
            firstBytes_[first] = true;
            if (folded.size() == 1)
                singleBytes_[first] = true;
            else
                beginnings_[first << 8 | static_cast<unsigned char>(folded[1])] = true;
            std::vector<std::size_t>& lengths = lengthsByFirstByte_[first];
            if (std::find(lengths.begin(), lengths.end(), folded.size()) == lengths.end()) lengths.push_back(folded.size());
            byFolded_[folded].push_back(i);  // in the order added: the first added wins
        }
        for (std::vector<std::size_t>& lengths : lengthsByFirstByte_) std::sort(lengths.rbegin(), lengths.rend());
        met_.assign(pairs_.size(), false);
    }
    void Apply(std::string& text) const {
        if (!MayHold(text)) return;  // most texts hold none: no copy
        const std::string folded = FoldCase(text);
        std::string out;
        std::size_t kept = 0;  // text[kept, i) is yet to be copied
        bool replaced = false;
        for (std::size_t i = 0; i < text.size();) {
            const Pair* match = MatchAt(folded, i);
            if (!match) {
                ++i;
                continue;
            }
            met_[static_cast<std::size_t>(match - pairs_.data())] = true;
            if (match->keep) {  // copied with the text around it
                i += match->folded.size();
                continue;
            }
            if (out.empty()) out.reserve(text.size());
            out.append(text, kept, i - kept).append(match->pseudonym);
            i += match->folded.size();
            kept = i;
            replaced = true;
        }
        if (!replaced) return;
        text = std::move(out.append(text, kept));
    }
    // The words kept that Apply() met, folded.
    std::vector<std::string> KeptWordsMet() const {
        std::vector<std::string> words;
        for (std::size_t i = 0; i < pairs_.size(); ++i)
            if (pairs_[i].keep && met_[i]) words.push_back(pairs_[i].folded);
        return words;
    }

private:
    struct Pair {
        std::string folded, pseudonym;
        Reach reach;
        bool keep;
    };
    bool MayHold(const std::string& text) const {
        for (char c : text) {
            const unsigned char b = static_cast<unsigned char>(c);
            // A capital folds to its small letter: look for both.
            if (firstBytes_[b] || (b >= 'A' && b <= 'Z' && firstBytes_[b + 32]) || b >= 0x80) return true;
        }
        return false;
    }
    bool MayBeginAt(const std::string& folded, std::size_t at) const {
        const auto first = static_cast<unsigned char>(folded[at]);
        if (!firstBytes_[first]) return false;  // most places: one look at one byte
        if (singleBytes_[first]) return true;
        return at + 1 < folded.size() && beginnings_[first << 8 | static_cast<unsigned char>(folded[at + 1])];
    }
    // Calls `visit` with each pair whose original is the text at `at`, the
    // longest first, until it says it is done.
    template <typename Visit>
    void VisitPairsAt(const std::string& folded, std::size_t at, Visit&& visit) const {
        if (!MayBeginAt(folded, at)) return;
        for (std::size_t length : lengthsByFirstByte_[static_cast<unsigned char>(folded[at])]) {
            if (at + length > folded.size()) continue;
            const auto found = byFolded_.find(std::string_view(folded).substr(at, length));
            if (found == byFolded_.end()) continue;
            for (std::size_t i : found->second)
                if (visit(pairs_[i])) return;
        }
    }
    // What stands at `at`: a word to keep, else the longest original that
    // cuts into no word to keep; nothing when neither does.
    const Pair* MatchAt(const std::string& folded, std::size_t at) const {
        const Pair* kept = nullptr;
        const Pair* longest = nullptr;
        VisitPairsAt(folded, at, [&](const Pair& pair) {
            if (pair.keep) {
                kept = &pair;
                return true;
            }
            if (!longest && (pair.reach == Reach::Anywhere || StandsAsWord(folded, at, pair.folded)) &&
                !CutsIntoAKeptWord(folded, at, pair.folded.size()))
                longest = &pair;
            return longest && !keeps_;  // else a shorter word to keep may still win
        });
        return kept ? kept : longest;
    }
    // Whether a word to keep begins within (at, at + length).
    bool CutsIntoAKeptWord(const std::string& folded, std::size_t at, std::size_t length) const {
        if (!keeps_) return false;
        for (std::size_t inside = at + 1; inside < at + length; ++inside) {
            bool kept = false;
            VisitPairsAt(folded, inside, [&](const Pair& pair) { return kept = pair.keep; });
            if (kept) return true;
        }
        return false;
    }
    std::vector<Pair> pairs_;
    bool keeps_ = false;
    std::array<bool, 256> firstBytes_{}, singleBytes_{};
    std::vector<char> beginnings_ = std::vector<char>(1 << 16);    // first two bytes of the originals
    std::array<std::vector<std::size_t>, 256> lengthsByFirstByte_;  // longest first
    std::unordered_map<std::string_view, std::vector<std::size_t>> byFolded_;  // into pairs_, fixed by Index()
    // Which pairs Apply() met, for KeptWordsMet(); the substitution is
    // otherwise done once Index() is.
    mutable std::vector<char> met_;
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
    ValueFinder(const Report& report, PseudonymMap& map) : report_(report), map_(map) {}

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
        // Each value looked at once: an account stands in every entry's list.
        if (value.empty() || !seen_.insert(FoldCase(value)).second) return;
        if (ReadsAsPseudonym(value)) {
            map_.Reserve(value);  // kept, and no other value's
            return;
        }
        if (!map_.HoldsPseudonym(value)) found_.emplace_back(kind, std::string(value));
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
        for (const std::string& leadText : aceLeads_) {
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

    // " Allow ", " Deny ", ...: what comes before an account, made once.
    static std::vector<std::string> AceLeads() {
        std::vector<std::string> leads;
        for (const AceKind kind : {AceKind::Allow, AceKind::Deny, AceKind::Other}) {
            const std::wstring lead = FormatAccessEntry(kind, std::nullopt, 0);  // " Allow ;"
            leads.emplace_back(lead.begin(), lead.end() - 1);                      // ASCII
        }
        return leads;
    }

    const Report& report_;
    PseudonymMap& map_;
    const std::vector<std::string> aceLeads_ = AceLeads();
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

// Every value of the report, each followed by a break: what a value with a
// letter is searched in (FirstHeld).
std::string ValuesText(const Report& reread) {
    std::string values;
    const auto add = [&](const std::string& text) { (values += text) += kValueBreak; };
    VisitTexts(reread, add);
    VisitKeptTexts(reread, add);
    add(reread.header.text.substr(HeaderValueStart(reread)));
    return values;
}

// The kind of the first replaced value or keyword that the redacted body
// still holds, each text of it made ready by `prepare` (folded, and maybe
// more). A value with a letter is searched in every value of the body, each
// on its own: the labels around them ("\tuser: ") are the report's own
// words, not the customer's, and a keyword may well be one of them. Any
// other value (digits and signs) is searched in the whole body. A keyword
// is searched as part of a longer text too, any other value where it
// stands as a word, as it was replaced: a user "or" that stands in
// "Orvane" or "memory" was never there as a name.
template <typename Prepare>
std::optional<Kind> FirstHeld(std::u16string_view body, const Report& reread, const std::vector<Replacement>& replaced,
                              const Prepare& prepare) {
    const std::string inValues = prepare(ValuesText(reread));
    std::optional<std::string> inBody;  // made when a value without a letter asks for it
    for (const Replacement& r : replaced) {
        if (!HoldsALetter(r.original) && !inBody) inBody = prepare(Utf8FromUtf16(body));
        const std::string& text = HoldsALetter(r.original) ? inValues : *inBody;
        if (Holds(text, FoldCase(r.original), ReachOf(r.kind))) return r.kind;
    }
    return std::nullopt;
}

// FoldCase of a text the caller is done with, with no copy made. ASCII's
// capitals first, in a loop the compiler runs many bytes at a time; the
// two-byte forms only when there is a byte beyond ASCII.
std::string FoldedInPlace(std::string folded) {
    bool beyondAscii = false;
    for (char& c : folded) {
        const unsigned char b = static_cast<unsigned char>(c);
        c = static_cast<char>(static_cast<unsigned>(b - 'A') < 26u ? b + 32 : b);
        beyondAscii |= b >= 0x80;
    }
    if (!beyondAscii) return folded;
    for (std::size_t i = 0; i < folded.size(); ++i) {
        const unsigned char b = static_cast<unsigned char>(folded[i]);
        if ((b & 0xE0) == 0xC0 && i + 1 < folded.size() && (folded[i + 1] & 0xC0) == 0x80) {
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

}  // namespace

std::string_view KindName(Kind kind) { return kRedactionKinds[static_cast<std::size_t>(kind)]; }

std::string FoldCase(std::string_view text) { return FoldedInPlace(std::string(text)); }

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
    // Each place of the text asked once per length a pseudonym has (a few),
    // not once per pseudonym (a fleet's map holds many thousands).
    const std::string folded = FoldCase(text);
    for (std::size_t length : pseudonymLengths_)
        for (std::size_t at = 0; at + length <= folded.size(); ++at)
            if (pseudonyms_.count(folded.substr(at, length))) return true;
    return false;
}

std::vector<std::string> PseudonymMap::Pseudonyms() const { return {pseudonyms_.begin(), pseudonyms_.end()}; }

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

void PseudonymMap::Reserve(std::string_view pseudonym) {
    pseudonyms_.insert(FoldCase(pseudonym));
    if (std::find(pseudonymLengths_.begin(), pseudonymLengths_.end(), pseudonym.size()) == pseudonymLengths_.end())
        pseudonymLengths_.push_back(pseudonym.size());
}

void PseudonymMap::Add(Mapping mapping) {
    byOriginal_.emplace(MapKey(mapping.kind, mapping.original), mappings_.size());
    Reserve(mapping.pseudonym);
    ++made_[static_cast<std::size_t>(mapping.kind)];
    mappings_.push_back(std::move(mapping));
}

Redacted RedactReport(Report report, const std::vector<std::string>& keywords, PseudonymMap& map) {
    std::vector<std::pair<Kind, std::string>> values = ValueFinder(report, map).Find();
    Redacted result{std::move(report), {}, {}};  // its texts replaced below, its marker last
    for (const std::string& keyword : keywords)
        if (!keyword.empty()) values.emplace_back(Kind::Keyword, keyword);
    // A pseudonym known before this run may stand in the text (a report
    // redacted before): it stays whole, so that a keyword such as "user" or
    // "0001" does not eat into "USER-0001" and redacting twice is the same
    // as once. This run's own are left out: where the text holds one, it
    // was not made by redact, and a value or keyword in it is replaced.
    Substitution substitution;
    for (const std::string& pseudonym : map.Pseudonyms()) substitution.Keep(pseudonym);
    for (auto& [kind, original] : values) {
        const std::string& pseudonym = map.PseudonymOf(kind, original);
        substitution.Add(original, pseudonym, ReachOf(kind));
        result.replaced.push_back({kind, std::move(original), pseudonym});
    }
    substitution.Index();
    ApplyEverywhere(substitution, result.report);
    result.keptPseudonyms = substitution.KeptWordsMet();
    Redaction marker;
    marker.kinds = MarkerKinds(result.report, result.replaced);
    marker.line = result.report.lineCount + (result.report.redaction ? 0 : 2);
    result.report.lineCount = marker.line;
    result.report.redaction = std::move(marker);
    return result;
}

// Whether `text` holds one of `words` over the whole of [at, at + length).
bool InsideOneOf(std::string_view text, std::size_t at, std::size_t length, const std::vector<std::string>& words) {
    for (const std::string& word : words) {
        if (word.size() < length) continue;
        const std::size_t from = at + length > word.size() ? at + length - word.size() : 0;
        if (text.substr(from, at - from + word.size()).find(word) != std::string_view::npos) return true;
    }
    return false;
}

// The tool's own words in the redacted report, folded: the pseudonyms it
// wrote or kept, and the marker.
std::vector<std::string> OwnWords(const Report& reread, const Redacted& redacted) {
    std::vector<std::string> words = redacted.keptPseudonyms;
    for (const Replacement& r : redacted.replaced) words.push_back(FoldCase(r.pseudonym));
    if (reread.redaction) words.push_back(FoldCase(RedactionLine(reread.redaction->kinds)));
    return words;
}

// A keyword's hit wholly inside one of the tool's own words (a keyword
// "host" in "HOST-0001") is no survivor, and setting those words apart takes
// it away. A hit that runs past such a word is one, which setting apart
// would hide: a keyword that holds a pseudonym's text can be made whole by
// the replacing itself ("id: " before "XXXXX-XXX-XXXXXXX-00001").
bool KeywordRunsPastOwnWords(std::u16string_view body, const Report& reread,
                             const std::vector<Replacement>& replaced, const std::vector<std::string>& ownWords) {
    const std::string inValues = FoldedInPlace(ValuesText(reread));
    std::optional<std::string> inBody;  // as FirstHeld searches a keyword without a letter
    for (const Replacement& r : replaced) {
        if (r.kind != Kind::Keyword || r.original.empty()) continue;
        if (!HoldsALetter(r.original) && !inBody) inBody = FoldedInPlace(Utf8FromUtf16(body));
        const std::string& text = HoldsALetter(r.original) ? inValues : *inBody;
        const std::string keyword = FoldCase(r.original);
        for (std::size_t at = text.find(keyword); at != std::string::npos; at = text.find(keyword, at + 1))
            if (!InsideOneOf(text, at, keyword.size(), ownWords)) return true;
    }
    return false;
}

std::optional<Kind> FindSurvivor(std::u16string_view body, const Redacted& redacted) {
    return FindSurvivor(body, ParseReportBody(body), redacted);
}

std::optional<Kind> FindSurvivor(std::u16string_view body, const Report& reread, const Redacted& redacted) {
    // The pseudonyms and the marker are the tool's own words: each set apart
    // as one mark, so that a keyword such as "host" is not found in
    // "HOST-0001", so that no two pieces around one join into a value, and
    // so that a name beside a pseudonym ("HOST-0001bob") is no more a word
    // of its own than it was where the pseudonym was made. Setting apart
    // only ever takes a hit away (the mark stands for letters, as the
    // pseudonyms' edges are): a text that holds none as it is holds none
    // set apart either, and that pass over the whole text is spared.
    const std::vector<Replacement>& replaced = redacted.replaced;
    const auto folded = [](std::string text) { return FoldedInPlace(std::move(text)); };
    if (!FirstHeld(body, reread, replaced, folded)) return std::nullopt;
    const std::vector<std::string> ownWords = OwnWords(reread, redacted);
    Substitution apart;
    const std::string mark(1, kPseudonymMark);
    for (const std::string& word : ownWords) apart.Add(word, mark);
    apart.Index();
    const auto held = FirstHeld(body, reread, replaced, [&](std::string text) {
        apart.Apply(text);
        return FoldedInPlace(std::move(text));
    });
    if (held) return held;
    if (KeywordRunsPastOwnWords(body, reread, replaced, ownWords)) return Kind::Keyword;
    return std::nullopt;
}

}  // namespace report_redact

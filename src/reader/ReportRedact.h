// `reportcheck redact`: a report with the values that say who and where the
// customer is replaced by pseudonyms, so that it can leave their machine.
//
// Works on the model: the values to hide are read from their typed fields
// (host names, the user, the accounts of the access lists, the product id,
// the adapters' names, addresses and DNS suffixes) and the keywords given;
// then every text of the model, the unrecognised lines included, has each of
// them replaced in any letter case: a keyword wherever it stands, inside
// longer words too; any other value where it stands as a word of its own (a
// value, a path's component, a word of a file name), so that a user named
// "or" leaves "Orvane" and "memory" as they are. Numbers, times and
// the other fixed forms are kept as they are, so the redacted body is still
// a report of the same form.
//
// The same value always gets the same pseudonym: within a report through
// the map, and across reports when the map is kept in a file (PseudonymMap).
// A pseudonym of an earlier run that the text holds is left whole, whatever
// the keywords spell: redacting a redacted report again with the same map
// changes nothing.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "reader/ReportModel.h"

namespace report_redact {

// The kinds of value, in the order of report_model::kRedactionKinds.
enum class Kind { ComputerName, Domain, User, Account, ProductId, HardwareAddress, AdapterName, DnsSuffix, Keyword };
inline constexpr std::size_t kKindCount = 9;
static_assert(std::size(report_model::kRedactionKinds) == kKindCount);

std::string_view KindName(Kind kind);  // "computer name", as the marker says it

// The text with its letters in lower case, byte for byte as long: ASCII,
// Latin-1, Latin Extended-A, Greek and Cyrillic capitals are folded, which
// all keep their UTF-8 length, so that a position in the folded text is
// the same position in the text.
std::string FoldCase(std::string_view text);

// original -> pseudonym, for each kind. A map file holds one mapping a line,
// "<kind>\t<original>\t<pseudonym>", in the order they were made.
class PseudonymMap {
public:
    // Adds the mappings of a map file's text; false and `problem` (naming
    // the line, not its values) when a line is not one.
    bool Read(std::string_view text, std::string& problem);
    std::string Text() const;

    // The original's pseudonym, made now when it has none yet. Originals
    // are told apart whatever their letter case.
    const std::string& PseudonymOf(Kind kind, std::string_view original);
    // Whether the text holds one of the map's pseudonyms: a value of a
    // report redacted before, left as it is.
    bool HoldsPseudonym(std::string_view text) const;
    // A text that reads as a pseudonym and stands in the report as it is:
    // no value is given it (it is not a mapping: the map file leaves it out).
    void Reserve(std::string_view pseudonym);
    // Every pseudonym of the map and every text reserved, folded.
    std::vector<std::string> Pseudonyms() const;

private:
    struct Mapping {
        Kind kind;
        std::string original, pseudonym;
    };
    void Add(Mapping mapping);
    std::vector<Mapping> mappings_;
    std::unordered_map<std::string, std::size_t> byOriginal_;  // kind number, tab, folded original
    std::unordered_set<std::string> pseudonyms_;               // folded, so that no two meet
    std::vector<std::size_t> pseudonymLengths_;                // each length once
    std::array<unsigned, kKindCount> made_{};
};

// One value that the redaction replaced.
struct Replacement {
    Kind kind;
    std::string original, pseudonym;
};

struct Redacted {
    report_model::Report report;        // with its marker
    std::vector<Replacement> replaced;  // every value found, the keywords included
    // The pseudonyms of an earlier redaction that the report holds, folded:
    // left whole, nothing replaced inside them or across their edges.
    std::vector<std::string> keptPseudonyms;
};

// Values and keywords must not hold a tab or a line break (a map file's
// separators): the command line refuses such a keyword.
// The report is taken by value: a caller done with it moves it in, and no
// copy of a large listing is made.
Redacted RedactReport(report_model::Report report, const std::vector<std::string>& keywords, PseudonymMap& map);

// The tool checking its own work on the body it is about to write, read
// back: the kind of the first replaced value or keyword still found in it,
// in any letter case, where it was replaced: a keyword also as part of a
// longer text, any other value where it stands as a word; nothing when none
// survives. The pseudonyms (written or kept) and the marker are set apart,
// and a value with a letter is searched in the body's values only (the
// labels are the report's own words, and a keyword may be one of them).
std::optional<Kind> FindSurvivor(std::u16string_view body, const Redacted& redacted);
// The same, with the body already read back (`reread`, ParseReportBody of it).
std::optional<Kind> FindSurvivor(std::u16string_view body, const report_model::Report& reread,
                                 const Redacted& redacted);

}  // namespace report_redact

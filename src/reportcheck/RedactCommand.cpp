// reportcheck redact [--map FILE] [--keyword WORD]... IN OUT: the report IN
// with the values that say who and where the customer is replaced by
// pseudonyms, as OUT, a report of its own. Made whole and checked in memory
// first: a value that survives means no OUT at all.
#include <filesystem>

#include "format/ReportChecksum.h"
#include "reader/ReportRedact.h"
#include "reader/ReportRender.h"
#include "reportcheck/Commands.h"
#include "reportcheck/LoadedReport.h"
#include "reportcheck/Options.h"

namespace {

namespace fs = std::filesystem;

constexpr const Option* kRedactOptions[] = {&kMapOption, &kKeywordOption};

// Whether the two names are one file, or would be once written.
bool SameFile(const fs::path& a, const fs::path& b) {
    std::error_code error;
    if (fs::equivalent(a, b, error)) return true;
    const fs::path first = fs::weakly_canonical(a, error);
    if (error) return a.lexically_normal() == b.lexically_normal();
    const fs::path second = fs::weakly_canonical(b, error);
    return !error && first == second;
}

// The keywords as UTF-8; a problem for the usage line when one cannot be
// kept in a map file's line.
std::string ReadKeywords(const Arguments& arguments, std::vector<std::string>& keywords) {
    for (const NativeString& word : arguments.Values(kKeywordOption)) {
        std::string keyword = ToUtf8(word);
        if (keyword.empty()) return "redact: --keyword needs a word";
        if (keyword.find_first_of("\t\r\n") != std::string::npos)
            return "redact: a keyword holds no tab or line break";
        keywords.push_back(std::move(keyword));
    }
    return {};
}

// The map file's pseudonyms, when it exists; a new map file starts empty.
bool ReadMap(const fs::path& path, report_redact::PseudonymMap& map) {
    std::error_code error;
    if (!fs::exists(path, error)) return true;
    // Read as a report is: a regular file of bounded size, never a pipe.
    std::string bytes, problem;
    if (ReadReportFile(path.c_str(), bytes, problem)) {
        if (map.Read(bytes, problem)) return true;
        problem = "not a map of redact: " + problem;
    }
    Complain(PathText(path), problem);
    return false;
}

bool Write(const fs::path& path, std::string_view bytes) {
    std::string problem;
    if (WriteFileWhole(path, bytes, problem)) return true;
    Complain(PathText(path), problem);
    return false;
}

// What the reader makes of the redacted body must be the same report with
// its values replaced: as many lines it does not recognise, and the marker.
bool KeepsItsForm(const report_model::Report& reread, std::size_t unrecognisedLines) {
    return reread.redaction && reread.unrecognised.size() == unrecognisedLines;
}

std::string KindList(const std::vector<std::string>& kinds) {
    std::string text;
    for (const std::string& kind : kinds) text += (text.empty() ? "" : ", ") + kind;
    return text.empty() ? "nothing found to replace" : text;
}

int RunRedact(const Arguments& arguments) {
    const fs::path in(arguments.Operands()[0]), out(arguments.Operands()[1]);
    const NativeString* mapName = arguments.Value(kMapOption);
    std::vector<std::string> keywords;
    if (std::string problem = ReadKeywords(arguments, keywords); !problem.empty())
        return UsageError(kRedactCommand, problem);
    if (SameFile(in, out)) return UsageError(kRedactCommand, "redact: IN is never changed: OUT must be another file");
    if (mapName && (SameFile(*mapName, in) || SameFile(*mapName, out)))
        return UsageError(kRedactCommand, "redact: the map must be a file of its own, neither IN nor OUT");

    LoadedReport loaded = LoadReport(in.c_str(), KeepBody::No);
    if (loaded.state != LoadState::Report) {
        Complain(PathText(in), loaded.problem);
        return kSomeNotAReport;
    }
    if (loaded.verdict.state != ReportState::Intact) {
        // A new checksum would make a damaged report look whole.
        Complain(PathText(in), DescribeReportVerdict(loaded.verdict) + ": only an intact report is redacted");
        return kSomeAltered;
    }
    report_redact::PseudonymMap map;
    if (mapName && !ReadMap(*mapName, map)) return kSomeNotAReport;

    const std::size_t unrecognisedLines = loaded.report.unrecognised.size();
    const report_redact::Redacted redacted = report_redact::RedactReport(std::move(loaded.report), keywords, map);
    const std::u16string body = report_model::RenderReportBody(redacted.report);
    const report_model::Report reread = report_model::ParseReportBody(body);
    if (const auto survivor = report_redact::FindSurvivor(body, reread, redacted)) {
        Complain(PathText(in), "a value of the kind \"" + std::string(report_redact::KindName(*survivor)) +
                                   "\" would still stand in the redacted report; nothing written");
        return kRedactionFailed;
    }
    if (!KeepsItsForm(reread, unrecognisedLines)) {
        Complain(PathText(in), "the redacted report would no longer read as the original does; nothing written");
        return kRedactionFailed;
    }
    // The map before OUT: pseudonyms kept that no report uses are harmless,
    // a report whose pseudonyms the map forgot is not.
    if (mapName && !Write(*mapName, map.Text())) return kSomeNotAReport;
    if (!Write(out, BuildReportFileBytes(body))) return kSomeNotAReport;
    Print(stdout, PathText(out) + ": redacted (" + KindList(redacted.report.redaction->kinds) + ")\n");
    return kAllIntact;
}

}  // namespace

extern const Command kRedactCommand{
    .name = "redact",
    .synopsis = "redact [--map FILE] [--keyword WORD]... IN OUT",
    .summary = "the report with who and where replaced by pseudonyms",
    .help = "Writes OUT, a copy of the report IN in which the computer's names, the\n"
            "domain (not WORKGROUP), the user, the accounts of the access lists other\n"
            "than Windows' built-in ones, the product id, the adapters' names, hardware\n"
            "addresses and DNS suffixes, wherever they stand as a word of their own (a\n"
            "value, a folder of a path, a word of a file name: a user \"or\" leaves\n"
            "\"Orvane\" as it is), and every WORD, inside longer words too, are replaced\n"
            "in any letter case by pseudonyms such as HOST-0001.\n"
            "Versions, sizes, times, attributes and hardware models are kept. OUT ends\n"
            "with a line \"Redacted: <kinds>\" and a checksum of its own; IN is never\n"
            "changed. The same value gets the same pseudonym throughout; with --map the\n"
            "pseudonyms of earlier runs are used again and new ones added to FILE, so\n"
            "that redacted reports of one machine still compare. Keep FILE to yourself:\n"
            "it undoes the redaction. Pseudonyms of earlier runs are never cut into,\n"
            "not even by a WORD that spells a piece of one: redacting OUT again with\n"
            "the same map and WORDs changes nothing.\n"
            "Before writing, the redacted text is searched for every value replaced and\n"
            "every WORD; if one is found, nothing is written.\n"
            "Exit status: 0 written, 1 IN is altered (not redacted), 2 IN is not a report\n"
            "or a file cannot be read or written, 3 a value would have survived (the\n"
            "message names its kind; nothing written).\n",
    .options = kRedactOptions,
    .minOperands = 2,
    .maxOperands = 2,
    .run = RunRedact,
};

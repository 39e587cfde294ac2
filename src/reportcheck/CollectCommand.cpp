// reportcheck collect PATH...: one JSON line per report file (JSON Lines),
// folders searched recursively.
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <map>
#include <optional>
#include <tuple>
#include <vector>

#include "reader/ReportJson.h"
#include "reader/ReportTime.h"
#include "reportcheck/Commands.h"
#include "reportcheck/FileWalk.h"
#include "reportcheck/LoadedReport.h"
#include "reportcheck/Options.h"
#include "reportcheck/ReportDatabase.h"

namespace {

namespace fs = std::filesystem;

struct LineFacts {
    const char* verdict;
    const std::string* reason = nullptr;       // why it is not a report, or cannot be read
    const std::string* copyOf = nullptr;       // the path of an earlier line with the same report
    const LoadedReport* loaded = nullptr;      // the report, when it is one
    const std::optional<report_model::HeaderTime>* time = nullptr;  // its header's, with the report
};

constexpr std::string_view kNotLatest = "false", kLatest = "true";

// One line of collect's output: {"path", "pathBytes", "verdict", "reason",
// "copyOf", "machine", "time", "latest", "report"}, written straight as text
// at the end of `out` (a tree of the JSON first took most of collect's time).
// "latest" is written false; where it stands, from the line's start, is
// returned, for it to be made true when the line goes out.
std::size_t AppendCollectLine(std::string& out, const fs::path& path, const LineFacts& facts) {
    const std::size_t start = out.size();
    report_model::JsonWriter json(out);
    const auto stringOrNull = [&](const std::string* text) { text ? json.String(*text) : json.Null(); };
    const report_model::HostSection* host = facts.loaded ? &facts.loaded->report.host : nullptr;
    json.Open('{');
    json.Key("path");
    json.String(PathText(path));
    json.Key("pathBytes");
    const std::optional<std::string> bytes = PathBytesUnlessText(path);
    stringOrNull(bytes ? &*bytes : nullptr);
    json.Key("verdict");
    json.String(facts.verdict);
    json.Key("reason");
    stringOrNull(facts.reason);
    json.Key("copyOf");
    stringOrNull(facts.copyOf);
    json.Key("machine");
    stringOrNull(host && host->hasNameLine ? &host->netbiosName : nullptr);
    json.Key("time");
    report_model::WriteHeaderTime(json, facts.time ? *facts.time : std::nullopt);
    json.Key("latest");
    const std::size_t latestAt = out.size() - start;
    json.Bool(false);
    json.Key("report");
    if (facts.loaded)
        report_model::WriteReportJson(json, facts.loaded->report, facts.loaded->verdict, *facts.time,
                                      facts.loaded->transit);
    else
        json.Null();
    json.Close('}');
    out += '\n';
    return latestAt;
}

// Copies of one report (the same checksum and the same body, whatever the
// file's name or time): the first path each was read at.
class CopyFinder {
public:
    const std::string* EarlierCopy(const LoadedReport& loaded, const fs::path& path) {
        const Key key{loaded.verdict.stored, loaded.verdict.computed, loaded.fileSize, loaded.bodyDigest};
        const auto [at, added] = first_.try_emplace(key, PathText(path));
        return added ? nullptr : &at->second;
    }

private:
    using Key = std::tuple<std::uint32_t, std::uint32_t, std::size_t, std::size_t>;
    std::map<Key, std::string> first_;
};

// Each machine's latest report: among its intact reports whose time is
// certain, the one made last; of equal times the first met, so that a copy
// (met after its original) is never the one marked. A report whose time is
// ambiguous is left out rather than guessed.
class LatestReports {
public:
    void Consider(std::size_t line, const LoadedReport& loaded, const std::optional<report_model::HeaderTime>& time) {
        const report_model::HostSection& host = loaded.report.host;
        if (loaded.verdict.state != ReportState::Intact || !host.hasNameLine || !time || !time->iso) return;
        const auto [at, added] = latest_.try_emplace(host.netbiosName, *time->iso, line);
        if (!added && *time->iso > at->second.first) at->second = {*time->iso, line};
    }

    std::vector<bool> Marks(std::size_t lines) const {
        std::vector<bool> marks(lines);
        for (const auto& [machine, latest] : latest_) marks[latest.second] = true;
        return marks;
    }

private:
    std::map<std::string, std::pair<std::string, std::size_t>> latest_;  // machine: time, line
};

// The lines wait in a temporary file until every report is read, since the
// last one read may be a machine's latest; only where each line's "latest"
// stands is kept in memory. The lines go to the file and come back in blocks
// of a quarter megabyte, each line written once into the block that holds it:
// the file is unbuffered, so that no block is copied on the way.
class LineSpool {
public:
    explicit LineSpool(OwnedFile file) : file_(std::move(file)) {
        std::setvbuf(file_.get(), nullptr, _IONBF, 0);
        block_.reserve(kBlockBytes + kBlockBytes / 8);
    }

    std::size_t Count() const { return lines_.size(); }

    // Writes a line with `append(block)`, which appends it and returns where
    // its "latest" stands. False when the file could not take it (errno says
    // why).
    template <typename Append>
    bool Add(Append append) {
        const std::size_t start = block_.size();
        const std::size_t latestAt = append(block_);
        lines_.push_back({block_.size() - start, latestAt});
        return block_.size() < kBlockBytes || WriteBlock();
    }

    bool WriteOut(const std::vector<bool>& latest) {
        if (!WriteBlock() || std::fseek(file_.get(), 0, SEEK_SET) != 0) return false;
        std::vector<char> block(kBlockBytes);
        for (std::size_t first = 0; first < lines_.size();) {
            // As many whole lines as the block holds (at least one), read at once.
            std::size_t end = first, bytes = 0;
            while (end < lines_.size() && (end == first || bytes + lines_[end].length <= block.size()))
                bytes += lines_[end++].length;
            if (bytes > block.size()) block.resize(bytes);
            if (std::fread(block.data(), 1, bytes, file_.get()) != bytes) return false;
            const std::size_t kept = MarkLatest(block.data(), first, end, latest);
            Print(stdout, {block.data(), kept});
            first = end;
        }
        return true;
    }

private:
    struct Spooled {
        std::size_t length, latestAt;
    };
    static constexpr std::size_t kBlockBytes = std::size_t{256} << 10;  // small enough to stay in the processor's cache

    bool WriteBlock() {
        const bool written = std::fwrite(block_.data(), 1, block_.size(), file_.get()) == block_.size();
        block_.clear();
        return written;
    }

    // Lines `first` to `end`, side by side at `text`, with "false" made
    // "true" where they are the latest, each line moving up by the letter
    // saved before it; their length after.
    std::size_t MarkLatest(char* text, std::size_t first, std::size_t end, const std::vector<bool>& latest) const {
        std::size_t from = 0, to = 0;
        for (std::size_t i = first; i < end; ++i) {
            const Spooled& line = lines_[i];
            if (to != from) std::memmove(text + to, text + from, line.length);
            if (latest[i]) {
                char* const mark = text + to + line.latestAt;
                std::memcpy(mark, kLatest.data(), kLatest.size());
                std::memmove(mark + kLatest.size(), mark + kNotLatest.size(),
                             line.length - line.latestAt - kNotLatest.size());
                to -= kNotLatest.size() - kLatest.size();
            }
            from += line.length;
            to += line.length;
        }
        return to;
    }

    OwnedFile file_;
    std::string block_;  // lines not yet in the file
    std::vector<Spooled> lines_;
};

class Collector {
public:
    explicit Collector(OwnedFile spool) : spool_(std::move(spool)) {}

    int File(const fs::path& path) {
        const LoadedReport loaded = LoadReport(path.c_str(), KeepBody::Digest, Diagnose::Yes);
        switch (loaded.state) {
            case LoadState::Report: {
                const auto time = report_model::ReadHeaderTime(loaded.report, loaded.modified);
                latest_.Consider(spool_.Count(), loaded, time);
                Add(path, {.verdict = loaded.verdict.state == ReportState::Intact ? "intact" : "altered",
                           .copyOf = copies_.EarlierCopy(loaded, path),
                           .loaded = &loaded,
                           .time = &time});
                break;
            }
            case LoadState::NotAReport:
            case LoadState::Unreadable:
                Complain(PathText(path), loaded.problem);
                Add(path, {.verdict = loaded.state == LoadState::NotAReport ? "not a report" : "unreadable",
                           .reason = &loaded.problem});
                break;
        }
        return StatusOf(loaded);
    }

    int Problem(const fs::path& path, const std::string& problem) {
        Complain(PathText(path), problem);
        Add(path, {.verdict = "unreadable", .reason = &problem});
        return kSomeNotAReport;
    }

    // Every line, each machine's latest marked; the error of the temporary
    // file, 0 when it served.
    int Finish() {
        errno = 0;
        if (spoolError_ == 0 && !spool_.WriteOut(latest_.Marks(spool_.Count()))) spoolError_ = errno ? errno : EIO;
        return spoolError_;
    }

private:
    void Add(const fs::path& path, const LineFacts& facts) {
        errno = 0;
        const auto append = [&](std::string& out) { return AppendCollectLine(out, path, facts); };
        if (spoolError_ == 0 && !spool_.Add(append)) spoolError_ = errno ? errno : EIO;
    }

    LineSpool spool_;
    CopyFinder copies_;
    LatestReports latest_;
    int spoolError_ = 0;
};

std::string SpoolProblem(int error) {
    return std::string("cannot keep the lines in a temporary file (") + std::strerror(error) + ")";
}

int RunCollect(const Arguments& arguments) {
    if (arguments.Value(kDbOption)) return reportcheck::CollectDatabase(arguments);
    if (arguments.Has(kRulesOption) || arguments.Has(kTimeLimitOption))
        return UsageError(kCollectCommand, "--rules and --time-limit go with --db");
    OwnedFile spool = OpenScratchFile();
    if (!spool) {
        Warn(SpoolProblem(errno));
        return kSomeNotAReport;
    }
    BinaryOutput();
    std::vector<fs::path> roots;
    for (const NativeString& path : arguments.Operands()) roots.emplace_back(path);
    Collector collector(std::move(spool));
    const int status =
        ForEachFile(roots, {.onFile = [&](const fs::path& path) { return collector.File(path); },
                            .onProblem = [&](const fs::path& path,
                                             const std::string& problem) { return collector.Problem(path, problem); },
                            .onSkip = {}});
    const int spoolError = collector.Finish();
    if (spoolError == 0) return status;
    Warn(SpoolProblem(spoolError));
    return kSomeNotAReport;
}

constexpr const Option* kCollectOptions[] = {&kDbOption, &kRulesOption, &kTimeLimitOption};

}  // namespace

extern const Command kCollectCommand{
    .name = "collect",
    .synopsis = "collect [--db FILE] PATH...",
    .summary = "one JSON line per report (folders searched recursively)",
    .help = "Prints one JSON object per line (JSON Lines) for every file named, and\n"
            "for every file under a folder named (searched recursively, in name\n"
            "order): {\"path\", \"pathBytes\", \"verdict\", \"reason\", \"copyOf\",\n"
            "\"machine\", \"time\", \"latest\", \"report\"}, where verdict is intact,\n"
            "altered, not a report or unreadable, copyOf the path of an earlier line\n"
            "with the same report (checksum and body), pathBytes the name's bytes in\n"
            "hex when it is not valid text, machine the computer name the report\n"
            "gives, time the header's date and time (ISO 8601 and whether it is\n"
            "certain), latest true on each machine's latest intact report of certain\n"
            "time, and report the document that show --json prints (null unless\n"
            "intact or altered). The lines are written once every file is read. A\n"
            "bad file gets its line all the same, and a message on standard error. Links to folders are not followed, nothing outside the\n"
            "PATHs is read, and a file is read once however the PATHs overlap; what\n"
            "is skipped is said on standard error. Files over 512 MB, pipes and\n"
            "devices are unreadable.\n"
            "With --db FILE: the report tables and the findings of every report\n"
            "instead, into the SQLite database FILE (created when missing; see\n"
            "docs/report-tables.md). Run again over the same PATHs, it reads only new\n"
            "and changed reports (by size and time) and drops those that are gone.\n"
            "Nothing is written when FILE is not a database of ours or a rule fails\n"
            "(status 2).\n"
            "Exit status: 0 all intact, 1 one altered, 2 one not a report or\n"
            "unreadable.\n",
    .options = kCollectOptions,
    .minOperands = 1,
    .run = RunCollect,
};

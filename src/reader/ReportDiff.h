// What changed from one report to another, for `reportcheck diff`.
//
// Both reports are read as labelled values that carry the identity by which
// they are matched: single values by their label, adapters by adapter name,
// directories by kind, directory entries by directory kind and name,
// registry values by name (a name that comes twice, which only an edited
// report has, by its rank too). Values are read from the models as they are
// compared, so a comparison holds little beyond the two models. The header
// (the time the report was taken) and the line-break convention are not
// compared.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "format/ReportVerdict.h"
#include "reader/ReportJson.h"
#include "reader/ReportModel.h"

namespace report_model {

enum class ChangeKind { Changed, Added, Removed };

// A directory entry that came or went as a whole, as its line gave it.
struct EntryFacts {
    std::string version;  // "" when the file has none
    std::int32_t size = 0;
    CalendarStamp created, written;
};

struct Change {
    std::string section;   // "Hardware", "Orvane Software installation", ...
    std::string subject;   // "" for a section's own values; "adapter {...}",
                           // "Standard installation directory: tool.dll", ...
    std::string field;     // "C volume free", "version", ...; "" for a whole subject
    ChangeKind kind = ChangeKind::Changed;
    std::optional<std::string> oldValue, newValue;  // as the report prints them
    std::string directory;  // "Current directory"... when the subject is a directory or one of its entries
    std::string entry;      // the entry's name when the subject is a directory entry
    std::optional<EntryFacts> oldEntry, newEntry;  // a whole entry removed or added
};

// Kinds of change a person may leave out of a comparison (diff --ignore):
// what moves on every machine from one week to the next.
struct IgnoredKinds {
    bool times = false;      // directory entries' created and written times
    bool freeSpace = false;  // C volume free and user
};

// "times,free-space" as kinds; nothing for an unknown word, which `problem` names.
std::optional<IgnoredKinds> ParseIgnoredKinds(std::string_view words, std::string& problem);

// The changes less those of the ignored kinds.
std::vector<Change> LeaveOut(std::vector<Change> changes, const IgnoredKinds& ignored);

struct ReportSide {
    const Report* report = nullptr;
    ReportVerdict verdict;
};

// How a change names a directory: "Current directory", "Standard installation directory"...
std::string DirectoryName(DirectoryKind kind);

// Each change, in the order they are told, to `visit`, made one at a time:
// beside the two models a comparison holds 48 bytes a change of the section
// being compared, where the changes made would take some 1 kB each.
void ForEachChange(const Report& oldReport, const Report& newReport, const std::function<void(const Change&)>& visit);

// The same, all of them (a report's page, tests).
std::vector<Change> DiffReports(const Report& oldReport, const Report& newReport);

// Whether a change is of a kind left out.
bool IsIgnored(const Change& change, const IgnoredKinds& ignored);

// The human form: the verdicts first when either report is altered, then
// the lines either report has that the reader did not recognise (a value
// may have been forged or damaged there), then one line per change under
// its section's name. Empty when nothing changed. Always valid UTF-8.
std::string FormatDiffText(const ReportSide& oldSide, const ReportSide& newSide, const std::vector<Change>& changes);

// The same for programs.
nlohmann::ordered_json DiffToJson(const ReportSide& oldSide, const ReportSide& newSide,
                                  const std::vector<Change>& changes);

// Text handed on in pieces of 64 kB, the last when flushed.
class DiffOutput {
public:
    using Write = std::function<void(std::string_view)>;
    explicit DiffOutput(Write write);
    void Append(std::string_view text);
    void Flush();

private:
    Write write_;
    std::string buffer_;
};

// A diff written as the changes come (ForEachChange), so that neither the
// changes nor the output are ever held whole: Add each change, then Finish.
class DiffWriter {
public:
    virtual ~DiffWriter() = default;
    virtual void Add(const Change& change) = 0;
    virtual void Finish() = 0;

protected:
    explicit DiffWriter(DiffOutput::Write write) : output_(std::move(write)) {}
    DiffOutput output_;
};

// FormatDiffText's text.
class DiffTextWriter final : public DiffWriter {
public:
    DiffTextWriter(const ReportSide& oldSide, const ReportSide& newSide, DiffOutput::Write write);
    void Add(const Change& change) override;
    void Finish() override;

private:
    void Begin();  // the verdicts and the unrecognised lines, before the first change
    const ReportSide& oldSide_;
    const ReportSide& newSide_;
    std::string verdicts_;
    std::string section_;  // of the last change written
    bool begun_ = false;
};

// DumpJson(DiffToJson(...), 2) followed by a line break.
class DiffJsonWriter final : public DiffWriter {
public:
    DiffJsonWriter(const ReportSide& oldSide, const ReportSide& newSide, DiffOutput::Write write);
    void Add(const Change& change) override;
    void Finish() override;

private:
    std::string end_;  // what follows the changes
    bool any_ = false;
};

}  // namespace report_model

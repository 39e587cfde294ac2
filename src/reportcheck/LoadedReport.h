// A file named on the command line, read and judged: the report in it, or
// why there is none. Every command that reads reports starts here.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "format/ReportVerdict.h"
#include "reader/ReportJson.h"
#include "reader/ReportModel.h"
#include "reportcheck/Console.h"

// reportcheck's exit statuses, the same for every command; README and each
// command's --help list them.
enum ExitStatus {
    kAllIntact = 0,        // (diff: no difference)
    kSomeAltered = 1,      // (diff: differences)
    kSomeNotAReport = 2,   // not a report, or cannot be read
    kRedactionFailed = 3,  // redact: a replaced value survived; nothing written
    kUsageError = 64,      // the command line is wrong (sysexits.h's EX_USAGE)
};

enum class LoadState { Report, NotAReport, Unreadable };

struct LoadedReport {
    LoadState state = LoadState::Unreadable;
    ReportVerdict verdict;
    std::string problem;  // why it is not a report, or cannot be read
    report_model::Report report;
    std::u16string body;  // the body as it is, for whoever quotes its lines (KeepBody::Yes)
    std::string bodyUtf8;  // the same as UTF-8 (KeepBody::Utf8)
    std::size_t bodyDigest = 0;  // a hash of the body's bytes (KeepBody::Digest)
    std::size_t fileSize = 0;  // the file's bytes
    // Its last write, seconds since 1970 UTC: what can settle the header's
    // time (reader/ReportTime.h).
    std::optional<std::int64_t> modified;
    // What a transfer did to an altered file, when it can be told (Diagnose::Yes).
    std::optional<report_model::TransitDamage> transit;
};

// Whether the caller quotes the body's lines: the page and redact as
// UTF-16 (Yes), the report tables as UTF-8 (Utf8); show and diff do not, and
// hold the model alone; collect tells copies of a report apart by a digest
// of the body, and holds that alone.
enum class KeepBody { No, Digest, Utf8, Yes };

// Whether an altered file's damage in transit is looked for (format/
// TransitDamage.h): show and collect tell it; the others do not, and the
// search reads the file's text again, up to three times.
enum class Diagnose { No, Yes };

LoadedReport LoadReport(const NativeChar* path, KeepBody keepBody = KeepBody::Yes, Diagnose diagnose = Diagnose::No);

// kAllIntact, kSomeAltered or kSomeNotAReport.
int StatusOf(const LoadedReport& loaded);

// "reportcheck: NAME: PROBLEM" on standard error, control characters of
// either shown escaped (reader/TerminalText.h).
void Complain(const std::string& name, const std::string& problem);

// "reportcheck: MESSAGE" on standard error, escaped the same way: for a
// message that may quote a file name or a report's text (a library's error).
void Warn(std::string_view message);

// "cannot be read (REASON)" for an errno value.
std::string CannotBeRead(int error);

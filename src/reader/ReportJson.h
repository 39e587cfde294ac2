// The report model as JSON: what `reportcheck show --json` prints and what
// each line of `collect` carries. Its form is docs/report-model.schema.json;
// kReportSchemaVersion changes with any change to that form.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "format/ReportChecksum.h"
#include "format/ReportVerdict.h"
#include "reader/ReportModel.h"
#include "reader/ReportTime.h"

namespace report_model {

inline constexpr int kReportSchemaVersion = 4;

// JSON text on one line, appended to a string, character for character what
// DumpJson writes for the same values: collect writes a line per report, and
// building a tree of them first took most of its time.
class JsonWriter {
public:
    explicit JsonWriter(std::string& out) : out_(out) {}
    // With `drain`, the text made so far goes to it, and is emptied, each
    // time it reaches some kilobytes at the end of an object or array: a
    // large document is written out as it is made, never held whole.
    JsonWriter(std::string& out, std::function<void(std::string_view)> drain) : out_(out), drain_(std::move(drain)) {}
    void Open(char bracket);  // '{' or '['
    void Close(char bracket);
    void Key(std::string_view key);  // a name of the form: ASCII, nothing to escape
    void String(std::string_view text);
    void Null();
    void Bool(bool value);
    void Signed(std::int64_t value);
    void Unsigned(std::uint64_t value);

private:
    void Separate();
    std::string& out_;
    std::function<void(std::string_view)> drain_;
    bool comma_ = false;  // a value stands before, in the same object or array
};

// What a transfer did to a file that is not intact, where it is known
// (format/TransitDamage.h): "line breaks converted from CR LF to LF"...,
// and whether `reportcheck repair` restores it.
struct TransitDamage {
    std::string damage;
    bool repairable = false;
};

// The whole model; `verdict` is the file's (intact or altered),
// `fileModified` its last write in seconds since 1970 UTC where the reader
// has the file, which can settle the header's time (reader/ReportTime.h),
// `transit` what happened to the file on the way when that is known.
void WriteReportJson(JsonWriter& json, const Report& report, const ReportVerdict& verdict,
                     std::optional<std::int64_t> fileModified = std::nullopt,
                     const std::optional<TransitDamage>& transit = std::nullopt);

// The same, with the header's time as the caller already read it
// (ReadHeaderTime), so that it is not read twice.
void WriteReportJson(JsonWriter& json, const Report& report, const ReportVerdict& verdict,
                     const std::optional<HeaderTime>& headerTime, const std::optional<TransitDamage>& transit);

// The header's time: {"iso", "certain", "settledBy", "readings"}, or null.
void WriteHeaderTime(JsonWriter& json, const std::optional<HeaderTime>& time);

// The same as a tree, read back from that text so that the form is written
// in one place only.
nlohmann::ordered_json ReportToJson(const Report& report, const ReportVerdict& verdict,
                                    std::optional<std::int64_t> fileModified = std::nullopt,
                                    const std::optional<TransitDamage>& transit = std::nullopt);

// JSON text on one line; a lone surrogate kept in a text shows as U+FFFD.
std::string DumpJson(const nlohmann::ordered_json& json, int indent = -1);

// "1a2b3c4d": the trailer's own form (format/ReportChecksum.h).
using ::ChecksumText;

}  // namespace report_model

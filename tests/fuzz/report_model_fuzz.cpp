// The report reader on any text:
//  - it never crashes, and the body made again from the model is the input,
//    unit for unit (the model is lossless);
//  - recognised and unrecognised lines together are all the lines, and the
//    unrecognised ones keep increasing numbers within the body;
//  - the JSON is made without harm and is what nlohmann writes for the same
//    values (read back and written again, it is the same text), and a
//    report compared with itself shows no change;
//  - the header's time is one of its readings, set exactly when it is
//    certain, and a file time can only settle an ambiguous date.
//
// Input: byte 0 chooses the reading of the rest: even, one code unit per
// byte (line structure mutates well); odd, UTF-16LE pairs (any code unit,
// lone surrogates included).
#include <algorithm>
#include <cstdint>
#include <string>

#include "FuzzCheck.h"
#include "reader/ReportDiff.h"
#include "reader/ReportJson.h"
#include "reader/ReportModel.h"
#include "reader/ReportRender.h"
#include "reader/ReportTime.h"

using namespace report_model;

namespace {

void CheckHeaderTime(const Report& report, std::int64_t fileModified) {
    const auto alone = ReadHeaderTime(report, std::nullopt);
    const auto withFile = ReadHeaderTime(report, fileModified);
    FUZZ_CHECK(alone.has_value() == withFile.has_value());
    if (!alone) return;
    for (const HeaderTime* time : {&*alone, &*withFile}) {
        FUZZ_CHECK(time->readings.size() <= 2);
        FUZZ_CHECK(time->iso.has_value() == time->settledBy.has_value());
        if (time->iso)
            FUZZ_CHECK(std::find(time->readings.begin(), time->readings.end(), *time->iso) != time->readings.end());
        FUZZ_CHECK((time->settledBy == SettledBy::Date) == (time->readings.size() == 1));
        // To the second, or to the minute when the header prints no seconds.
        for (const std::string& reading : time->readings)
            FUZZ_CHECK(reading.size() == time->readings.front().size() && (reading.size() == 19 || reading.size() == 16));
    }
    FUZZ_CHECK(alone->readings == withFile->readings);
    if (alone->settledBy == SettledBy::Date) FUZZ_CHECK(withFile->iso == alone->iso);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    std::u16string body;
    if (data[0] % 2 == 0) {
        for (std::size_t i = 1; i < size; ++i) body.push_back(data[i]);
    } else {
        for (std::size_t i = 1; i + 1 < size; i += 2) body.push_back(static_cast<char16_t>(data[i] | data[i + 1] << 8));
    }
    const Report report = ParseReportBody(body);
    FUZZ_CHECK(RenderReportBody(report) == body);
    FUZZ_CHECK(RecognisedLines(report).size() + report.unrecognised.size() == report.lineCount);
    std::size_t previous = 0;
    for (const UnrecognisedLine& line : report.unrecognised) {
        FUZZ_CHECK(line.line > previous && line.line <= report.lineCount);
        previous = line.line;
    }
    ReportVerdict verdict;
    verdict.state = ReportState::Intact;
    std::string json;
    JsonWriter writer(json);
    WriteReportJson(writer, report, verdict);
    FUZZ_CHECK(DumpJson(ReportToJson(report, verdict)) == json);
    FUZZ_CHECK(DiffReports(report, report).empty());
    CheckHeaderTime(report, static_cast<std::int64_t>(size) * 1'000'000);
    return 0;
}

// The report's time as data: the header's date and time in every form the
// machines' locales print, day and month settled by the report's own file
// times where they can be, and times that cannot be given no ISO.
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "SampleReport.h"
#include "reader/ReportJson.h"
#include "reader/ReportModel.h"
#include "reader/ReportTime.h"

using namespace report_model;

namespace {

using Readings = std::vector<std::string>;

Report WithHeader(const std::string& dateAndTime) {
    Report report;
    report.header.present = true;
    report.header.text = "Orvane Software system report on " + dateAndTime;
    return report;
}

// A report listing one entry with these times, as the report prints them.
Report WithEntry(const std::string& dateAndTime, const std::string& created, const std::string& written) {
    Report report = WithHeader(dateAndTime);
    DirectoryEntry entry;
    entry.created = CalendarStamp::FromPrinted(created).value();
    entry.written = CalendarStamp::FromPrinted(written).value();
    report.installation.directories.push_back({DirectoryKind::Standard, "C:\\Suite", {entry}, 40});
    return report;
}

// Seconds since 1970 of a UTC time, for the report file's own time.
constexpr std::int64_t kMay10th2026Noon = 1778414400;  // 2026-05-10T12:00:00Z
constexpr std::int64_t kJune1st2026 = 1780272000;      // 2026-06-01T00:00:00Z
constexpr std::int64_t kJanuary1st2027 = 1798761600;   // 2027-01-01T00:00:00Z

// The reading with no file times, as "iso|settled by|readings".
std::string Read(const Report& report, std::optional<std::int64_t> fileModified = std::nullopt) {
    const std::optional<HeaderTime> time = ReadHeaderTime(report, fileModified);
    if (!time) return "no time";
    std::string text = time->iso.value_or("-") + "|" +
                       (time->settledBy ? std::string(SettledByName(*time->settledBy)) : "-") + "|";
    for (const std::string& reading : time->readings) text += reading + ";";
    return text;
}

std::string Read(const std::string& dateAndTime) {
    return Read(WithHeader(dateAndTime));
}

struct Reading {
    std::string printed;  // what follows the header's lead
    std::string read;     // as Read gives it
};

void ExpectReadings(std::initializer_list<Reading> readings) {
    for (const Reading& reading : readings) EXPECT_EQ(Read(reading.printed), reading.read) << reading.printed;
}

}  // namespace

TEST(HeaderTime, ReadsEveryLocaleFormOfTheTrial) {
    ExpectReadings({
        {"11/16/2026 9:12:00 AM", "2026-11-16T09:12:00|date|2026-11-16T09:12:00;"},
        {"23/11/2026 19:50:05", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},
        {"23.11.2026 19:50:06", "2026-11-23T19:50:06|date|2026-11-23T19:50:06;"},
        {"11/23/26 19:24:16", "2026-11-23T19:24:16|date|2026-11-23T19:24:16;"},
        {"2026-11-23 19:50:05", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},
    });
}

TEST(HeaderTime, ReadsTheOtherCommonForms) {
    ExpectReadings({
        {"2026/11/23 19:50:05", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},
        {"2026.11.23. 19:50:05", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},
        {"2026.1.5 7:05:09", "2026-01-05T07:05:09|date|2026-01-05T07:05:09;"},
        {"23-11-2026 19:50:05", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},
        {"23.11.26 19.50.05", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},
        {"7/7/2026 10:00:00", "2026-07-07T10:00:00|date|2026-07-07T10:00:00;"},
        {"31/12/99 23:59:59", "1999-12-31T23:59:59|date|1999-12-31T23:59:59;"},
        {"31/12/68 23:59:59", "2068-12-31T23:59:59|date|2068-12-31T23:59:59;"},
    });
}

TEST(HeaderTime, ReadsTheTwelveHourClock) {
    ExpectReadings({
        {"11/16/2026 9:12:00 PM", "2026-11-16T21:12:00|date|2026-11-16T21:12:00;"},
        {"11/16/2026 12:00:00 AM", "2026-11-16T00:00:00|date|2026-11-16T00:00:00;"},
        {"11/16/2026 12:30:00 PM", "2026-11-16T12:30:00|date|2026-11-16T12:30:00;"},
        {"11/16/2026 11:59:59 p.m.", "2026-11-16T23:59:59|date|2026-11-16T23:59:59;"},
        {"11/16/2026 1:00:00 am", "2026-11-16T01:00:00|date|2026-11-16T01:00:00;"},
    });
}

// What Windows prints for the locales that put their word for morning or
// afternoon before the time (Korean, Chinese, Japanese).
TEST(HeaderTime, ReadsAMarkerBeforeTheTime) {
    ExpectReadings({
        {"2026-11-23 오후 7:50:05", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},
        {"2026-11-23 오전 7:50:05", "2026-11-23T07:50:05|date|2026-11-23T07:50:05;"},
        {"2026/11/23 下午 7:50:05", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},
        {"2026/11/23 上午 12:05:00", "2026-11-23T00:05:00|date|2026-11-23T00:05:00;"},
        {"2026/11/23 下午 07:50:05", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},
        {"2026/11/23 午後 7:50:05", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},
        {"2026/11/23 午前 11:59:59", "2026-11-23T11:59:59|date|2026-11-23T11:59:59;"},
        {"11/16/2026 PM 9:12:00", "2026-11-16T21:12:00|date|2026-11-16T21:12:00;"},
    });
}

// The other languages' words after the time, in their Windows spellings.
TEST(HeaderTime, ReadsTheMarkersOfOtherLanguagesAfterTheTime) {
    ExpectReadings({
        {"23/11/2026 07:50:05 p. m.", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},      // Spanish
        {"23/11/2026 07:50:05 a.\u00A0m.", "2026-11-23T07:50:05|date|2026-11-23T07:50:05;"},  // no-break space
        {"23/11/2026 07:50:05\u202Fp.\u202Fm.", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},
        {"23/11/2026 7:50:05 μμ", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},  // Greek
        {"23/11/2026 7:50:05 π.μ.", "2026-11-23T07:50:05|date|2026-11-23T07:50:05;"},
        {"23/11/2026 7:50:05 ΜΜ", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},
        {"23/11/2026 07:50:05 م", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},  // Arabic
        {"23/11/2026 07:50:05 ص", "2026-11-23T07:50:05|date|2026-11-23T07:50:05;"},
        {"11/23/2026 07:50:05 ب.ظ", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},  // Persian
        {"11/23/2026 07:50:05 ق.ظ", "2026-11-23T07:50:05|date|2026-11-23T07:50:05;"},
        {"23.11.2026 7:50:05 ÖS", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},  // Turkish
        {"23.11.2026 7:50:05 öö", "2026-11-23T07:50:05|date|2026-11-23T07:50:05;"},
        {"23/11/2026 7:50:05 CH", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},  // Vietnamese
        {"23/11/2026 7:50:05 SA", "2026-11-23T07:50:05|date|2026-11-23T07:50:05;"},
        {"2026-11-23 7:50:05.MD", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},  // Albanian, written on
        {"2026-11-23 7:50:05.PD", "2026-11-23T07:50:05|date|2026-11-23T07:50:05;"},
    });
}

TEST(HeaderTime, ReadsDatesWithASpaceAfterEachFullStopAndBulgariansWords) {
    ExpectReadings({
        {"2026. 11. 23. 19:50:05", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},  // Hungarian
        {"23. 11. 2026 19:50:05", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},   // Slovak
        {"23.11.2026 г. 19:50:05 ч.", "2026-11-23T19:50:05|date|2026-11-23T19:50:05;"},
        {"5. 11. 2026 10:00:00", "-|-|2026-11-05T10:00:00;2026-05-11T10:00:00;"},
    });
}

// No seconds are made up: the ISO time stops at the minute.
TEST(HeaderTime, ReadsATimeWithoutSecondsToTheMinute) {
    ExpectReadings({
        {"23/11/2026 19:50", "2026-11-23T19:50|date|2026-11-23T19:50;"},
        {"23.11.2026 19.50", "2026-11-23T19:50|date|2026-11-23T19:50;"},
        {"11/16/2026 9:12 PM", "2026-11-16T21:12|date|2026-11-16T21:12;"},
        {"2026-11-23 오후 7:50", "2026-11-23T19:50|date|2026-11-23T19:50;"},
        {"05/11/2026 10:00", "-|-|2026-11-05T10:00;2026-05-11T10:00;"},
        {"31/02/2026 10:00", "-|-|"},
        {"23/11/2026 24:00", "-|-|"},
        {"11/16/2026 13:00 PM", "-|-|"},
    });
    EXPECT_EQ(Read(WithHeader("05/11/2026 10:00"), kJune1st2026),
              "2026-05-11T10:00|file times|2026-11-05T10:00;2026-05-11T10:00;");
}

TEST(HeaderTime, AMarkerThatIsNoneOfTheKnownOnesOrOneTooManyGivesNoTime) {
    ExpectReadings({
        {"2026-11-23 오후 7:50:05 PM", "no time"},
        {"2026-11-23 tomorrow 7:50:05", "no time"},
        {"23/11/2026 7:50:05 p. m. x", "no time"},
        {"23/11/2026 7:50:05 p", "no time"},
        {"2026-11-23 7:50:05.MD PM", "no time"},
        {"2026-11-23 7:50:05.", "no time"},
        {"23/11/2026 PM", "no time"},
        {"23.11.2026 г. 19:50:05 ч. PM", "no time"},
        {"2026. 11. 19:50:05", "no time"},
    });
    // A 12-hour clock has no hour 19, whichever side its marker is on.
    EXPECT_EQ(Read("2026-11-23 오후 19:50:05"), "-|-|");
}

TEST(HeaderTime, DayAndMonthThatReadBothWaysAreAmbiguousWithoutFileTimes) {
    ExpectReadings({
        {"05/11/2026 10:00:00", "-|-|2026-11-05T10:00:00;2026-05-11T10:00:00;"},
        {"5.11.2026 10:00:00", "-|-|2026-11-05T10:00:00;2026-05-11T10:00:00;"},
        {"01/02/70 10:00:00 AM", "-|-|1970-02-01T10:00:00;1970-01-02T10:00:00;"},
    });
}

TEST(HeaderTime, AListedFileWrittenLaterRulesOutTheEarlierReading) {
    // Written on 1 September: the report was not made on 11 May.
    const Report report = WithEntry("05/11/2026 10:00:00", "01/09/2026  08:00:00", "01/09/2026  08:00:00");
    EXPECT_EQ(Read(report), "2026-11-05T10:00:00|file times|2026-11-05T10:00:00;2026-05-11T10:00:00;");
}

TEST(HeaderTime, AListedFileCreatedLaterRulesOutTheEarlierReading) {
    // A copied file: written long ago, created (copied) in September.
    const Report report = WithEntry("05/11/2026 10:00:00", "01/09/2026  08:00:00", "01/01/2020  08:00:00");
    EXPECT_EQ(Read(report), "2026-11-05T10:00:00|file times|2026-11-05T10:00:00;2026-05-11T10:00:00;");
}

TEST(HeaderTime, TheReportFileWrittenEarlierRulesOutTheLaterReading) {
    EXPECT_EQ(Read(WithHeader("05/11/2026 10:00:00"), kJune1st2026),
              "2026-05-11T10:00:00|file times|2026-11-05T10:00:00;2026-05-11T10:00:00;");
}

TEST(HeaderTime, FileTimesGetADayOfSlackForTimeZones) {
    // Ten hours after the 5 November reading: another time zone, not a
    // contradiction; the 11 May reading is still months before it.
    EXPECT_EQ(Read(WithEntry("05/11/2026 10:00:00", "05/11/2026  20:00:00", "05/11/2026  20:00:00")),
              "2026-11-05T10:00:00|file times|2026-11-05T10:00:00;2026-05-11T10:00:00;");
    // The file saved 22 hours before the 11 May reading by the reader's clock.
    EXPECT_EQ(Read(WithHeader("05/11/2026 10:00:00"), kMay10th2026Noon),
              "2026-05-11T10:00:00|file times|2026-11-05T10:00:00;2026-05-11T10:00:00;");
}

TEST(HeaderTime, FileTimesThatAllowBothOrNeitherLeaveItAmbiguous) {
    const Report both = WithEntry("05/11/2026 10:00:00", "01/02/2025  08:00:00", "01/02/2025  08:00:00");
    EXPECT_EQ(Read(both, kJanuary1st2027), "-|-|2026-11-05T10:00:00;2026-05-11T10:00:00;");
    const Report neither = WithEntry("05/11/2026 10:00:00", "01/02/2027  08:00:00", "01/02/2027  08:00:00");
    EXPECT_EQ(Read(neither), "-|-|2026-11-05T10:00:00;2026-05-11T10:00:00;");
    // An entry whose time cannot be is no evidence.
    const Report impossible = WithEntry("05/11/2026 10:00:00", "31/02/2026  25:61:61", "31/02/2026  25:61:61");
    EXPECT_EQ(Read(impossible), "-|-|2026-11-05T10:00:00;2026-05-11T10:00:00;");
}

TEST(HeaderTime, FileTimesDoNotOverrideADateThatReadsOneWay) {
    EXPECT_EQ(Read(WithHeader("23/11/2026 19:50:05"), kJune1st2026), "2026-11-23T19:50:05|date|2026-11-23T19:50:05;");
}

TEST(HeaderTime, ImpossibleDatesAndTimesGiveNoIso) {
    ExpectReadings({
        {"31/02/2026 10:00:00", "-|-|"},
        {"23/11/2026 25:61:61", "-|-|"},
        {"13/13/2026 10:00:00", "-|-|"},
        {"2026-13-01 10:00:00", "-|-|"},
        {"29/02/2025 10:00:00", "-|-|"},
        {"00/01/2026 10:00:00", "-|-|"},
        {"0000-01-01 10:00:00", "-|-|"},
        {"11/16/2026 13:00:00 PM", "-|-|"},
        {"11/16/2026 0:00:00 AM", "-|-|"},
        {"04/31/2026 10:00:00", "-|-|"},  // neither 31 April nor month 31
    });
    // Day first, 29 February 2024; month first, month 29: that one is certain.
    EXPECT_EQ(Read("29/02/2024 10:00:00"), "2024-02-29T10:00:00|date|2024-02-29T10:00:00;");
}

TEST(HeaderTime, AHeaderWithNoTimeInAKnownFormHasNone) {
    Report empty;
    empty.header.present = true;  // a header too long for its buffer is written empty
    EXPECT_EQ(Read(empty), "no time");
    EXPECT_EQ(Read(Report()), "no time");
    ExpectReadings({
        {"", "no time"},
        {"Monday", "no time"},
        {"23/11/2026", "no time"},
        {"23/11/2026 19", "no time"},
        {"23/11/2026 19:50:05 tomorrow", "no time"},
        {"23/11-2026 19:50:05", "no time"},
        {"123/11/2026 19:50:05", "no time"},
        {"23/11/12026 19:50:05", "no time"},
        {"2026/11/23/1 19:50:05", "no time"},
        {"23/11/2026 19:50:05:01", "no time"},
    });
    Report other = WithHeader("23/11/2026 19:50:05");
    other.header.text = "Another program's report on 23/11/2026 19:50:05";
    EXPECT_EQ(Read(other), "no time");
}

TEST(ReportTime, EntryTimesThatCannotBeGiveNoIso) {
    const std::pair<std::string, std::string> times[] = {
        {"07/03/2021  14:05:09", "2021-03-07T14:05:09"},
        {"29/02/2024  23:59:59", "2024-02-29T23:59:59"},
        {"01/01/1601  00:00:00", "1601-01-01T00:00:00"},
        {"31/02/2026  25:61:61", ""},
        {"31/02/2026  10:00:00", ""},
        {"29/02/2025  00:00:00", ""},
        {"00/01/2026  00:00:00", ""},
        {"01/13/2026  00:00:00", ""},
        {"01/01/0000  00:00:00", ""},
        {"01/01/2026  24:00:00", ""},
        {"01/01/2026  23:60:00", ""},
        {"01/01/2026  23:59:60", ""},
    };
    for (const auto& [printed, iso] : times) EXPECT_EQ(IsoFromReportTime(printed), iso) << printed;
}

namespace {

std::string ReplacedOnce(std::string text, const std::string& what, const std::string& with) {
    return text.replace(text.find(what), what.size(), with);
}

ReportVerdict Intact() {
    ReportVerdict verdict;
    verdict.state = ReportState::Intact;
    return verdict;
}

}  // namespace

TEST(ReportTime, AnEntryWhoseTimeCannotBeIsStillAnEntryWithNoIso) {
    const std::string body = ReplacedOnce(kSampleReportBody, "07/03/2021  14:05:09", "31/02/2026  25:61:61");
    const Report report = ParseReportBody(Utf16FromUtf8(body));
    EXPECT_TRUE(report.unrecognised.empty());
    const DirectoryEntry& entry = report.installation.directories[0].entries[1];
    EXPECT_EQ(entry.created.Printed(), "31/02/2026  25:61:61");
    EXPECT_EQ(entry.created.Iso(), std::nullopt);
    EXPECT_EQ(entry.written.Iso(), "2021-03-08T09:00:00");
    EXPECT_EQ(Utf8FromUtf16(RenderReportBody(report)), body);
    const auto json = ReportToJson(report, Intact())["installation"]["directories"][0]["entries"][1];
    EXPECT_EQ(json["created"], "31/02/2026  25:61:61");
    EXPECT_TRUE(json["createdIso"].is_null());
    EXPECT_EQ(json["writtenIso"], "2021-03-08T09:00:00");
}

TEST(ReportTime, JsonGivesTheHeadersTime) {
    const Report report = ParseReportBody(Utf16FromUtf8(kSampleReportBody));
    EXPECT_EQ(ReportToJson(report, Intact())["header"].dump(),
              R"({"text":"Orvane Software system report on 11/22/26 14:36:06","blankLineAfter":true,)"
              R"("time":{"iso":"2026-11-22T14:36:06","certain":true,"settledBy":"date",)"
              R"("readings":["2026-11-22T14:36:06"]}})");
}

// The sample with the header's time and its latest entries' time replaced.
Report Sample(const std::string& header, const std::string& latestEntries) {
    std::string body = ReplacedOnce(kSampleReportBody, "11/22/26 14:36:06", header);
    const std::string latest = "22/11/2026  14:33:45";
    for (std::size_t at = body.find(latest); at != std::string::npos; at = body.find(latest, at + latest.size()))
        body.replace(at, latest.size(), latestEntries);
    return ParseReportBody(Utf16FromUtf8(body));
}

TEST(ReportTime, JsonGivesBothReadingsOfAnAmbiguousDateAndWhatSettlesIt) {
    // Files written on 22 November: neither reading is after them.
    EXPECT_EQ(ReportToJson(Sample("05/11/2026 10:00:00", "22/11/2026  14:33:45"), Intact())["header"]["time"].dump(),
              R"({"iso":null,"certain":false,"settledBy":null,)"
              R"("readings":["2026-11-05T10:00:00","2026-05-11T10:00:00"]})");
    // Written on 1 September: the 11 May reading is ruled out.
    EXPECT_EQ(ReportToJson(Sample("05/11/2026 10:00:00", "01/09/2026  14:33:45"), Intact())["header"]["time"].dump(),
              R"({"iso":"2026-11-05T10:00:00","certain":true,"settledBy":"file times",)"
              R"("readings":["2026-11-05T10:00:00","2026-05-11T10:00:00"]})");
    // Written on 1 February, the report file saved on 1 June: 5 November is
    // ruled out.
    const Report february = Sample("05/11/2026 10:00:00", "01/02/2026  14:33:45");
    EXPECT_EQ(ReportToJson(february, Intact(), kJune1st2026)["header"]["time"].dump(),
              R"({"iso":"2026-05-11T10:00:00","certain":true,"settledBy":"file times",)"
              R"("readings":["2026-11-05T10:00:00","2026-05-11T10:00:00"]})");
}

TEST(ReportTime, JsonGivesATimeWithoutSecondsToTheMinuteAndOneWithAMarkerBefore) {
    EXPECT_EQ(ReportToJson(Sample("23/11/2026 19:50", "22/11/2026  14:33:45"), Intact())["header"]["time"].dump(),
              R"({"iso":"2026-11-23T19:50","certain":true,"settledBy":"date","readings":["2026-11-23T19:50"]})");
    EXPECT_EQ(ReportToJson(Sample("2026-11-23 오후 7:50:05", "22/11/2026  14:33:45"), Intact())["header"].dump(),
              R"({"text":"Orvane Software system report on 2026-11-23 오후 7:50:05","blankLineAfter":true,)"
              R"("time":{"iso":"2026-11-23T19:50:05","certain":true,"settledBy":"date",)"
              R"("readings":["2026-11-23T19:50:05"]}})");
}

TEST(ReportTime, JsonGivesNoTimeWithoutAHeaderAndNoIsoForAnImpossibleOne) {
    // A header too long for its buffer is written as nothing at all.
    const Report empty = ParseReportBody(Utf16FromUtf8(kSampleReportBody.substr(kSampleReportBody.find("\nProgram:"))));
    EXPECT_EQ(ReportToJson(empty, Intact())["header"].dump(), "null");
    EXPECT_EQ(ReportToJson(Sample("31/02/2026 10:00:00", "22/11/2026  14:33:45"), Intact())["header"]["time"].dump(),
              R"({"iso":null,"certain":false,"settledBy":null,"readings":[]})");
}

// The report read back as data: every field from its line, the unrecognised
// lines kept with their numbers, and the body made again byte for byte.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "SampleReport.h"
#include "reader/ReportDiff.h"
#include "reader/ReportJson.h"
#include "reader/ReportModel.h"

using namespace report_model;

namespace {

std::u16string U16(const std::string& utf8) {
    return Utf16FromUtf8(utf8);
}

// The diff of two intact reports, as `reportcheck diff` prints it.
std::string DiffText(const Report& before, const Report& after) {
    ReportSide oldSide{&before, {}};
    ReportSide newSide{&after, {}};
    oldSide.verdict.state = newSide.verdict.state = ReportState::Intact;
    return FormatDiffText(oldSide, newSide, DiffReports(before, after));
}

}  // namespace

TEST(ReportModel, ReadsEveryFieldOfAReport) {
    const Report r = ParseReportBody(U16(kSampleReportBody));
    EXPECT_TRUE(r.unrecognised.empty()) << r.unrecognised.front().line << ": " << r.unrecognised.front().text;
    EXPECT_EQ(r.header.text, "Orvane Software system report on 11/22/26 14:36:06");
    EXPECT_EQ(r.program.name, "OrvaneDiagnostics");
    EXPECT_EQ(r.program.version, "9.3.1.1042");
    EXPECT_EQ(r.program.directory, "C:\\Tools");
    EXPECT_TRUE(r.program.elevated);
    EXPECT_EQ(r.host.netbiosName, "PC1");
    EXPECT_EQ(r.host.domain, "WORKGROUP");
    EXPECT_EQ(r.host.wmiName, "PC1");
    EXPECT_EQ(r.host.user, "anne");
    EXPECT_EQ(r.windows.versionLabel, "8");
    EXPECT_EQ(r.windows.edition, "Desktop");
    EXPECT_EQ(r.windows.realVersion, "10.0.19045");
    EXPECT_EQ(r.windows.productId, "12345-oem-0000001-54321");
    EXPECT_EQ(r.windows.commonAppDataPath, "C:\\ProgramData");
    EXPECT_EQ(r.hardware.bits, 64u);
    EXPECT_EQ(r.hardware.processorCount, 2u);
    EXPECT_EQ(r.hardware.processor->architecture, 9u);
    EXPECT_EQ(r.hardware.processor->level, 26u);
    EXPECT_EQ(r.hardware.processor->revision, 513u);
    EXPECT_EQ(r.hardware.applicationAddresses->highest, "0xfffeffff");
    EXPECT_EQ(r.hardware.memory->virtualK, 137438953344);
    EXPECT_EQ(r.hardware.volume->fileSystem, "NTFS");
    EXPECT_EQ(r.hardware.volume->freeK, 81646476);
    ASSERT_EQ(r.network.adapters.size(), 1u);
    const Adapter& a = r.network.adapters[0];
    EXPECT_EQ(a.name, "{00000002-0000-0000-0000-4E6574446576}");
    EXPECT_EQ(a.unicastCount, 3u);
    EXPECT_EQ(a.anycastCount, 0u);
    EXPECT_EQ(a.dnsSuffix, "");
    EXPECT_EQ(a.physicalAddress, "02-FC-00-00-00-01");
    EXPECT_EQ(a.zoneIndices, (std::vector<std::uint32_t>{0, 1, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xffffffff}));
    EXPECT_EQ(a.prefixCount, 1u);
    const InstallationSection& inst = r.installation;
    ASSERT_EQ(inst.directories.size(), 5u);
    EXPECT_EQ(inst.directories[0].entries[1].name, "tool.dll");
    EXPECT_EQ(inst.directories[0].entries[1].version, "9.3.1.0");
    EXPECT_EQ(inst.directories[0].entries[1].size, 4753);
    EXPECT_EQ(inst.directories[0].entries[1].created.Iso(), "2021-03-07T14:05:09");
    EXPECT_EQ(inst.directories[0].entries[1].written.Iso(), "2021-03-08T09:00:00");
    EXPECT_EQ(inst.directories[2].kind, DirectoryKind::Registry);
    EXPECT_EQ(inst.directories[2].path, "D:\\Suite");
    const DirectoryEntry& big = inst.directories[2].entries[0];
    EXPECT_EQ(big.attributes, 0x80000020u);
    EXPECT_EQ(big.size, -1294967296);
    EXPECT_EQ(big.accessList, " Allow BUILTIN\\Administrators [RWX];");
    EXPECT_EQ(big.content, "abc??");
    ASSERT_EQ(inst.registryValues.size(), 4u);
    EXPECT_EQ(inst.registryValues[2].name, "VersionMinor");
    EXPECT_EQ(inst.registryValues[2].number, -3);
    EXPECT_EQ(inst.registryValues[3].text, "1042");
    EXPECT_EQ(RenderReportBody(r), U16(kSampleReportBody));
}

TEST(ReportModel, KeepsLinesItDoesNotKnowWithTheirNumbers) {
    std::string body = kSampleReportBody;
    body.replace(body.find("\tpage size: 4096"), 16, "\tpage size: 04096");  // not the report's form
    body.insert(body.find("\nHost:"), "\nsomething else");  // and its empty line
    const Report r = ParseReportBody(U16(body));
    ASSERT_EQ(r.unrecognised.size(), 3u);
    EXPECT_EQ(r.unrecognised[0].line, 8u);
    EXPECT_EQ(r.unrecognised[0].text, "");
    EXPECT_EQ(r.unrecognised[1].line, 9u);
    EXPECT_EQ(r.unrecognised[1].text, "something else");
    EXPECT_EQ(r.unrecognised[2].text, "\tpage size: 04096");
    EXPECT_TRUE(r.host.heading.present);
    EXPECT_FALSE(r.host.heading.blankLineBefore);
    EXPECT_FALSE(r.hardware.pageSize);
    EXPECT_EQ(RenderReportBody(r), U16(body));
}

TEST(ReportModel, LinesOutOfTheirOrderAreNotTaken) {
    const std::string body = "\nHost:\n\tuser: anne\n\tname: PC1 (W\\PC1)\n\nProgram:\n";
    const Report r = ParseReportBody(U16(body));
    EXPECT_EQ(r.host.user, "anne");
    EXPECT_FALSE(r.host.hasNameLine);
    EXPECT_FALSE(r.program.heading.present);
    ASSERT_EQ(r.unrecognised.size(), 3u);
    EXPECT_EQ(r.unrecognised[0].line, 4u);
    EXPECT_EQ(RenderReportBody(r), U16(body));
}

TEST(ReportModel, LineBreaksAsFoundAndMixed) {
    const Report crlf = ParseReportBody(U16(WithCrLf(kSampleReportBody)));
    EXPECT_TRUE(crlf.lineBreaks.crlf);
    EXPECT_TRUE(crlf.lineBreaks.exceptions.empty());
    EXPECT_TRUE(crlf.unrecognised.empty());
    EXPECT_EQ(RenderReportBody(crlf), U16(WithCrLf(kSampleReportBody)));

    const std::string mixed = "\nProgram:\r\nA 1\nin C:\\\r\n";
    const Report m = ParseReportBody(U16(mixed));
    EXPECT_TRUE(m.lineBreaks.crlf);
    EXPECT_EQ(m.lineBreaks.exceptions, (std::vector<std::size_t>{1, 3}));
    EXPECT_EQ(m.program.name, "A");
    EXPECT_EQ(RenderReportBody(m), U16(mixed));

    const Report lf = ParseReportBody(U16(kSampleReportBody));
    EXPECT_FALSE(lf.lineBreaks.crlf);
}

TEST(ReportModel, AnyTextComesBackWhole) {
    const std::u16string texts[] = {u"", u"x", u"\n", u"\r", u"\r\r\n\n", u"a\tb\n\t\t\t\tContent:\"\n",
                                    std::u16string(1, char16_t(0xD800)) + u"\n" + std::u16string(1, char16_t(0xDC00)),
                                    u"\U0001F600 \u00e9\n"};
    for (const std::u16string& text : texts) EXPECT_EQ(RenderReportBody(ParseReportBody(text)), text);
}

TEST(ReportModel, JsonCarriesTheVerdictAndTheFields) {
    const Report r = ParseReportBody(U16(WithCrLf(kSampleReportBody)));
    ReportVerdict verdict;
    verdict.state = ReportState::Altered;
    verdict.stored = 0x01020304;
    verdict.computed = 0xabcdef01;
    const auto json = ReportToJson(r, verdict);
    EXPECT_EQ(json["integrity"].dump(),
              R"({"verdict":"altered","storedChecksum":"01020304","bodyChecksum":"abcdef01","lineBreaks":"CR LF",)"
              R"("lineBreakExceptions":[],"finalLineBreak":true})");
    EXPECT_EQ(json["installation"]["registry"].dump(),
              R"({"InstallLocation":"D:\\Suite","VersionMajor":9,"VersionMinor":-3,"VersionBuild":"1042"})");
    EXPECT_EQ(json["installation"]["directories"][0]["entries"][1].dump(),
              R"({"name":"tool.dll","version":"9.3.1.0","attributes":"00000020","size":4753,)"
              R"("created":"07/03/2021  14:05:09","createdIso":"2021-03-07T14:05:09",)"
              R"("written":"08/03/2021  09:00:00","writtenIso":"2021-03-08T09:00:00","accessList":null,"content":null})");
}

TEST(ReportModel, JsonWriterWritesWhatDumpJsonWrites) {
    std::string everyAscii;
    for (int c = 0; c < 0x80; ++c) everyAscii.push_back(static_cast<char>(c));
    // Beyond ASCII: well-formed, a lone surrogate as the model keeps it,
    // and the ill-formed bytes a file name can hold.
    const std::string texts[] = {"",           "plain",         everyAscii,     "\u00e9t\u00e9 \u20ac \U0001F600",
                                 "\xED\xA0\x80", "a\xED\xBF\xBF" "b", "\xFF\xFE name", "cut \xE2\x82"};
    std::string text;
    JsonWriter json(text);
    nlohmann::ordered_json tree = nlohmann::ordered_json::array();
    json.Open('[');
    for (const std::string& t : texts) {
        json.String(t);
        tree.push_back(t);
    }
    json.Open('{');
    json.Key("min");
    json.Signed(INT64_MIN);
    json.Key("max");
    json.Unsigned(UINT64_MAX);
    json.Key("none");
    json.Null();
    json.Key("yes");
    json.Bool(true);
    json.Close('}');
    tree.push_back({{"min", INT64_MIN}, {"max", UINT64_MAX}, {"none", nullptr}, {"yes", true}});
    json.Open('[');
    json.Close(']');
    tree.push_back(nlohmann::ordered_json::array());
    json.Close(']');
    EXPECT_EQ(text, DumpJson(tree));
}

TEST(ReportModel, JsonWriterFindsEveryByteToEscapeWhereverItStands) {
    // A text is looked at eight bytes at a time: each kind of byte that asks
    // for something, at every place in and around two such groups, and the
    // plain bytes next to them in value.
    const std::string bytes[] = {"\"", "\\", std::string(1, '\0'), "\x1F", "\n", "\xC3\xA9", " ", "!", "#", "[", "]", "\x7F"};
    for (const std::string& byte : bytes)
        for (std::size_t at = 0; at <= 17; ++at) {
            const std::string text = std::string(at, 'a') + byte + std::string(17 - at, 'b');
            std::string written;
            JsonWriter json(written);
            json.String(text);
            EXPECT_EQ(written, DumpJson(nlohmann::ordered_json(text))) << at;
        }
}

TEST(ReportModel, AnEntrysTimeIsKeptAsItsNumbersAndPrintedAlike) {
    const auto stamp = CalendarStamp::FromPrinted("07/03/2021  14:05:09");
    ASSERT_TRUE(stamp);
    EXPECT_EQ(stamp->Printed(), "07/03/2021  14:05:09");
    EXPECT_EQ(stamp->Iso(), "2021-03-07T14:05:09");
    const auto last = CalendarStamp::FromPrinted("31/12/1999  23:59:58");
    ASSERT_TRUE(last);
    EXPECT_EQ(last->Printed(), "31/12/1999  23:59:58");
    EXPECT_EQ(last->Iso(), "1999-12-31T23:59:58");
    EXPECT_FALSE(*stamp == *last);
    const auto early = CalendarStamp::FromPrinted("01/01/0999  00:00:00");
    ASSERT_TRUE(early);
    EXPECT_EQ(early->Printed(), "01/01/0999  00:00:00");
    EXPECT_EQ(early->Iso(), "0999-01-01T00:00:00");
    EXPECT_EQ(std::string_view(early->PrintedText()), "01/01/0999  00:00:00");
    EXPECT_EQ(CalendarStamp::FromPrinted("29/02/2024  23:59:59")->Iso(), "2024-02-29T23:59:59");
    EXPECT_FALSE(CalendarStamp::FromPrinted("29/02/2023  23:59:59")->IsoText());
    EXPECT_FALSE(CalendarStamp::FromPrinted("7/03/2021  14:05:09"));
    EXPECT_FALSE(CalendarStamp::FromPrinted("07/03/2021 14:05:09"));
    EXPECT_FALSE(CalendarStamp::FromPrinted("07/03/2021  14:05:0x"));
}

TEST(ReportModel, UtfEightFromBytesAsFromTheText) {
    // Lone surrogates at both ends, and a pair far into the text.
    std::u16string text = u"\xDC00";
    text += std::u16string(32 * 1024 - 2, u'a');
    text += u"\xD83D\xDE00\u00E9\xD800";
    std::string bytes;
    for (char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    const std::string utf8 = Utf8FromUtf16LE(bytes);
    EXPECT_EQ(utf8, Utf8FromUtf16(text));
    EXPECT_EQ(utf8.substr(utf8.size() - 9), "\xF0\x9F\x98\x80\xC3\xA9\xED\xA0\x80");
    EXPECT_EQ(Utf8FromUtf16LE(bytes + "x"), utf8);  // an odd last byte left out
    const Report fromBytes = ParseReportUtf8(Utf8FromUtf16(Utf16FromUtf8(kSampleReportBody)));
    EXPECT_EQ(RenderReportBody(fromBytes), U16(kSampleReportBody));
}

// A name that comes twice (only an edited report has one) is told apart by
// its rank, and a thing the new report lost stands where it stood.
TEST(ReportDiff, MatchesNamesThatComeTwiceByRankAndTellsALossInPlace) {
    std::string changed = kSampleReportBody;
    changed.erase(changed.find("\t00000010          0"),
                  std::string("\t00000010          0\t22/11/2026  14:33:45\t22/11/2026  14:33:45\t.\t\n").size());
    changed.replace(changed.find("\ttool.dll\t9.3.1.0\n"), 18,
                    "\ttool.dll\t9.3.1.1\n\t00000020         12\t22/11/2026  15:00:00\t22/11/2026  15:00:00\ttool.dll\t9.4.0.0\n");
    const Report before = ParseReportBody(U16(kSampleReportBody));
    const Report after = ParseReportBody(U16(changed));
    EXPECT_EQ(DiffText(before, after),
              "Orvane Software installation:\n"
              "\tCurrent directory: .: removed (size 0)\n"
              "\tCurrent directory: tool.dll: version: 9.3.1.0 \u2192 9.3.1.1\n"
              "\tCurrent directory: tool.dll (2): added (version 9.4.0.0, size 12)\n");
    EXPECT_EQ(DiffText(after, before),
              "Orvane Software installation:\n"
              "\tCurrent directory: .: added (size 0)\n"
              "\tCurrent directory: tool.dll: version: 9.3.1.1 \u2192 9.3.1.0\n"
              "\tCurrent directory: tool.dll (2): removed (version 9.4.0.0, size 12)\n");
}

TEST(ReportDiff, NamesEachChangeOnceAndIgnoresTheHeaderTime) {
    std::string changed = kSampleReportBody;
    changed.replace(changed.find("11/22/26 14:36:06"), 17, "11/29/26 09:00:00");
    changed.replace(changed.find("free 81646476K"), 14, "free 81000000K");
    changed.replace(changed.find("\t9.3.1.0\n"), 9, "\t9.4.0.0\n");
    changed.replace(changed.find("\tVersionBuild: 1042"), 19, "\tVersionBuild: 1043");
    changed.insert(changed.find("* Standard installation"),
                   "\t00000020         12\t22/11/2026  15:00:00\t22/11/2026  15:00:00\tnew.txt\t\n");
    changed.erase(changed.find("\tid: "), std::string("\tid: 12345-oem-0000001-54321\n").size());
    const Report before = ParseReportBody(U16(kSampleReportBody));
    const Report after = ParseReportBody(U16(changed));
    EXPECT_EQ(DiffText(before, after),
              "Windows:\n"
              "\tid: 12345-oem-0000001-54321 \u2192 (none)\n"
              "Hardware:\n"
              "\tC volume free: 81646476K \u2192 81000000K\n"
              "Orvane Software installation:\n"
              "\tCurrent directory: tool.dll: version: 9.3.1.0 \u2192 9.4.0.0\n"
              "\tCurrent directory: new.txt: added (size 12)\n"
              "\tRegistry installation data: VersionBuild: 1042 \u2192 1043\n");
    EXPECT_TRUE(DiffReports(before, before).empty());
    EXPECT_TRUE(DiffReports(ParseReportBody(U16(WithCrLf(kSampleReportBody))), before).empty());
}

TEST(ReportDiff, ValuesThatDisappearShowAsNone) {
    std::string changed = kSampleReportBody;
    changed.erase(changed.find("\tInstallLocation: "), changed.find("* Registry installation directory:") -
                                                            changed.find("\tInstallLocation: "));
    const Report before = ParseReportBody(U16(kSampleReportBody));
    const Report after = ParseReportBody(U16(changed));
    EXPECT_EQ(DiffText(before, after),
              "Orvane Software installation:\n"
              "\tRegistry installation directory: path: D:\\Suite \u2192 (none)\n"
              "\tRegistry installation data: InstallLocation: D:\\Suite \u2192 (none)\n"
              "\tRegistry installation data: VersionMajor: 9 \u2192 (none)\n"
              "\tRegistry installation data: VersionMinor: -3 \u2192 (none)\n"
              "\tRegistry installation data: VersionBuild: 1042 \u2192 (none)\n");
}

// A registry string may hold line breaks, and the report prints it raw:
// lines forged through it must not pass for the true ones.
TEST(ReportDiff, LinesForgedThroughAValueAreToldAndNotTaken) {
    std::string forged = kSampleReportBody;
    forged.replace(forged.find("\tInstallLocation: D:\\Suite\n"), 27,
                   "\tInstallLocation: D:\\Suite\n* Registry installation data:\n\tVersionMajor: 99\n");
    const Report before = ParseReportBody(U16(kSampleReportBody));
    const Report after = ParseReportBody(U16(forged));
    ASSERT_EQ(after.installation.registryValues.size(), 4u);
    EXPECT_EQ(after.installation.registryValues[1].name, "VersionMajor");
    EXPECT_EQ(after.installation.registryValues[1].number, 9);
    ASSERT_EQ(after.unrecognised.size(), 2u);
    EXPECT_EQ(after.unrecognised[0].text, "* Registry installation data:");
    EXPECT_EQ(after.unrecognised[1].text, "\tVersionMajor: 99");
    EXPECT_EQ(RenderReportBody(after), U16(forged));
    EXPECT_EQ(DiffText(before, after),
              "Lines the reader did not recognise (damaged, edited, or forged through a value):\n"
              "\told: none\n"
              "\tnew: 2 (lines 61, 62)\n"
              "Unrecognised lines:\n"
              "\t\"* Registry installation data:\": added (line 61)\n"
              "\t\"\\x09VersionMajor: 99\": added (line 62)\n");
}

TEST(ReportDiff, ASectionForgedAgainIsNotTaken) {
    std::string forged = kSampleReportBody;
    forged.replace(forged.find("\tbios: Default System BIOS\n"), 27,
                   "\tbios: Default System BIOS\nHardware:\n\tboard: Forged\n");
    const Report r = ParseReportBody(U16(forged));
    EXPECT_EQ(r.hardware.bios, "Default System BIOS");
    EXPECT_EQ(r.hardware.board, "Intel Corporation");
    EXPECT_EQ(r.hardware.processorCount, 2u);
    ASSERT_EQ(r.unrecognised.size(), 2u);
    EXPECT_EQ(r.unrecognised[0].text, "Hardware:");
    EXPECT_EQ(r.unrecognised[1].text, "\tboard: Forged");
    EXPECT_EQ(RenderReportBody(r), U16(forged));
}

TEST(ReportDiff, TextAndJsonShowOneReplacementCharacterPerLoneSurrogate) {
    std::string changed = kSampleReportBody;
    changed.replace(changed.find("D:\\Suite\n"), 8, "D:\\S\xED\xA0\x80it\xED\xBF\xBF");
    const Report before = ParseReportBody(U16(kSampleReportBody));
    const Report after = ParseReportBody(U16(changed));
    const std::string text = DiffText(before, after);
    EXPECT_NE(text.find("D:\\Suite \u2192 D:\\S\uFFFDit\uFFFD\n"), std::string::npos) << text;
    EXPECT_EQ(text.find('\xED'), std::string::npos);
    ReportSide side{&after, {}};
    const std::string json = DumpJson(DiffToJson(side, side, DiffReports(before, after)));
    EXPECT_NE(json.find("\"new\":\"D:\\\\S\uFFFDit\uFFFD\""), std::string::npos) << json;
    EXPECT_EQ(json.find("\uFFFD\uFFFD"), std::string::npos);
    std::string model;
    JsonWriter writer(model);
    writer.String("\xED\xA0\x80");
    EXPECT_EQ(model, "\"\uFFFD\"");
}

TEST(ReportDiff, TextShowsANulEscapedAndWhatFollowsIt) {
    std::string changed = kSampleReportBody;
    changed.replace(changed.find("\tuser: "), 7, std::string("\tuser: ro\0ot ", 13));
    changed.replace(changed.find("\tVersionBuild: 1042"), 19, "\tVersionBuild: 1043");
    const Report before = ParseReportBody(U16(kSampleReportBody));
    const Report after = ParseReportBody(U16(changed));
    const std::string text = DiffText(before, after);
    EXPECT_NE(text.find(" \u2192 ro\\x00ot "), std::string::npos);  // escaped, as every control character
    EXPECT_NE(text.find("Orvane Software installation:"), std::string::npos);  // nothing after the NUL lost
}

TEST(ReportDiff, LeavesOutTheKindsOfChangeAskedFor) {
    std::string changed = kSampleReportBody;
    changed.replace(changed.find("free 81646476K"), 14, "free 81000000K");
    changed.replace(changed.find("08/03/2021  09:00:00\ttool.dll\t9.3.1.0"), 37,
                    "09/03/2021  09:00:00\ttool.dll\t9.4.0.0");
    const Report before = ParseReportBody(U16(kSampleReportBody));
    const Report after = ParseReportBody(U16(changed));
    std::string problem;
    const auto ignored = ParseIgnoredKinds("times,free-space", problem);
    ASSERT_TRUE(ignored);
    EXPECT_TRUE(ignored->times && ignored->freeSpace);
    const auto changes = LeaveOut(DiffReports(before, after), *ignored);
    ASSERT_EQ(changes.size(), 1u);
    EXPECT_EQ(changes[0].field, "version");
    EXPECT_EQ(changes[0].directory, "Current directory");
    EXPECT_EQ(changes[0].entry, "tool.dll");
    EXPECT_EQ(LeaveOut(DiffReports(before, after), {}).size(), 3u);
    EXPECT_FALSE(ParseIgnoredKinds("times,sizes", problem));
    EXPECT_EQ(problem, "unknown kind of change \"sizes\" (known: times, free-space)");
}

TEST(ReportDiff, JsonGivesAnEntrysDirectoryNameAndValuesApart) {
    std::string changed = kSampleReportBody;
    changed.erase(changed.find("\t00000020       4753"),
                  std::string("\t00000020       4753\t07/03/2021  14:05:09\t08/03/2021  09:00:00\ttool.dll\t9.3.1.0\n").size());
    const Report before = ParseReportBody(U16(kSampleReportBody));
    const Report after = ParseReportBody(U16(changed));
    ReportSide side{&after, {}};
    const auto json = DiffToJson(side, side, DiffReports(before, after));
    ASSERT_EQ(json["changes"].size(), 1u);
    EXPECT_EQ(json["changes"][0].dump(),
              R"({"section":"Orvane Software installation","subject":"Current directory: tool.dll","field":"",)"
              R"("change":"removed","old":"version 9.3.1.0, size 4753","new":null,"directory":"Current directory",)"
              R"("entry":"tool.dll","oldEntry":{"version":"9.3.1.0","size":4753,"created":"07/03/2021  14:05:09",)"
              R"("createdIso":"2021-03-07T14:05:09","written":"08/03/2021  09:00:00","writtenIso":"2021-03-08T09:00:00"},)"
              R"("newEntry":null})");
}

// show --json's layout made from the one-line text, without a tree: the
// same bytes as the tree's own indented dump.
#include <gtest/gtest.h>

#include <string>

#include "SampleReport.h"
#include "reader/JsonIndent.h"
#include "reader/ReportJson.h"

using namespace report_model;

namespace {

std::string Indented(std::string_view compact) {
    std::string out;
    IndentJson(compact, [&](std::string_view piece) { out += piece; });
    return out;
}

}  // namespace

TEST(JsonIndent, LaysOutAsTheTreeDumpDoes) {
    const std::string texts[] = {
        R"({})",
        R"([])",
        R"({"a":[],"b":{},"c":[1,{"d":null}],"e":"x,y:{[\"]}\\"})",
        R"([true,false,-3,"\u001b[2J"])",
    };
    for (const std::string& text : texts)
        EXPECT_EQ(Indented(text), DumpJson(nlohmann::ordered_json::parse(text), 2)) << text;
}

TEST(JsonIndent, AWholeReportAsShowPrintsIt) {
    std::string body = kSampleReportBody;
    const Report report = ParseReportBody(Utf16FromUtf8(body));
    ReportVerdict verdict;
    verdict.state = ReportState::Intact;
    std::string compact;
    JsonWriter json(compact);
    WriteReportJson(json, report, verdict);
    EXPECT_EQ(Indented(compact), DumpJson(ReportToJson(report, verdict), 2));
}

TEST(JsonIndent, LongTextComesInPiecesInOrder) {
    const std::string compact = "[\"" + std::string(200000, 'x') + "\",1]";
    std::string out;
    int pieces = 0;
    IndentJson(compact, [&](std::string_view piece) {
        out += piece;
        ++pieces;
    });
    EXPECT_EQ(out, "[\n  \"" + std::string(200000, 'x') + "\",\n  1\n]");
    EXPECT_EQ(pieces, 2);  // the string whole in the first, never split; the rest at the end
}

// show --json lays its document out as it is made, in pieces cut wherever
// the writer drains: inside strings, escapes, or between "{" and "}".
TEST(JsonIndent, PiecesCutAnywhereLayOutAsTheWholeText) {
    const Report report = ParseReportBody(Utf16FromUtf8(kSampleReportBody));
    std::string compact;
    JsonWriter json(compact);
    WriteReportJson(json, report, {});
    compact += R"({"a":{},"b":[],"c":"x\"\\y"})";
    const std::string whole = Indented(compact);
    for (std::size_t size : {1, 2, 3, 5, 64, 1000}) {
        std::string out;
        JsonIndenter indenter([&](std::string_view piece) { out += piece; });
        for (std::size_t at = 0; at < compact.size(); at += size) indenter.Add(std::string_view(compact).substr(at, size));
        indenter.Finish();
        EXPECT_EQ(out, whole) << "pieces of " << size;
    }
}

TEST(JsonIndent, AWriterThatDrainsGivesTheSameTextInPieces) {
    // Enough entries for the JSON to pass the drain's size several times.
    std::string body = kSampleReportBody;
    std::string entries;
    for (int i = 0; i < 2000; ++i)
        entries += "\t00000020         12\t22/11/2026  15:00:00\t22/11/2026  15:00:00\tfile" + std::to_string(i) + ".txt\t\n";
    body.insert(body.find("* Standard installation"), entries);
    const Report report = ParseReportBody(Utf16FromUtf8(body));
    std::string whole;
    JsonWriter plain(whole);
    WriteReportJson(plain, report, {});
    std::string drained, rest;
    int drains = 0;
    JsonWriter json(rest, [&](std::string_view made) {
        drained += made;
        ++drains;
    });
    WriteReportJson(json, report, {});
    EXPECT_EQ(drained + rest, whole);
    EXPECT_GE(drains, 3);
    EXPECT_LT(rest.size(), 64u * 1024);
}

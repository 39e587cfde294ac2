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

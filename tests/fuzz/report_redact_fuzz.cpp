// reportcheck redact on any report and any keywords:
//  - it never crashes;
//  - whatever it would write either passes its own check or the check names
//    a kind (the command then writes nothing);
//  - what passes reads back as the same report with its marker: as many
//    unrecognised lines, and no typed field of a replaced kind still holds
//    its original value, in any letter case;
//  - redacting the result again with the same map changes nothing, even
//    where a keyword spells a piece of a pseudonym ("user-0", "0001"):
//    the pseudonyms of the first run stay whole, and its own check passes.
//
// Input: keywords, each ended by a line feed, until a NUL byte; then the
// body, one code unit per byte (line structure mutates well).
#include <cstdint>
#include <string>
#include <vector>

#include "FuzzCheck.h"
#include "format/LineForms.h"
#include "reader/ReportModel.h"
#include "reader/ReportRedact.h"
#include "reader/ReportRender.h"

using namespace report_model;
using namespace report_redact;

namespace {

// The typed fields that hold a value of a replaced kind.
std::vector<std::string> ReplacedFields(const Report& r) {
    std::vector<std::string> fields{r.host.netbiosName, r.host.wmiName, r.host.user.value_or(""),
                                    r.windows.productId.value_or("")};
    for (const Adapter& a : r.network.adapters) {
        fields.push_back(a.name);
        fields.push_back(a.physicalAddress.value_or(""));
        fields.push_back(a.dnsSuffix.value_or(""));
    }
    return fields;
}

// Whether a heading stands among the unrecognised lines: a section or the
// registry data given twice, as a value's line break can forge it. The
// reader then sets aside the lines that read as that heading's own, and
// where that run ends depends on their text, which redaction changes.
bool HasDisplacedHeading(const Report& report) {
    using namespace lineform;
    for (const UnrecognisedLine& u : report.unrecognised)
        for (std::string_view heading :
             {kProgramHeading.Narrow(), kHostHeading.Narrow(), kWindowsHeading.Narrow(), kHardwareHeading.Narrow(),
              kNetworkHeading.Narrow(), kInstallationHeading.Narrow(), kRegistryDataHeading.Narrow()})
            if (u.text == heading) return true;
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::string> keywords;
    std::size_t i = 0;
    std::string word;
    for (; i < size && data[i] != 0; ++i) {
        if (data[i] == '\n') {
            if (!word.empty()) keywords.push_back(word);
            word.clear();
        } else if (data[i] != '\t' && data[i] != '\r') {
            word += static_cast<char>(data[i]);
        }
    }
    std::u16string body;
    for (++i; i < size; ++i) body.push_back(data[i]);
    const Report original = ParseReportBody(body);
    PseudonymMap map;
    const Redacted redacted = RedactReport(original, keywords, map);
    const std::u16string written = RenderReportBody(redacted.report);
    if (FindSurvivor(written, redacted)) return 0;  // refused: nothing would be written
    const Report reread = ParseReportBody(written);
    FUZZ_CHECK(reread.redaction.has_value());
    // Past a displaced heading the structure read back may differ (above).
    const bool stableStructure = !HasDisplacedHeading(original);
    if (stableStructure) FUZZ_CHECK(reread.unrecognised.size() == original.unrecognised.size());
    for (const std::string& field : ReplacedFields(reread))
        for (const Replacement& r : redacted.replaced)
            FUZZ_CHECK(r.kind == Kind::Keyword || field.empty() || FoldCase(field) != FoldCase(r.original));
    const Redacted again = RedactReport(reread, keywords, map);
    const std::u16string writtenAgain = RenderReportBody(again.report);
    if (!stableStructure) return 0;  // the second run may find a value in a new place
    FUZZ_CHECK(writtenAgain == written);
    FUZZ_CHECK(!FindSurvivor(writtenAgain, again));  // the second run writes too
    return 0;
}

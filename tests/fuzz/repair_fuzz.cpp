// reportcheck repair on any bytes, and on reports damaged at random:
//  - it never crashes;
//  - a file is only ever declared restored with bytes that check intact
//    (their body gives the checksum their trailer states), and an intact
//    file is never "restored";
//  - the diagnosis told without the restored copy is the same;
//  - a report whose CR LF breaks were made LF is always restored (unless
//    the change left the checksum as it was).
//
// Input: the bytes of a file as a transfer may have left them; the same
// bytes are also taken as a report's body, saved, then damaged both ways.
#include <cstdint>
#include <string>

#include "FuzzCheck.h"
#include "format/ReportChecksum.h"
#include "format/ReportVerdict.h"
#include "format/TransitDamage.h"

namespace {

void CheckDiagnosis(const std::string& bytes) {
    const TransitDiagnosis diagnosis = DiagnoseTransitDamage(bytes);
    if (CheckReportBytes(bytes).state == ReportState::Intact) FUZZ_CHECK(!diagnosis.restored);
    // Told without the restored copy (check, show), the same.
    const TransitDiagnosis told = DiagnoseTransitDamage(bytes, Restore::No);
    FUZZ_CHECK(told.damage == diagnosis.damage && told.undone == diagnosis.undone && !told.restored);
    FUZZ_CHECK(told.restorable == diagnosis.restored.has_value() && diagnosis.restorable == told.restorable);
    if (diagnosis.restored) {
        FUZZ_CHECK(CheckReportBytes(*diagnosis.restored).state == ReportState::Intact);
        FUZZ_CHECK(!diagnosis.undone.empty());
    }
}

// Every CR LF of the body made LF, as a transfer in text mode does.
std::string WithLfBreaks(const std::string& report) {
    std::string out = report.substr(0, 2);
    for (std::size_t i = 2; i + 1 < report.size(); i += 2) {
        const bool cr = report[i] == '\r' && report[i + 1] == '\0';
        const bool lfNext = i + 3 < report.size() && report[i + 2] == '\n' && report[i + 3] == '\0';
        if (!(cr && lfNext)) out += report.substr(i, 2);
    }
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    CheckDiagnosis(bytes);

    std::u16string body;  // one unit per byte, every line feed after a CR, as the program saves
    for (std::uint8_t byte : bytes) {
        if (byte == '\r') continue;
        if (byte == '\n') body.push_back(u'\r');
        body.push_back(byte);
    }
    const std::string report = BuildReportFileBytes(body);
    FUZZ_CHECK(!DiagnoseTransitDamage(report).restored);
    const std::string damaged = WithLfBreaks(report);
    CheckDiagnosis(damaged);
    // Undoing the conversion gives the report back, so a restoration is
    // always found; it is that report unless another intact one came first.
    // (Dropped CRs can cancel out in the checksum: then the damaged copy is
    // intact itself, and there is nothing to restore.)
    if (CheckReportBytes(damaged).state != ReportState::Intact)
        FUZZ_CHECK(DiagnoseTransitDamage(damaged).restored.has_value());
    return 0;
}

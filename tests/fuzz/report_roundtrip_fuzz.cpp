// The report file as written and as the report checker reads it back:
//  - any text, written as a report file, reads back intact, with the same
//    body and the checksum of that body;
//  - changing the low 8 bits of any one code unit of the body (by any
//    non-zero amount) makes the file read as altered, and the checksum the
//    body then gives is exactly the old one with that change folded in;
//  - any bytes at all get a verdict without harm, and a file judged intact
//    is byte for byte what the writer makes of its body.
//
// Input: bytes 0-3 choose the body unit to change, byte 4 the change; the
// whole input, read as UTF-16LE, is the body.
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "FuzzCheck.h"
#include "format/ReportChecksum.h"
#include "format/ReportVerdict.h"

namespace {

std::string Hex8(std::uint32_t value) {
    char digits[9];
    std::snprintf(digits, sizeof digits, "%08x", value);
    return digits;
}

// Any bytes: a verdict, and one that is consistent with the bytes.
void CheckAnyBytes(std::string_view bytes) {
    const ReportVerdict verdict = CheckReportBytes(bytes);
    const std::string description = DescribeReportVerdict(verdict);
    FUZZ_CHECK(!description.empty());
    if (verdict.state == ReportState::NotAReport) {
        FUZZ_CHECK(verdict.reason != NotAReportReason::None);
        FUZZ_CHECK((verdict.reason == NotAReportReason::Empty) == bytes.empty());
        return;
    }
    FUZZ_CHECK(verdict.reason == NotAReportReason::None);
    FUZZ_CHECK(bytes.size() >= 32 && bytes.size() % 2 == 0);
    const std::u16string body = DecodeUtf16LE(bytes.substr(2, bytes.size() - 32));
    FUZZ_CHECK(verdict.computed == ComputeReportChecksum(body));
    if (verdict.state == ReportState::Intact) {
        FUZZ_CHECK(verdict.stored == verdict.computed);
        FUZZ_CHECK(BuildReportFileBytes(body) == bytes);
        FUZZ_CHECK(description == "intact (checksum " + Hex8(verdict.computed) + ")");
    } else {
        FUZZ_CHECK(verdict.stored != verdict.computed);
        // The trailer of an altered file is the writer's for the stored value.
        const std::u16string trailer = FormatReportTrailer(verdict.stored);
        FUZZ_CHECK(DecodeUtf16LE(bytes.substr(bytes.size() - 30)) == trailer);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    CheckAnyBytes(input);

    // Written and read back.
    const std::u16string body = DecodeUtf16LE(input);
    const std::string file = BuildReportFileBytes(body);
    FUZZ_CHECK(file.size() == 32 + 2 * body.size());
    FUZZ_CHECK(file.compare(0, 2, "\xFF\xFE") == 0);
    const std::uint32_t checksum = ComputeReportChecksum(body);
    const ReportVerdict written = CheckReportBytes(file);
    FUZZ_CHECK(written.state == ReportState::Intact);
    FUZZ_CHECK(written.stored == checksum && written.computed == checksum);
    FUZZ_CHECK(DecodeUtf16LE(std::string_view(file).substr(2, 2 * body.size())) == body);
    CheckAnyBytes(file);

    if (body.empty() || size < 5) return 0;
    const std::uint32_t choice = data[0] | data[1] << 8 | data[2] << 16 | static_cast<std::uint32_t>(data[3]) << 24;
    const std::size_t unit = choice % body.size();
    const unsigned change = data[4] ? data[4] : 1;

    // One body byte's low 8 bits changed: caught, and by exactly that much.
    std::string damaged = file;
    damaged[2 + 2 * unit] = static_cast<char>(damaged[2 + 2 * unit] ^ change);
    const ReportVerdict altered = CheckReportBytes(damaged);
    FUZZ_CHECK(altered.state == ReportState::Altered);
    FUZZ_CHECK(altered.stored == checksum);
    FUZZ_CHECK(altered.computed == (checksum ^ change << (8 * (unit % 4))));
    CheckAnyBytes(damaged);

    // The high 8 bits are outside the checksum by design: still intact.
    std::string high = file;
    high[3 + 2 * unit] = static_cast<char>(high[3 + 2 * unit] ^ change);
    FUZZ_CHECK(CheckReportBytes(high).state == ReportState::Intact);
    return 0;
}

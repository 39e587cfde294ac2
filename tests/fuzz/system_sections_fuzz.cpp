// The Program, Host, Windows and Hardware sections rendered from records of
// any values: each section keeps its heading, its number of pieces and its
// labels, every piece is one line, and each text value appears as given,
// whatever characters it holds. Numbers of any size render without fault
// (the sanitizers watch the conversions).
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "FuzzCheck.h"
#include "report/SystemSections.h"

namespace {

class PieceSink final : public ReportSink {
public:
    void Append(std::wstring_view text) override { pieces.emplace_back(text); }
    std::vector<std::wstring> pieces;
};

std::wstring WideText(FuzzedDataProvider& input, std::size_t maxLength) {
    std::wstring text;
    const std::size_t length = input.ConsumeIntegralInRange<std::size_t>(0, maxLength);
    for (std::size_t i = 0; i < length && input.remaining_bytes() > 0; ++i)
        text.push_back(static_cast<wchar_t>(input.ConsumeIntegral<std::uint16_t>()));
    return text;
}

// "<label><value>\n", the value exactly as given.
void CheckLine(const std::wstring& piece, std::wstring_view label, const std::wstring& value) {
    FUZZ_CHECK(piece == std::wstring(label) + value + L"\n");
}

bool EndsWithLineFeed(const std::wstring& piece) { return !piece.empty() && piece.back() == L'\n'; }

void CheckProgram(FuzzedDataProvider& input) {
    ProgramFacts facts;
    facts.applicationName = WideText(input, 16);
    facts.productVersion = WideText(input, 16);
    facts.directory = WideText(input, 32);
    facts.elevated = input.ConsumeBool();
    PieceSink sink;
    RenderProgramSection(facts, sink);
    FUZZ_CHECK(sink.pieces.size() == (facts.elevated ? 4u : 3u));
    FUZZ_CHECK(sink.pieces[0] == kProgramHeading);
    FUZZ_CHECK(sink.pieces[1] == facts.applicationName + L" " + facts.productVersion + L"\n");
    CheckLine(sink.pieces[2], L"in ", facts.directory);
    if (facts.elevated) FUZZ_CHECK(sink.pieces[3] == kAdministratorLine);
}

void CheckHost(FuzzedDataProvider& input) {
    HostFacts facts{WideText(input, 16), WideText(input, 16), WideText(input, 16), WideText(input, 16)};
    PieceSink sink;
    RenderHostSection(facts, sink);
    FUZZ_CHECK(sink.pieces.size() == 3u);
    FUZZ_CHECK(sink.pieces[0] == kHostHeading);
    CheckLine(sink.pieces[1], L"\tname: ", facts.netbiosName + L" (" + facts.wmiDomain + L"\\" + facts.wmiName + L")");
    CheckLine(sink.pieces[2], L"\tuser: ", facts.userName);
}

void CheckWindows(FuzzedDataProvider& input) {
    WindowsFacts facts;
    facts.versionLabel = WideText(input, 12);
    facts.editionLabel = WideText(input, 8);
    facts.realVersion = WideText(input, 16);
    if (input.ConsumeBool()) {
        const std::size_t size = input.ConsumeIntegralInRange<std::size_t>(0, 64);
        facts.productId = input.ConsumeBytes<std::uint8_t>(size);
    }
    facts.systemPath = WideText(input, 32);
    facts.programFiles = WideText(input, 32);
    facts.commonAppData = WideText(input, 32);
    PieceSink sink;
    RenderWindowsSection(facts, sink);
    const std::size_t id = facts.productId ? 1 : 0;
    FUZZ_CHECK(sink.pieces.size() == 6u + id);
    FUZZ_CHECK(sink.pieces[0] == kWindowsHeading);
    CheckLine(sink.pieces[1], L"\tversion reported: ", facts.versionLabel + L" (" + facts.editionLabel + L")");
    CheckLine(sink.pieces[2], L"\treal version: ", facts.realVersion);
    if (facts.productId) {
        FUZZ_CHECK(sink.pieces[3].rfind(L"\tid: ", 0) == 0 && EndsWithLineFeed(sink.pieces[3]));
    }
    CheckLine(sink.pieces[3 + id], L"\tsystem path: ", facts.systemPath);
    CheckLine(sink.pieces[4 + id], L"\tprogram file path: ", facts.programFiles);
    CheckLine(sink.pieces[5 + id], L"\tapplication common shared path: ", facts.commonAppData);
}

void CheckHardware(FuzzedDataProvider& input) {
    HardwareFacts facts;
    facts.biosName = WideText(input, 16);
    facts.boardManufacturer = WideText(input, 16);
    facts.processorCount = input.ConsumeIntegral<std::uint32_t>();
    facts.processorArchitecture = input.ConsumeIntegral<std::uint16_t>();
    facts.processorLevel = input.ConsumeIntegral<std::uint16_t>();
    facts.processorRevision = input.ConsumeIntegral<std::uint16_t>();
    facts.activeProcessorMask = input.ConsumeIntegral<std::uint64_t>();
    facts.pageSize = input.ConsumeIntegral<std::uint32_t>();
    facts.lowestApplicationAddress = input.ConsumeIntegral<std::uint64_t>();
    facts.highestApplicationAddress = input.ConsumeIntegral<std::uint64_t>();
    facts.totalPhysical = input.ConsumeIntegral<std::uint64_t>();
    facts.totalVirtual = input.ConsumeIntegral<std::uint64_t>();
    facts.totalPaging = input.ConsumeIntegral<std::uint64_t>();
    if (input.ConsumeBool()) {
        VolumeFacts volume;
        volume.serialNumber = input.ConsumeIntegral<std::uint32_t>();
        volume.fileSystemFlags = input.ConsumeIntegral<std::uint32_t>();
        volume.totalBytes = input.ConsumeIntegral<std::uint64_t>();
        volume.totalFreeBytes = input.ConsumeIntegral<std::uint64_t>();
        volume.bytesAvailableToCaller = input.ConsumeIntegral<std::uint64_t>();
        volume.fileSystemName = WideText(input, 8);
        facts.volumeC = volume;
    }
    PieceSink sink;
    RenderHardwareSection(facts, sink);
    FUZZ_CHECK(sink.pieces.size() == (facts.volumeC ? 11u : 10u));
    FUZZ_CHECK(sink.pieces[0] == kHardwareHeading);
    FUZZ_CHECK(sink.pieces[1] == kSystemBitsLine);
    CheckLine(sink.pieces[2], L"\tbios: ", facts.biosName);
    CheckLine(sink.pieces[3], L"\tboard: ", facts.boardManufacturer);
    CheckLine(sink.pieces[4], L"\tnumber of processors: ", std::to_wstring(facts.processorCount));
    CheckLine(sink.pieces[5], L"\tprocessor : ",
              std::to_wstring(facts.processorArchitecture) + L" (" + std::to_wstring(facts.processorLevel) + L"." +
                  std::to_wstring(facts.processorRevision) + L")");
    CheckLine(sink.pieces[6], L"\tactive processor mask: ",
              std::to_wstring(static_cast<std::uint32_t>(facts.activeProcessorMask)));
    CheckLine(sink.pieces[7], L"\tpage size: ", std::to_wstring(facts.pageSize));
    // The numeric lines hold no other line break than their last character.
    for (std::size_t i = 8; i < sink.pieces.size(); ++i) {
        FUZZ_CHECK(EndsWithLineFeed(sink.pieces[i]));
        if (i < 10) FUZZ_CHECK(sink.pieces[i].find(L'\n') == sink.pieces[i].size() - 1);
    }
    if (facts.volumeC) {
        const std::wstring& line = sink.pieces[10];
        FUZZ_CHECK(line.rfind(L"\tC volume: 0x", 0) == 0);
        FUZZ_CHECK(line.find(L" " + facts.volumeC->fileSystemName + L" total ") != std::wstring::npos);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    CheckProgram(input);
    CheckHost(input);
    CheckWindows(input);
    CheckHardware(input);
    return 0;
}

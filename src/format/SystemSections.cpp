#include "format/SystemSections.h"

#include "format/RegistryValueText.h"

void RenderProgramSection(const ProgramRecord& facts, ReportSink& sink) {
    sink.Append(kProgramHeading);
    sink.Append(FormatProgramLine(facts.applicationName, facts.productVersion));
    sink.Append(FormatProgramDirectoryLine(facts.directory));
    if (facts.elevated) sink.Append(kAdministratorLine);
}

void RenderHostSection(const HostRecord& facts, ReportSink& sink) {
    sink.Append(kHostHeading);
    sink.Append(FormatHostNameLine(facts.netbiosName, facts.wmiDomain, facts.wmiName));
    sink.Append(FormatUserLine(facts.userName));
}

void RenderWindowsSection(const WindowsRecord& facts, ReportSink& sink) {
    sink.Append(kWindowsHeading);
    sink.Append(FormatVersionReportedLine(facts.versionLabel, facts.editionLabel));
    sink.Append(FormatRealVersionLine(facts.realVersion));
    if (facts.productId) sink.Append(FormatProductIdLine(*facts.productId));
    sink.Append(FormatSystemPathLine(facts.systemPath));
    sink.Append(FormatProgramFilesLine(facts.programFiles));
    sink.Append(FormatCommonAppDataLine(facts.commonAppData));
}

void RenderHardwareSection(const HardwareRecord& facts, ReportSink& sink) {
    sink.Append(kHardwareHeading);
    sink.Append(kSystemBitsLine);
    sink.Append(FormatBiosLine(facts.biosName));
    sink.Append(FormatBoardLine(facts.boardManufacturer));
    sink.Append(FormatProcessorCountLine(facts.processorCount));
    sink.Append(FormatProcessorLine(facts.processorArchitecture, facts.processorLevel, facts.processorRevision));
    sink.Append(FormatActiveProcessorMaskLine(facts.activeProcessorMask));
    sink.Append(FormatPageSizeLine(facts.pageSize));
    sink.Append(FormatApplicationAddressesLine(facts.lowestApplicationAddress, facts.highestApplicationAddress));
    sink.Append(FormatMemoryLine(facts.totalPhysical, facts.totalVirtual, facts.totalPaging));
    if (facts.volumeC) sink.Append(FormatVolumeLine(*facts.volumeC));
}

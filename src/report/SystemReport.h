// The system report: header, Program, Host, Windows, Hardware, Network and
// Installation, appended piece by piece to a sink.
#pragma once

#include <optional>
#include <string>

#include "report/ReportSink.h"
#include "report/ReportText.h"
#include "report/SystemSections.h"

// Appends the whole report of this machine to `sink`. Returns false, having
// appended nothing, when the local time cannot be had for the header; every
// other failure shows in the text (or as an empty value) and the report goes
// on. The caller empties its view first if it wants a fresh report.
bool WriteSystemReport(ReportSink& sink);

// --- The report's pieces, for callers that need one section alone ----------

// The header line and its empty line for the current local time; empty when
// it does not fit its buffer; nothing when the local time cannot be had.
std::optional<std::wstring> MakeReportHeader();

// The collectors: each asks the system for one section's values, in the
// order the report has always asked them (the WMI queries among them).
ProgramFacts CollectProgramFacts();
HostFacts CollectHostFacts();
WindowsFacts CollectWindowsFacts();
HardwareFacts CollectHardwareFacts();

// Each writer collects its section and renders it: heading, then lines.

// Returns the program's directory, which the installation section lists.
std::wstring WriteProgramSection(ReportSink& sink);
void WriteHostSection(ReportSink& sink);

// The folders that the Windows section prints and the installation section
// builds on; empty when the system does not give them.
struct SystemFolders {
    std::wstring programFiles;
    std::wstring commonAppData;
};
SystemFolders WriteWindowsSection(ReportSink& sink);

void WriteHardwareSection(ReportSink& sink);

// What the volume line shows for the volume at `root` ("C:\\" in the
// report); nothing when the volume or its free space cannot be read.
std::optional<VolumeFacts> ReadVolumeFacts(const wchar_t* root);
void WriteNetworkSection(ReportSink& sink);

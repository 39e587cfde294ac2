// The system report: header, Program, Host, Windows, Hardware, Network and
// Installation, appended piece by piece to a sink.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "format/ReportSink.h"
#include "format/ReportText.h"
#include "format/SystemSections.h"

// The current local date and time as the header writes them; nothing when
// the local time cannot be had.
std::optional<std::wstring> ReadLocalDateAndTime();

// What the volume line shows for the volume at `root` ("C:\\" in the
// report); nothing when the volume or its free space cannot be read.
std::optional<VolumeRecord> ReadVolumeRecord(const wchar_t* root);
// The same for drive C:, the one volume the report shows.
std::optional<VolumeRecord> ReadSystemVolumeRecord();

// Where the report takes the values that no test machine can be made to
// give (a local time past the runtime's range, no drive C:). The defaults
// ask the system; tests put other answers in.
struct ReportSources {
    std::function<std::optional<std::wstring>()> localDateAndTime = ReadLocalDateAndTime;
    std::function<std::optional<VolumeRecord>()> systemVolume = ReadSystemVolumeRecord;
};

// Appends the whole report of this machine to `sink`. Returns false, having
// appended nothing, when the local time cannot be had for the header; every
// other failure shows in the text (or as an empty value) and the report goes
// on. The caller empties its view first if it wants a fresh report.
bool WriteSystemReport(ReportSink& sink, const ReportSources& sources = {});

// --- The report's pieces, for callers that need one section alone ----------

// The header line and its empty line for the current local time; empty when
// it does not fit its buffer; nothing when the local time cannot be had.
std::optional<std::wstring> MakeReportHeader();

// The collectors: each asks the system for one section's values, in the
// order the report has always asked them (the WMI queries among them).
ProgramRecord CollectProgramRecord();
HostRecord CollectHostRecord();
WindowsRecord CollectWindowsRecord();
// The volume of drive C: comes from `sources.systemVolume`.
HardwareRecord CollectHardwareRecord(const ReportSources& sources = {});

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

// The volume line comes from `sources.systemVolume`.
void WriteHardwareSection(ReportSink& sink, const ReportSources& sources = {});

void WriteNetworkSection(ReportSink& sink);

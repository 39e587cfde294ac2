// The report's last section: where the suite is installed and what lies
// there, with the installation data its installer leaves in the registry.
#pragma once

#include <string>
#include <vector>

#include "format/InstallationRecord.h"
#include "format/ReportSink.h"

// The installation values of the suite's registry key that can be read, in
// report order; none when the key cannot be opened.
std::vector<RegistryValueRecord> ReadInstallationValues();

// Appends the section: the program's directory, the standard installation
// directory, the registry data, the registry's directory when it is another
// one, and the two shared directories. Each entry is rendered as soon as it
// is read, so that a large directory is never held whole.
// The folders come from the Windows section of the same report; an empty
// folder gives paths rooted at "\".
void WriteInstallationSection(ReportSink& sink, const std::wstring& programDirectory, const std::wstring& programFiles,
                              const std::wstring& commonAppData);

// The report's last section: where the suite is installed and what lies
// there, with the installation data its installer leaves in the registry.
#pragma once

#include <string>

#include "report/ReportSink.h"

// Appends the section: the program's directory, the standard installation
// directory, the registry data, the registry's directory when it is another
// one, and the two shared directories, each directory listed entry by entry.
// The folders come from the Windows section of the same report; an empty
// folder gives paths rooted at "\".
void WriteInstallationSection(ReportSink& sink, const std::wstring& programDirectory, const std::wstring& programFiles,
                              const std::wstring& commonAppData);

// The fake suite installed for real, as an installer leaves it: files under
// Program Files and ProgramData, installation data under HKLM. Shared by the
// report tests that read the installation section in-process and by the
// end-to-end tests that read it from the program's own reports. Installing
// it changes the machine: such tests run alone (RUN_SERIAL) and only under
// Wine, whose prefix is thrown away afterwards.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "w32/Scoped.h"

inline constexpr wchar_t kSuiteKey[] = L"Software\\Orvane Software";

// Where the suite lives on this machine.
struct SuiteFolders {
    std::wstring programFiles;
    std::wstring commonAppData;
    std::wstring standard;  // Program Files\Orvane Software V9
    std::wstring shared;    // ProgramData\Orvane Software
    std::wstring batch;     // its Runner folder
};
SuiteFolders MachineSuiteFolders();

bool SuiteKeyExists(REGSAM view);
// A suite found in place (its key in either view, or one of its folders) is
// someone else's: a test leaves such a machine alone.
bool SuiteAlreadyInstalled(const SuiteFolders& folders);
// The key in both views and both folders, with everything in them.
void RemoveSuite(const SuiteFolders& folders);

// fixture_version_<which>.dll beside the test program.
std::wstring VersionFixturePath(const std::wstring& which);

// Program Files\Orvane Software V9 with two libraries that carry a product
// version (Core.dll 3.2.1.0, Runner.dll 1.4.0.12), one whose version is
// French only (Legacy.dll), readme.txt and a subdirectory (Plugins) with a
// file of its own; ProgramData\Orvane Software with settings.ini and its
// Runner folder holding nightly.cmd.
void InstallSuiteFiles(const SuiteFolders& folders);
inline constexpr char kSuiteReadme[] = "Orvane Software V9\r\n";

w32::ScopedRegKey CreateSuiteKey(REGSAM view = 0);
void SetValueBytes(HKEY key, const wchar_t* name, DWORD type, const std::vector<BYTE>& data);
void SetValueString(HKEY key, const wchar_t* name, const std::wstring& text);
void SetValueDword(HKEY key, const wchar_t* name, DWORD value);

// The data an installer leaves: InstallLocation, VersionMajor 9,
// VersionMinor written as the string "3", VersionRevision 1,
// VersionBuildReleaseRevision 1042, InstalledComponents "Core;Runner"
// (written first), VersionBuild not written at all.
void InstallSuiteRegistryData(const std::wstring& location);

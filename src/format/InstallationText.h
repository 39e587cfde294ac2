// The suite's directories and the headings of the installation section,
// made from plain paths.
#pragma once

#include <string>
#include <string_view>

#include "format/LineForms.h"

inline constexpr auto kInstallationHeadingPiece = lineform::HeadingPiece<wchar_t>(lineform::kInstallationHeading);
inline constexpr auto kRegistryDataHeadingPiece = lineform::LinePiece<wchar_t>(lineform::kRegistryDataHeading);
inline constexpr auto kRegistryDirectoryHeadingPiece =
    lineform::LinePiece<wchar_t>(lineform::kRegistryDirectoryHeading);
inline constexpr std::wstring_view kInstallationHeading = kInstallationHeadingPiece.View();
inline constexpr std::wstring_view kRegistryDataHeading = kRegistryDataHeadingPiece.View();
// This heading names no path: the location was printed with the data above.
inline constexpr std::wstring_view kRegistryDirectoryHeading = kRegistryDirectoryHeadingPiece.View();

// Under HKEY_LOCAL_MACHINE.
inline constexpr wchar_t kSuiteRegistryKey[] = L"Software\\Orvane Software";

// "<Program Files>\Orvane Software V9"
std::wstring StandardInstallationDirectory(std::wstring_view programFiles);
// "<common application data>\Orvane Software"
std::wstring SharedParametersDirectory(std::wstring_view commonAppData);
// "<common application data>\Orvane Software\Runner"
std::wstring SharedBatchDirectory(std::wstring_view commonAppData);

// "* Current directory (<dir>):\n"
std::wstring FormatCurrentDirectoryHeading(std::wstring_view directory);
// "* Standard installation directory (<dir>):\n"
std::wstring FormatStandardDirectoryHeading(std::wstring_view directory);
// "* Shared parameters directory (<dir>):\n"
std::wstring FormatSharedParametersHeading(std::wstring_view directory);
// "* Shared Batch directory (<dir>):\n"
std::wstring FormatSharedBatchHeading(std::wstring_view directory);

// The registry's location is listed unless it is empty or already listed
// as the standard or the program directory. The comparison is exact: a
// difference of letter case or a trailing separator lists it again.
bool ShouldListRegistryDirectory(std::wstring_view location, std::wstring_view standardDirectory,
                                 std::wstring_view programDirectory);

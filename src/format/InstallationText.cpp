#include "format/InstallationText.h"

namespace {

// The standard directory carries the suite's major version.
constexpr std::wstring_view kSuiteFolderStem = L"\\Orvane Software ";
constexpr std::wstring_view kSuiteVersionFolder = L"V9";
constexpr std::wstring_view kSharedFolder = L"\\Orvane Software";
constexpr std::wstring_view kRunnerFolder = L"\\Runner";

std::wstring Joined(std::wstring_view base, std::wstring_view tail) {
    std::wstring path(base);
    path.append(tail);
    return path;
}

std::wstring Heading(std::wstring_view title, std::wstring_view directory) {
    std::wstring heading(lineform::kDirectoryLead.Wide());
    heading.append(title);
    heading.append(lineform::kDirectoryPathOpen.Wide());
    heading.append(directory);
    heading.append(lineform::kDirectoryPathClose.Wide());
    heading.push_back(L'\n');
    return heading;
}

}  // namespace

std::wstring StandardInstallationDirectory(std::wstring_view programFiles) {
    return Joined(Joined(programFiles, kSuiteFolderStem), kSuiteVersionFolder);
}

std::wstring SharedParametersDirectory(std::wstring_view commonAppData) { return Joined(commonAppData, kSharedFolder); }

std::wstring SharedBatchDirectory(std::wstring_view commonAppData) {
    return Joined(SharedParametersDirectory(commonAppData), kRunnerFolder);
}

std::wstring FormatCurrentDirectoryHeading(std::wstring_view directory) {
    return Heading(lineform::kCurrentDirectory.Wide(), directory);
}

std::wstring FormatStandardDirectoryHeading(std::wstring_view directory) {
    return Heading(lineform::kStandardDirectory.Wide(), directory);
}

std::wstring FormatSharedParametersHeading(std::wstring_view directory) {
    return Heading(lineform::kSharedParametersDirectory.Wide(), directory);
}

std::wstring FormatSharedBatchHeading(std::wstring_view directory) {
    return Heading(lineform::kSharedBatchDirectory.Wide(), directory);
}

bool ShouldListRegistryDirectory(std::wstring_view location, std::wstring_view standardDirectory,
                                 std::wstring_view programDirectory) {
    return !location.empty() && location != standardDirectory && location != programDirectory;
}

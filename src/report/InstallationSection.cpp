#include "report/InstallationSection.h"

#include <windows.h>

#include "report/DirectoryListing.h"
#include "report/InstallationText.h"
#include "report/RegistryData.h"
#include "report/RegistryValueText.h"
#include "w32/Scoped.h"

namespace {

void WriteListing(ReportSink& sink, std::wstring_view heading, const std::wstring& directory,
                  ProductVersionMemo& versions) {
    sink.Append(heading);
    ListDirectory(sink, directory, false, false, &versions);
}

// Appends a line for every value that can be read and returns the
// installation location (empty when there is none).
std::wstring WriteRegistryData(ReportSink& sink) {
    std::wstring location;
    w32::ScopedRegKey key;
    // No view flag: a 64-bit process reads the native view.
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, kSuiteRegistryKey, 0, KEY_READ, key.Put()) != ERROR_SUCCESS)
        return location;
    for (const InstallationValue& value : kInstallationValues) {
        const std::wstring name(value.name);
        const auto data = ReadRegistryData(key.Get(), name.c_str());
        if (!data) continue;
        sink.Append(FormatInstallationValueLine(value, *data));
        if (value.name == kInstallLocationValue) location = RegistryDataAsText(*data);
    }
    return location;
}

}  // namespace

void WriteInstallationSection(ReportSink& sink, const std::wstring& programDirectory, const std::wstring& programFiles,
                              const std::wstring& commonAppData) {
    sink.Append(kInstallationHeading);
    ProductVersionMemo versions;
    WriteListing(sink, FormatCurrentDirectoryHeading(programDirectory), programDirectory, versions);

    const std::wstring standardDirectory = StandardInstallationDirectory(programFiles);
    WriteListing(sink, FormatStandardDirectoryHeading(standardDirectory), standardDirectory, versions);

    sink.Append(kRegistryDataHeading);
    const std::wstring location = WriteRegistryData(sink);
    if (ShouldListRegistryDirectory(location, standardDirectory, programDirectory))
        WriteListing(sink, kRegistryDirectoryHeading, location, versions);

    const std::wstring parametersDirectory = SharedParametersDirectory(commonAppData);
    WriteListing(sink, FormatSharedParametersHeading(parametersDirectory), parametersDirectory, versions);
    const std::wstring batchDirectory = SharedBatchDirectory(commonAppData);
    WriteListing(sink, FormatSharedBatchHeading(batchDirectory), batchDirectory, versions);
}

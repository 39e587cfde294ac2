#include "collect/InstallationCollector.h"

#include <windows.h>

#include <utility>

#include "collect/DirectoryListing.h"
#include "collect/RegistryData.h"
#include "format/InstallationRecord.h"
#include "format/InstallationText.h"
#include "w32/Scoped.h"

std::vector<RegistryValueRecord> ReadInstallationValues() {
    std::vector<RegistryValueRecord> values;
    w32::ScopedRegKey key;
    // No view flag: a 64-bit process reads the native view.
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, kSuiteRegistryKey, 0, KEY_READ, key.Put()) != ERROR_SUCCESS)
        return values;
    for (const InstallationValue& value : kInstallationValues) {
        const std::wstring name(value.name);
        auto data = ReadRegistryData(key.Get(), name.c_str());
        if (data) values.push_back({value, std::move(*data)});
    }
    return values;
}

void WriteInstallationSection(ReportSink& sink, const std::wstring& programDirectory, const std::wstring& programFiles,
                              const std::wstring& commonAppData) {
    const InstallationRecord record =
        MakeInstallationRecord(programDirectory, programFiles, commonAppData, ReadInstallationValues());
    // One memo for the whole section: the program usually runs from the
    // standard directory, which is then listed twice.
    ProductVersionMemo versions;
    SystemDirectoryEntries entries(false, false, &versions);
    RenderInstallationSection(record, entries, sink);
}

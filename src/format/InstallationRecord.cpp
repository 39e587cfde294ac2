#include "format/InstallationRecord.h"

#include <utility>

#include "format/InstallationText.h"

namespace {

void RenderListing(std::wstring_view heading, const std::wstring& directory, DirectoryEntrySource& entries,
                   ReportSink& sink) {
    sink.Append(heading);
    entries.ForEachEntry(directory, [&sink](const DirectoryEntryRecord& entry) { RenderEntryLine(entry, sink); });
}

std::wstring InstallLocationOf(const std::vector<RegistryValueRecord>& values) {
    for (const RegistryValueRecord& value : values) {
        if (value.value.name == kInstallLocationValue) return RegistryDataAsText(value.data);
    }
    return {};
}

}  // namespace

std::wstring RenderAccessList(const AccessListRecord& list) {
    std::wstring text(kAccessListHeading);
    switch (list.state) {
        case AccessListState::kSecurityUnreadable: return text + FormatApiFailure(L"GetFileSecurity", list.errorCode);
        case AccessListState::kDaclUnreadable:
            return text + FormatApiFailure(L"GetSecurityDescriptorDacl", list.errorCode);
        case AccessListState::kNullList: return text + std::wstring(kNullAccessList);
        case AccessListState::kRead: break;
    }
    for (const AccessEntryRecord& entry : list.entries) {
        if (entry.readable)
            text += FormatAccessEntry(entry.kind, entry.account, entry.mask);
        else
            text += kUnreadableAccessEntry;
    }
    return text;
}

std::wstring RenderEntryText(const DirectoryEntryRecord& entry) {
    std::wstring text = FormatEntryHead(entry.attributes, entry.sizeLow);
    text += FormatCalendarTime(entry.created);
    text += L'\t';
    text += FormatCalendarTime(entry.written);
    text += L'\t';
    text += entry.name;
    text += L'\t';
    text += entry.productVersion;
    if (entry.accessList) text += RenderAccessList(*entry.accessList);
    if (entry.content) text += FormatContentPart(entry.content->opened ? entry.content->firstLine : kUnableToOpen);
    return text;
}

void RenderEntryLine(const DirectoryEntryRecord& entry, ReportSink& sink) {
    sink.Append(L"\t" + RenderEntryText(entry) + L"\n");
}

void CollectedEntries::ForEachEntry(const std::wstring& directory, const EntryHandler& handle) {
    const auto found = directories.find(directory);
    if (found == directories.end()) return;
    for (const DirectoryEntryRecord& entry : found->second) handle(entry);
}

InstallationRecord MakeInstallationRecord(std::wstring_view programDirectory, std::wstring_view programFiles,
                                          std::wstring_view commonAppData,
                                          std::vector<RegistryValueRecord> registryValues) {
    InstallationRecord record;
    record.currentDirectory = programDirectory;
    record.standardDirectory = StandardInstallationDirectory(programFiles);
    std::wstring location = InstallLocationOf(registryValues);
    if (ShouldListRegistryDirectory(location, record.standardDirectory, record.currentDirectory))
        record.registryDirectory = std::move(location);
    record.registryValues = std::move(registryValues);
    record.sharedParametersDirectory = SharedParametersDirectory(commonAppData);
    record.sharedBatchDirectory = SharedBatchDirectory(commonAppData);
    return record;
}

void RenderInstallationSection(const InstallationRecord& record, DirectoryEntrySource& entries, ReportSink& sink) {
    sink.Append(kInstallationHeading);
    RenderListing(FormatCurrentDirectoryHeading(record.currentDirectory), record.currentDirectory, entries, sink);
    RenderListing(FormatStandardDirectoryHeading(record.standardDirectory), record.standardDirectory, entries, sink);
    sink.Append(kRegistryDataHeading);
    for (const RegistryValueRecord& value : record.registryValues)
        sink.Append(FormatInstallationValueLine(value.value, value.data));
    if (record.registryDirectory) RenderListing(kRegistryDirectoryHeading, *record.registryDirectory, entries, sink);
    RenderListing(FormatSharedParametersHeading(record.sharedParametersDirectory), record.sharedParametersDirectory,
                  entries, sink);
    RenderListing(FormatSharedBatchHeading(record.sharedBatchDirectory), record.sharedBatchDirectory, entries, sink);
}

// The installation section and its directory listings as plain records and
// pure renderers. The collectors (DirectoryListing.cpp and
// InstallationCollector.cpp) are the only code that asks the system: they fill
// these records, and everything the report shows of them is made here, so
// that every line form is tested on any host.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "format/EntryText.h"
#include "format/RegistryValueText.h"
#include "format/ReportSink.h"

// --- One entry of a directory listing ---------------------------------------

// One entry of an access-control list. An entry that is neither allow nor
// deny carries the account and mask of the nearest allow or deny entry
// before it, since that is the account its line names.
struct AccessEntryRecord {
    bool readable = true;  // false: the entry itself could not be read
    AceKind kind = AceKind::Other;
    std::optional<AccountName> account;  // nothing: no account, or its look-up failed
    std::uint32_t mask = 0;
};

enum class AccessListState {
    kRead,                // the entries, possibly none
    kNullList,            // a null DACL, which allows everyone everything
    kSecurityUnreadable,  // GetFileSecurity failed
    kDaclUnreadable,      // GetSecurityDescriptorDacl failed or found no DACL
};

struct AccessListRecord {
    AccessListState state = AccessListState::kRead;
    std::uint32_t errorCode = 0;  // the last error of the failing call
    std::vector<AccessEntryRecord> entries;
};

struct ContentExcerptRecord {
    bool opened = false;
    // Cleaned by CleanExcerpt and read through the ANSI code page; empty for
    // an empty file. The code page is the system's, so the collector reads it.
    std::wstring firstLine;
};

struct DirectoryEntryRecord {
    std::uint32_t attributes = 0;
    std::uint32_t sizeLow = 0;  // the report never shows the high part
    // Local time as the conversion left the fields (zero where it failed).
    CalendarTime created;
    CalendarTime written;
    std::wstring name;
    std::wstring productVersion;  // normalised; empty when there is none
    std::optional<AccessListRecord> accessList;   // only when the listing takes access lists
    std::optional<ContentExcerptRecord> content;  // only when it takes excerpts, never for "." and ".."
};

// " ACL:" and the entries or the failure.
std::wstring RenderAccessList(const AccessListRecord& list);

// The entry's text, without the leading tab and the line feed.
std::wstring RenderEntryText(const DirectoryEntryRecord& entry);

// Appends "\t" + RenderEntryText(entry) + "\n" as one piece.
void RenderEntryLine(const DirectoryEntryRecord& entry, ReportSink& sink);

// --- Where the entries come from ---------------------------------------------

// Hands over the entries of a directory one at a time, in the order in which
// they are read, so that a large directory is never held whole.
class DirectoryEntrySource {
public:
    using EntryHandler = std::function<void(const DirectoryEntryRecord&)>;
    virtual ~DirectoryEntrySource() = default;
    // Nothing for a directory that cannot be searched.
    virtual void ForEachEntry(const std::wstring& directory, const EntryHandler& handle) = 0;
};

// Entries already collected, by directory path: a directory that is not
// there cannot be searched. For tests and fuzzing.
class CollectedEntries final : public DirectoryEntrySource {
public:
    void ForEachEntry(const std::wstring& directory, const EntryHandler& handle) override;
    std::map<std::wstring, std::vector<DirectoryEntryRecord>, std::less<>> directories;
};

// --- The installation section ----------------------------------------------

// A value of kInstallationValues that could be read, with its raw bytes.
struct RegistryValueRecord {
    InstallationValue value;
    std::vector<std::uint8_t> data;
};

// What the section shows, in its order: the current and the standard
// directory, the registry values, the registry's directory when it is
// listed, and the two shared directories.
struct InstallationRecord {
    std::wstring currentDirectory;
    std::wstring standardDirectory;
    // Those present, in the order of kInstallationValues; none when the key
    // cannot be opened.
    std::vector<RegistryValueRecord> registryValues;
    std::optional<std::wstring> registryDirectory;
    std::wstring sharedParametersDirectory;
    std::wstring sharedBatchDirectory;
};

// The record for the folders of the Windows section and the values read from
// the registry.
InstallationRecord MakeInstallationRecord(std::wstring_view programDirectory, std::wstring_view programFiles,
                                          std::wstring_view commonAppData,
                                          std::vector<RegistryValueRecord> registryValues);

// Appends the section: its heading, then each directory's heading followed
// by one line per entry as `entries` hands them over, with the registry
// heading and its values between the standard and the registry directory.
void RenderInstallationSection(const InstallationRecord& record, DirectoryEntrySource& entries, ReportSink& sink);

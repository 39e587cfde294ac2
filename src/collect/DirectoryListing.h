// Reads the entries of a directory into records (InstallationRecord.h) and
// appends them as report lines through the pure renderer there.
#pragma once

#include <windows.h>

#include <string>
#include <unordered_map>

#include "format/InstallationRecord.h"

class ReportSink;

// The time in the machine's current time zone, as the conversion leaves the
// fields (a failed conversion leaves them zero).
CalendarTime LocalCalendarTime(const FILETIME& time);

// "dd/mm/yyyy  hh:mm:ss" in the machine's current time zone.
std::wstring FormatFileTime(const FILETIME& time);

// The ProductVersion of the file's version resource (block 000004b0, else
// 040904b0), without blanks and with "," turned into "."; empty when none.
std::wstring ReadProductVersion(const std::wstring& path);

// The product versions read during one report. The program usually runs
// from the standard installation directory, which the report then lists
// twice, and the version library is by far the dearest part of an entry:
// remembering its answers reads each file once. A file is read again when
// its size or either of its times differ from those of the first reading.
// Only the library's answers are kept (for files that start as an image
// does), so the memo does not grow with a listing's data files.
class ProductVersionMemo {
public:
    std::wstring Read(const std::wstring& path, const WIN32_FIND_DATAW& entry);

private:
    struct Reading {
        FILETIME created;
        FILETIME written;
        DWORD sizeHigh;
        DWORD sizeLow;
        std::wstring version;
    };
    std::unordered_map<std::wstring, Reading> readings_;
};

// Everything one entry's line shows, read from the system. With a memo, a
// file already read for it is not read again.
DirectoryEntryRecord CollectFileEntry(const std::wstring& directory, const WIN32_FIND_DATAW& entry, bool withAcl,
                                      bool withContent, ProductVersionMemo* memo = nullptr);

// One entry's text, without the leading tab and the line feed.
std::wstring FormatFileEntry(const std::wstring& directory, const WIN32_FIND_DATAW& entry, bool withAcl,
                             bool withContent, ProductVersionMemo* memo = nullptr);

// The access list of a security descriptor.
AccessListRecord ReadAccessListRecord(PSECURITY_DESCRIPTOR descriptor);

// The " ACL:" part of an entry for a security descriptor.
std::wstring FormatAccessList(PSECURITY_DESCRIPTOR descriptor);

// Hands each entry of `directory` to `handle` as soon as it is read ("." and
// ".." included, subdirectories not entered); nothing for a directory that
// cannot be searched. One record is refilled for every entry.
void ForEachFileEntry(const std::wstring& directory, bool withAcl, bool withContent, ProductVersionMemo* memo,
                      const DirectoryEntrySource::EntryHandler& handle);

// Appends "\t" + FormatFileEntry(...) + "\n" for every entry of `directory`.
// A directory that cannot be searched gives no line.
void ListDirectory(ReportSink& sink, const std::wstring& directory, bool withAcl, bool withContent,
                   ProductVersionMemo* memo = nullptr);

// The directories of this machine, read with the options and the memo given.
class SystemDirectoryEntries final : public DirectoryEntrySource {
public:
    SystemDirectoryEntries(bool withAcl, bool withContent, ProductVersionMemo* memo)
        : withAcl_(withAcl), withContent_(withContent), memo_(memo) {}
    void ForEachEntry(const std::wstring& directory, const EntryHandler& handle) override;

private:
    bool withAcl_;
    bool withContent_;
    ProductVersionMemo* memo_;
};

// Turns the entries of a directory into report lines.
#pragma once

#include <windows.h>

#include <string>
#include <unordered_map>

class ReportSink;

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

// One entry's text, without the leading tab and the line feed. With a memo,
// a file already read for it is not read again.
std::wstring FormatFileEntry(const std::wstring& directory, const WIN32_FIND_DATAW& entry, bool withAcl,
                             bool withContent, ProductVersionMemo* memo = nullptr);

// The " ACL:" part of an entry for a security descriptor.
std::wstring FormatAccessList(PSECURITY_DESCRIPTOR descriptor);

// Appends "\t" + FormatFileEntry(...) + "\n" for every entry of `directory`
// ("." and ".." included, subdirectories not entered). A directory that
// cannot be searched gives no line.
void ListDirectory(ReportSink& sink, const std::wstring& directory, bool withAcl, bool withContent,
                   ProductVersionMemo* memo = nullptr);

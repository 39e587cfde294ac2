// Turns the entries of a directory into report lines.
#pragma once

#include <windows.h>

#include <string>

class ReportSink;

// "dd/mm/yyyy  hh:mm:ss" in the machine's current time zone.
std::wstring FormatFileTime(const FILETIME& time);

// The ProductVersion of the file's version resource (block 000004b0, else
// 040904b0), without blanks and with "," turned into "."; empty when none.
std::wstring ReadProductVersion(const std::wstring& path);

// One entry's text, without the leading tab and the line feed.
std::wstring FormatFileEntry(const std::wstring& directory, const WIN32_FIND_DATAW& entry, bool withAcl,
                             bool withContent);

// The " ACL:" part of an entry for a security descriptor.
std::wstring FormatAccessList(PSECURITY_DESCRIPTOR descriptor);

// Appends "\t" + FormatFileEntry(...) + "\n" for every entry of `directory`
// ("." and ".." included, subdirectories not entered). A directory that
// cannot be searched gives no line.
void ListDirectory(ReportSink& sink, const std::wstring& directory, bool withAcl, bool withContent);

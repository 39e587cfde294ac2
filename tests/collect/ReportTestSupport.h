// Helpers of the report tests: a sink that keeps every piece apart, child
// processes with captured output, independent readings of the system, and
// registry values put back as they were.
#pragma once

#include <windows.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "format/ReportSink.h"

// Walks the pieces of a report in order.
class PieceCursor {
public:
    explicit PieceCursor(const std::vector<std::wstring>& pieces) : pieces_(pieces) {}
    // The next piece, or "<end of report>" past the last one.
    std::wstring Next();
    std::wstring Peek() const;
    bool AtEnd() const { return next_ >= pieces_.size(); }
    // The directory listing that follows: every piece that is an entry line
    // ("\t" ... "\n").
    std::vector<std::wstring> TakeEntries();
    // Skips pieces up to and including `piece`; false when it never comes.
    bool SkipPast(std::wstring_view piece);

private:
    const std::vector<std::wstring>& pieces_;
    std::size_t next_ = 0;
};

// One entry line of a directory listing, split at its tabs.
struct ListedEntry {
    unsigned attributes = 0;
    std::wstring name;
    std::wstring version;
};
std::optional<ListedEntry> ParseEntryLine(std::wstring_view line);
std::vector<ListedEntry> ParseEntryLines(const std::vector<std::wstring>& lines);

// The directory of the running test program.
std::wstring TestProgramDirectory();
std::wstring TestProgramPath();
std::wstring EnvironmentValue(const wchar_t* name);

// "a.b.c.d" from the fixed part of a file's version resource: a second
// opinion on the product version that the report reads from its strings.
std::wstring FixedProductVersion(const std::wstring& path);

struct ProcessOutcome {
    bool finished = false;
    DWORD exitCode = 0;
    std::string output;  // what the child wrote to its standard output
};
// Runs `commandLine` to its end (60 s at most); with a token the child runs
// under it.
ProcessOutcome RunProcess(const std::wstring& commandLine, HANDLE token = nullptr);

// Whether wmic can be started here. Newer Windows leaves it out (it is an
// optional feature there); Wine has it. The tests that take its second
// opinion skip without it, saying so with kNoWmic.
bool WmicIsThere();
inline constexpr char kNoWmic[] =
    "wmic is not on this machine (newer Windows leaves it out): no second opinion on what WMI reads";

// The value that "wmic <alias> get <property>" prints: a second opinion on
// what the report's WMI queries read.
std::wstring WmicValue(const std::wstring& alias, const std::wstring& property);
// Every row that "wmic <alias> get <property>" prints, in its order; none
// when wmic could not run.
std::vector<std::wstring> WmicValues(const std::wstring& alias, const std::wstring& property);

// The limited token linked to this (elevated) process's token, or null.
HANDLE OpenLinkedToken();

// Where Windows keeps its product id (HKLM).
inline constexpr wchar_t kWindowsCurrentVersion[] = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion";

// Remembers one registry value and puts it back (or removes it again) when
// destroyed, whatever the test did to it.
class SavedRegistryValue {
public:
    SavedRegistryValue(HKEY root, std::wstring subKey, std::wstring name);
    ~SavedRegistryValue();
    SavedRegistryValue(const SavedRegistryValue&) = delete;
    SavedRegistryValue& operator=(const SavedRegistryValue&) = delete;

    bool Existed() const { return existed_; }
    bool Remove() const;
    bool SetBytes(DWORD type, const std::vector<BYTE>& data) const;
    bool SetString(const std::wstring& text) const;
    bool SetDword(DWORD value) const;

private:
    HKEY root_;
    std::wstring subKey_;
    std::wstring name_;
    bool existed_ = false;
    DWORD type_ = REG_NONE;
    std::vector<BYTE> data_;
};

// Text as the registry stores a string: UTF-16 with its terminator.
std::vector<BYTE> StringBytes(std::wstring_view text);

// Stores `text` as a REG_SZ of exactly its own bytes, with no terminator.
// RegSetValueExW adds the terminator that a caller seems to have forgotten
// when the character after the data is NUL, so a non-NUL guard follows it.
bool SetUnterminatedString(HKEY root, const std::wstring& subKey, const std::wstring& name, std::wstring_view text);
// The size in bytes of a stored value; 0 when there is none.
DWORD StoredValueSize(HKEY root, const std::wstring& subKey, const std::wstring& name);

// The report printer (a child that writes report text, see
// ReportPrinter.cpp) next to the test program, run with `what`.
struct PrintedReport {
    bool ok = false;
    DWORD exitCode = 0;
    std::wstring text;
};
PrintedReport RunReportPrinter(const std::wstring& printerPath, const std::wstring& what, HANDLE token = nullptr);
std::wstring ReportPrinterPath();

// Splits text into lines, each with its "\n".
std::vector<std::wstring> SplitLines(std::wstring_view text);

// One property of one WMI class of the local machine, as text.
#pragma once

#include <functional>
#include <string>

// Reads `propertyName` of every instance of `className` in ROOT\CIMV2 and
// returns the last instance's value; empty on any failure, when there is no
// instance, or when the value is null or not a string. Failures are logged
// with WriteLog, never thrown; only running out of memory for a COM string
// throws w32::ComError(E_OUTOFMEMORY).
std::wstring QueryWmiProperty(std::wstring className, std::wstring propertyName);

// QueryWmiProperty from a thread of any apartment. A thread that has joined a
// single-threaded apartment cannot join the multithreaded one, and the
// window's rich edit control makes the user-interface thread join one; the
// query then runs on a short-lived thread of its own while the caller waits.
std::wstring QueryWmiPropertyFromAnyThread(std::wstring className, std::wstring propertyName);

// The same in another namespace: the report only reads ROOT\CIMV2, tests use
// a missing namespace to see a failed connection.
std::wstring QueryWmiPropertyIn(const std::wstring& wmiNamespace, const std::wstring& className,
                                const std::wstring& propertyName);

// The program's diagnostic log: printf-style, 8-bit, at most 1,023
// characters a message. Each call writes one line, stamped with the local
// time, to the debugger output.
#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
void WriteLog(const char* format, ...);

// Replaces where log lines go (tests capture them); an empty function puts
// the debugger output back. The line passed carries no time stamp.
using LogSink = std::function<void(const std::string& line)>;
void SetLogSink(LogSink sink);

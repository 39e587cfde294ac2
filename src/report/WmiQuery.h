// One property of one WMI class of the local machine, as text.
#pragma once

#include <functional>
#include <string>

// Reads `propertyName` of every instance of `className` in ROOT\CIMV2 and
// returns the last instance's value; empty on any failure, when there is no
// instance, or when the value is null or not a string. Failures are logged
// with WriteLog, never thrown.
std::wstring QueryWmiProperty(std::wstring className, std::wstring propertyName);

// The program's diagnostic log: printf-style, 8-bit. Each call writes one
// line, stamped with the local time, to the debugger output.
void WriteLog(const char* format, ...);

// Replaces where log lines go (tests capture them); an empty function puts
// the debugger output back. The line passed carries no time stamp.
using LogSink = std::function<void(const std::string& line)>;
void SetLogSink(LogSink sink);

// The program's diagnostic log, for failures that do not belong in the
// report text: the WMI queries' and the exceptions that the barriers stop.
#pragma once

#include <functional>
#include <string>

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

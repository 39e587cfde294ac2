#include "w32/Log.h"

#include <windows.h>

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace {
constexpr std::size_t kLogMessageSize = 1024;

LogSink& CurrentLogSink() {
    static LogSink sink;
    return sink;
}
}  // namespace

void WriteLog(const char* format, ...) {
    char message[kLogMessageSize];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(message, sizeof(message), format, arguments);
    va_end(arguments);

    if (const LogSink& sink = CurrentLogSink()) {
        sink(message);
        return;
    }
    SYSTEMTIME now{};
    ::GetLocalTime(&now);
    char line[kLogMessageSize + 64];
    std::snprintf(line, sizeof(line), "%04u-%02u-%02u %02u:%02u:%02u.%03u %s\n", now.wYear, now.wMonth, now.wDay,
                  now.wHour, now.wMinute, now.wSecond, now.wMilliseconds, message);
    ::OutputDebugStringA(line);
}

void SetLogSink(LogSink sink) { CurrentLogSink() = std::move(sink); }

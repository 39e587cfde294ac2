// Angle brackets reach the same headers as quotes.
#include <windows.h>
#include <format/ReportSink.h>

// Angle brackets reach the same headers as quotes.
#include <windows.h>
#include <report/ReportSink.h>

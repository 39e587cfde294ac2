// The program's exit statuses, for scripts that run it.
#pragma once

#include "w32/ExceptionBarrier.h"

inline constexpr int kExitSuccess = 0;             // window closed, help shown, or report written
inline constexpr int kExitInvalidCommandLine = 2;  // unknown option, over-long token, several paths
inline constexpr int kExitCannotWriteReport = 3;   // the report file cannot be opened, written whole or put in place
inline constexpr int kExitReportFailed = 4;        // the local time could not be read: no report
inline constexpr int kExitUnexpectedFailure = w32::kExitUnexpectedException;  // an exception ended the run (logged)

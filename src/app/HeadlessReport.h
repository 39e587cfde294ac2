// The report written straight to a file, without any window: for scripts.
#pragma once

#include <string>

// Generates the report and writes exactly the bytes that Save would write for
// it, piece by piece as it is made, whole or not at all. Never shows a
// message box; on failure says so on the parent's console (when there is
// one) and returns a non-zero exit status.
int WriteHeadlessReport(const std::wstring& path);

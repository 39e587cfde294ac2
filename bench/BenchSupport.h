// What the benchmark programs share: a clock, the peak working set, and the
// one line format that scripts/bench.sh collects.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace bench {

// Milliseconds on the performance counter.
double NowMs();

// PeakWorkingSetSize of a process (this one by default), 0 when unknown.
SIZE_T PeakWorkingSet(HANDLE process = ::GetCurrentProcess());

// One measurement, as a tab-separated line on the standard output:
//   R <benchmark> <case> <run> <quantity> <value>
// run is "w" for a warm-up (kept for the record, left out of the figures).
void Record(std::wstring_view benchmark, std::wstring_view caseName, std::wstring_view run,
            std::wstring_view quantity, double value);
// A free-form note, "N <text>", carried into the results.
void Note(std::wstring_view text);

}  // namespace bench

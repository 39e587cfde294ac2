#include "BenchSupport.h"

#include <psapi.h>

#include <cstdio>
#include <string>

namespace bench {
namespace {
void WriteUtf8(const std::wstring& line) {
    const int size = ::WideCharToMultiByte(CP_UTF8, 0, line.data(), static_cast<int>(line.size()), nullptr, 0,
                                           nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, line.data(), static_cast<int>(line.size()), utf8.data(), size, nullptr,
                          nullptr);
    std::fwrite(utf8.data(), 1, utf8.size(), stdout);
    std::fflush(stdout);
}
}  // namespace

double NowMs() {
    static const double frequency = [] {
        LARGE_INTEGER f{};
        ::QueryPerformanceFrequency(&f);
        return static_cast<double>(f.QuadPart);
    }();
    LARGE_INTEGER now{};
    ::QueryPerformanceCounter(&now);
    return static_cast<double>(now.QuadPart) * 1000.0 / frequency;
}

SIZE_T PeakWorkingSet(HANDLE process) {
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof(counters);
    if (!::GetProcessMemoryInfo(process, &counters, sizeof(counters))) return 0;
    return counters.PeakWorkingSetSize;
}

void Record(std::wstring_view benchmark, std::wstring_view caseName, std::wstring_view run,
            std::wstring_view quantity, double value) {
    wchar_t number[64];
    std::swprintf(number, 64, L"%.6f", value);
    std::wstring line = L"R\t";
    line.append(benchmark).append(L"\t").append(caseName).append(L"\t").append(run).append(L"\t");
    line.append(quantity).append(L"\t").append(number).append(L"\n");
    WriteUtf8(line);
}

void Note(std::wstring_view text) {
    std::wstring line = L"N\t";
    line.append(text).append(L"\n");
    WriteUtf8(line);
}

}  // namespace bench

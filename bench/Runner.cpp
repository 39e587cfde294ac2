// Times whole processes, interleaved: every round starts each case once, in
// the order given (A B C A B C ...), so that drift of a shared machine falls
// on all cases alike.
//
//   bench_runner <benchmark> <warm-up rounds> <rounds> <case> <command line> [<case> <command line>...]
//
// For each start it records "ms" (CreateProcess to the end of the process,
// on the performance counter), "exit" (the exit status) and "peak_ws" (the
// peak working set in bytes; sampled every few milliseconds while the
// process runs when the system cannot give it after the end).
#include <windows.h>

#include <string>
#include <vector>

#include "BenchSupport.h"

namespace {

struct Case {
    std::wstring name;
    std::wstring commandLine;
};

struct Outcome {
    double ms = -1;
    DWORD exitCode = 0xFFFFFFFF;
    SIZE_T peakWorkingSet = 0;
};

HANDLE OpenNul() {
    SECURITY_ATTRIBUTES inherit{sizeof(inherit), nullptr, TRUE};
    return ::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit,
                         OPEN_EXISTING, 0, nullptr);
}

Outcome Start(const Case& c, HANDLE nul, bool sampleMemory) {
    Outcome outcome;
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = nul;
    startup.hStdOutput = nul;
    startup.hStdError = nul;
    PROCESS_INFORMATION process{};
    std::wstring commandLine = c.commandLine;  // CreateProcessW may write to it
    const double start = bench::NowMs();
    if (!::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr, nullptr,
                          &startup, &process)) {
        return outcome;
    }
    SIZE_T sampled = 0;
    if (sampleMemory) {
        while (::WaitForSingleObject(process.hProcess, 2) == WAIT_TIMEOUT) {
            const SIZE_T now = bench::PeakWorkingSet(process.hProcess);
            if (now > sampled) sampled = now;
        }
    } else {
        ::WaitForSingleObject(process.hProcess, INFINITE);
    }
    outcome.ms = bench::NowMs() - start;
    ::GetExitCodeProcess(process.hProcess, &outcome.exitCode);
    const SIZE_T atEnd = bench::PeakWorkingSet(process.hProcess);
    outcome.peakWorkingSet = atEnd > sampled ? atEnd : sampled;
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return outcome;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc < 6 || (argc - 4) % 2 != 0) return 2;
    const std::wstring benchmark = argv[1];
    const int warmups = _wtoi(argv[2]);
    const int rounds = _wtoi(argv[3]);
    std::vector<Case> cases;
    for (int i = 4; i + 1 < argc; i += 2) cases.push_back({argv[i], argv[i + 1]});
    // "memory" in the benchmark's name: a pass that samples the working set
    // (its times are not used).
    const bool sampleMemory = benchmark.find(L"memory") != std::wstring::npos;

    const HANDLE nul = OpenNul();
    for (int round = 0; round < warmups + rounds; ++round) {
        const bool warmup = round < warmups;
        const std::wstring run = warmup ? L"w" : std::to_wstring(round - warmups + 1);
        for (const Case& c : cases) {
            const Outcome outcome = Start(c, nul, sampleMemory);
            bench::Record(benchmark, c.name, run, L"ms", outcome.ms);
            bench::Record(benchmark, c.name, run, L"exit", static_cast<double>(outcome.exitCode));
            bench::Record(benchmark, c.name, run, L"peak_ws", static_cast<double>(outcome.peakWorkingSet));
        }
    }
    ::CloseHandle(nul);
    return 0;
}

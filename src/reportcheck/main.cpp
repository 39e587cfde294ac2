// reportcheck: the support side's tool for saved reports.
//   reportcheck [check] FILE...        integrity: one line per file, in the
//                                      order given; the exit status is that
//                                      of the worst file
//   reportcheck show --json FILE       the whole report as one JSON document
//   reportcheck diff [--json] OLD NEW  what changed from OLD to NEW
//   reportcheck collect PATH...        one JSON line per report (JSON Lines)
// The commands are the table of Commands.h, each in its own file; the
// command line is read by CommandLine.cpp. Output starts only once every
// file it depends on has been read and judged, so a file that is not a report
// never leaves half a JSON document on standard output; every write to it is
// checked, and a failed one ends the command with the trouble status
// (Console.h).

#include <exception>
#include <string>

#include "reportcheck/CommandLine.h"
#include "reportcheck/Console.h"
#include "reportcheck/LoadedReport.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace {

int Run(int argc, NativeChar* argv[]) {
    try {
        const int status = RunCommandLine(argc, argv);
        FlushOutput();
        return status;
    } catch (const OutputFailure& failure) {
        // A full disk, /dev/full: what was written is not all there is, and
        // no verdict stands on it.
        Warn(failure.what());
        return kSomeNotAReport;
    } catch (const std::exception& failure) {
        // Out of memory on a huge file, mostly: say so, and print nothing more.
        Warn(failure.what());
        return kSomeNotAReport;
    } catch (...) {
        // Nothing of ours throws anything else; should a library do so, the
        // user still gets a word and the documented status, not an abort.
        Warn("unexpected failure");
        return kSomeNotAReport;
    }
}

}  // namespace

#if defined(_WIN32)
// wmain: names arrive as UTF-16 whatever the code page, so any file opens.
int wmain(int argc, wchar_t* argv[]) {
    return Run(argc, argv);
}

// The process's entry point, ahead of the runtime library's start-up: every
// library loaded by name from here on comes from the system directory, never
// from beside the program or from the current directory. The static imports
// are Windows' known DLLs only (kernel32, msvcrt).
extern "C" int mainCRTStartup();   // MinGW-w64's start-up for a console program
extern "C" int wmainCRTStartup();  // the Visual C++ runtime's
extern "C" int ReportCheckStartup() {
    ::SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
#if defined(__MINGW32__)
    return mainCRTStartup();
#else
    return wmainCRTStartup();
#endif
}
#else
int main(int argc, char* argv[]) {
    return Run(argc, argv);
}
#endif

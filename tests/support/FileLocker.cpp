// A child process for the tests of files in use: it opens a file for reading
// and writing with no sharing at all, says so, and keeps it open until told
// to let go (or until it is ended).
//
//   file_locker <path> <ready event> <release event>
//
// Exit status: 0 after a release, 1 when the file cannot be opened, 2 on
// wrong arguments.
#include <windows.h>

int wmain(int argc, wchar_t* argv[]) {
    if (argc != 4) return 2;
    const HANDLE file =
        ::CreateFileW(argv[1], GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return 1;
    const HANDLE ready = ::OpenEventW(EVENT_MODIFY_STATE, FALSE, argv[2]);
    const HANDLE release = ::OpenEventW(SYNCHRONIZE, FALSE, argv[3]);
    if (!ready || !release) return 2;
    ::SetEvent(ready);
    ::WaitForSingleObject(release, INFINITE);
    ::CloseHandle(file);
    return 0;
}

// A file held open by another process with no sharing, for as long as the
// object lives: the state a file is in while another program works on it.
// The holder is file_locker.exe, built next to the tests.
#pragma once

#include <windows.h>

#include <string>

#include "w32/Scoped.h"
#include "w32/Text.h"

class LockedFile {
public:
    explicit LockedFile(const std::wstring& path) {
        static unsigned counter = 0;
        const std::wstring stem =
            L"orvane-locker-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(++counter);
        ready_.Reset(::CreateEventW(nullptr, TRUE, FALSE, (stem + L"-ready").c_str()));
        release_.Reset(::CreateEventW(nullptr, TRUE, FALSE, (stem + L"-release").c_str()));
        const std::wstring program = w32::GetModulePath(nullptr);
        const std::wstring locker = program.substr(0, program.find_last_of(L"\\/")) + L"\\file_locker.exe";
        std::wstring commandLine =
            L"\"" + locker + L"\" \"" + path + L"\" " + stem + L"-ready " + stem + L"-release";
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION info{};
        if (!::CreateProcessW(locker.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                              &startup, &info))
            return;
        ::CloseHandle(info.hThread);
        process_.Reset(info.hProcess);
        const HANDLE waits[] = {ready_.Get(), process_.Get()};
        locked_ = ::WaitForMultipleObjects(2, waits, FALSE, 120000) == WAIT_OBJECT_0;
    }
    ~LockedFile() {
        if (!process_) return;
        ::SetEvent(release_.Get());
        if (::WaitForSingleObject(process_.Get(), 10000) != WAIT_OBJECT_0) ::TerminateProcess(process_.Get(), 1);
    }
    LockedFile(const LockedFile&) = delete;
    LockedFile& operator=(const LockedFile&) = delete;

    // True once the other process holds the file.
    bool Locked() const { return locked_; }

private:
    w32::ScopedHandle ready_;
    w32::ScopedHandle release_;
    w32::ScopedHandle process_;
    bool locked_ = false;
};

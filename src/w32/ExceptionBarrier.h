// Exception barriers. Windows does not support an exception unwinding through
// its own frames (user32's message dispatch, the thread start, the C
// runtime's entry point), so every function that Windows calls back (window,
// dialog and subclass procedures, thread entries, the entry point) runs its
// body inside a barrier: whatever it throws is logged with WriteLog and turned
// into a failure that the caller can handle.
#pragma once

#include <exception>
#include <functional>
#include <string>

namespace w32 {

// The exit status of a run that an exception ended.
inline constexpr int kExitUnexpectedException = 5;

// Writes "Unexpected exception in <where>: <what>" to the log, with the
// result code of a w32::ComError. Call it from a catch block only.
void LogCurrentException(const char* where) noexcept;

// Runs `body`; true when it returned, false when it threw (and the exception
// was logged).
template <class Body>
bool RunWithBarrier(const char* where, Body&& body) noexcept {
    try {
        body();
        return true;
    } catch (...) {
        LogCurrentException(where);
        return false;
    }
}

// What a barrier with a user waiting does after logging: by default a
// message box in the interface language. Tests replace it (a message box
// would wait for a click); an empty function puts the message box back.
using FailureNotice = std::function<void(const char* where)>;
void SetFailureNotice(FailureNotice notice);
// Tells the user that the operation in `where` failed; never throws.
void ShowFailureNotice(const char* where) noexcept;

}  // namespace w32

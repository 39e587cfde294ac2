// A COM failure that reaches the caller as an exception: used where a
// failure must stop the operation instead of being reported in the text,
// such as running out of memory while making a COM string.
#pragma once

#include <windows.h>

#include <exception>

namespace w32 {

class ComError : public std::exception {
public:
    explicit ComError(HRESULT code) : code_(code) {}
    HRESULT Code() const { return code_; }
    const char* what() const noexcept override { return "COM operation failed"; }

private:
    HRESULT code_;
};

}  // namespace w32

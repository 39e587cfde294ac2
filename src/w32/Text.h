// Text helpers around Win32 string APIs.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace w32 {

// 8-bit text in the system's ANSI code page to wide text, and back.
std::wstring AnsiToWide(std::string_view text);
std::string WideToAnsi(std::wstring_view text);
// Wide text to UTF-8, for pipes and files read by other tools.
std::string WideToUtf8(std::wstring_view text);

std::wstring GetWindowTextString(HWND hwnd);
std::wstring LoadResourceString(HINSTANCE instance, UINT id);

// The full path of a module's file, whatever its length.
std::wstring GetModulePath(HMODULE module);

}  // namespace w32

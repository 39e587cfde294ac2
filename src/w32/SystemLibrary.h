#pragma once
#include <windows.h>
namespace w32 {
// Loads a library from the system directory only: never from beside the program or the current directory.
HMODULE LoadSystemLibrary(const wchar_t* name);
}

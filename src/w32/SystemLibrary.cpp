#include "w32/SystemLibrary.h"

namespace w32 {

HMODULE LoadSystemLibrary(const wchar_t* name) { return ::LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32); }

}  // namespace w32

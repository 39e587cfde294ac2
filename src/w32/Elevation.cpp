#include "w32/Elevation.h"

#include <windows.h>

#include "w32/Scoped.h"

bool IsProcessElevated() {
    w32::ScopedHandle token;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, token.Put())) return false;
    TOKEN_ELEVATION elevation{};
    DWORD returned = 0;
    if (!::GetTokenInformation(token.Get(), TokenElevation, &elevation, sizeof(elevation), &returned)) return false;
    return elevation.TokenIsElevated != 0;
}

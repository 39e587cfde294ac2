#include "app/Elevation.h"

#include <windows.h>

#include "w32/Scoped.h"

int IsProcessElevated() {
    w32::ScopedHandle token;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, token.Put())) return 0;
    TOKEN_ELEVATION elevation{};
    DWORD returned = 0;
    if (!::GetTokenInformation(token.Get(), TokenElevation, &elevation, sizeof(elevation), &returned)) return 0;
    return static_cast<int>(elevation.TokenIsElevated);
}

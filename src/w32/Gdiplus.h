// GDI+ through its flat API. gdiplus.dll is loaded, from the system
// directory, only when GDI+ is started: a run that never starts it never
// maps the library.
#pragma once

#include <windows.h>

#include <cstdint>
#include <vector>

namespace w32 {

// Pixels with straight (not premultiplied) alpha, 0xAARRGGBB, rows top down.
struct ArgbImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;
};

// Loads gdiplus.dll and starts GDI+. `token` receives GdiplusStartup's token
// (0 when the library is missing). Returns whether GDI+ runs afterwards.
bool StartGdiplus(std::uintptr_t& token);
// Shuts down GDI+ started with `token` and unloads the library.
void StopGdiplus(std::uintptr_t token);
bool IsGdiplusRunning();

// Draws `image` stretched over `target` with GDI+'s high-quality bicubic
// interpolation, blended by its alpha. False when GDI+ does not run or could
// not draw.
bool DrawImageScaled(HDC dc, const RECT& target, const ArgbImage& image);

}  // namespace w32

// The System report button's image, read back from the screen at 96, 120,
// 144 and 192 DPI in each of the button's five states. At 96 DPI the image
// is drawn at its own size, centred, pixel for pixel; on a scaled screen it
// is smoothly stretched over the whole button. Where the image lies is
// checked against a plain nearest-pixel stretch; the exact pixels against
// GDI+ itself, drawing the same image over a button of the same size.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "e2e/Driver.h"
#include "support/Wine.h"
#include "resource.h"
#include "w32/Gdiplus.h"
#include "w32/Scoped.h"

using namespace e2e;

namespace {

constexpr wchar_t kDesktopKey[] = L"Control Panel\\Desktop";
constexpr std::uint32_t kTransparentKey = 0xFF00FF;  // magenta, as the program reads its images

// 0x00RRGGBB pixels, rows top down.
struct Pixels {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> rgb;
    std::uint32_t At(int x, int y) const { return rgb[static_cast<std::size_t>(y) * width + x]; }
};

// Reads the pixels of a 32-bit top-down DIB section.
class DibCanvas {
public:
    DibCanvas(int width, int height) : width_(width), height_(height) {
        BITMAPINFO format{};
        format.bmiHeader.biSize = sizeof(format.bmiHeader);
        format.bmiHeader.biWidth = width;
        format.bmiHeader.biHeight = -height;  // top-down rows
        format.bmiHeader.biPlanes = 1;
        format.bmiHeader.biBitCount = 32;
        format.bmiHeader.biCompression = BI_RGB;
        bitmap_.Reset(::CreateDIBSection(nullptr, &format, DIB_RGB_COLORS, &bits_, nullptr, 0));
    }
    HBITMAP Bitmap() const { return bitmap_.Get(); }
    Pixels Read() const {
        Pixels result{width_, height_, {}};
        const auto* bits = static_cast<const std::uint32_t*>(bits_);
        if (bits) result.rgb.assign(bits, bits + static_cast<std::size_t>(width_) * height_);
        for (std::uint32_t& pixel : result.rgb) pixel &= 0xFFFFFF;
        return result;
    }

private:
    int width_;
    int height_;
    void* bits_ = nullptr;
    w32::ScopedBitmap bitmap_;
};

Pixels ReadScreen(const RECT& area) {
    const int width = area.right - area.left, height = area.bottom - area.top;
    DibCanvas canvas(width, height);
    w32::ScopedWindowDC screen(nullptr);
    w32::ScopedMemoryDC memory(screen.Get());
    {
        w32::ScopedSelect select(memory.Get(), canvas.Bitmap());
        ::BitBlt(memory.Get(), 0, 0, width, height, screen.Get(), area.left, area.top, SRCCOPY);
    }
    return canvas.Read();
}

// The button's image `index` (normal, pressed, focused, disabled, hot) as the
// program's own resources hold it.
Pixels ProgramImage(int index) {
    w32::ScopedModule program(
        ::LoadLibraryExW(ProgramPath().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
    w32::ScopedBitmap image(static_cast<HBITMAP>(::LoadImageW(
        program.Get(), MAKEINTRESOURCEW(IDB_SYSTEM_REPORT + index), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION)));
    BITMAP info{};
    if (!image || !::GetObjectW(image.Get(), sizeof(info), &info)) return {};
    DibCanvas canvas(info.bmWidth, info.bmHeight);
    w32::ScopedMemoryDC memory(nullptr);
    w32::ScopedMemoryDC source(nullptr);
    {
        w32::ScopedSelect selectTarget(memory.Get(), canvas.Bitmap());
        w32::ScopedSelect selectSource(source.Get(), image.Get());
        ::BitBlt(memory.Get(), 0, 0, info.bmWidth, info.bmHeight, source.Get(), 0, 0, SRCCOPY);
    }
    return canvas.Read();
}

std::uint32_t ButtonFace() {
    const COLORREF face = ::GetSysColor(COLOR_BTNFACE);
    return (GetRValue(face) << 16) | (GetGValue(face) << 8) | GetBValue(face);
}

// How the program drew the button before scaling existed: the face, and the
// image at its own size, centred, its magenta left out.
Pixels AtActualSize(const Pixels& image, int width, int height) {
    Pixels result{width, height, std::vector<std::uint32_t>(static_cast<std::size_t>(width) * height, ButtonFace())};
    const int left = (width - image.width) / 2, top = (height - image.height) / 2;
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x) {
            const int tx = left + x, ty = top + y;
            if (tx < 0 || ty < 0 || tx >= width || ty >= height || image.At(x, y) == kTransparentKey) continue;
            result.rgb[static_cast<std::size_t>(ty) * width + tx] = image.At(x, y);
        }
    return result;
}

// The face, and the image stretched over it by GDI+ (started by the test
// itself) as the program asks for it.
Pixels DrawnScaled(const Pixels& image, int width, int height) {
    w32::ArgbImage argb{image.width, image.height, {}};
    for (std::uint32_t pixel : image.rgb) argb.pixels.push_back(pixel == kTransparentKey ? 0u : 0xFF000000u | pixel);
    DibCanvas canvas(width, height);
    w32::ScopedMemoryDC memory(nullptr);
    {
        w32::ScopedSelect select(memory.Get(), canvas.Bitmap());
        const RECT all{0, 0, width, height};
        ::FillRect(memory.Get(), &all, ::GetSysColorBrush(COLOR_BTNFACE));
        if (!w32::DrawImageScaled(memory.Get(), all, argb)) return {};
    }
    ::GdiFlush();
    return canvas.Read();
}

// The image stretched over the whole button, each pixel taken from the
// nearest source pixel: where its picture lies, whatever the smoothing.
Pixels Stretched(const Pixels& image, int width, int height) {
    Pixels result{width, height, {}};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const std::uint32_t pixel = image.At(x * image.width / width, y * image.height / height);
            result.rgb.push_back(pixel == kTransparentKey ? ButtonFace() : pixel);
        }
    return result;
}

// The smallest rectangle holding every pixel that is not the button's face.
RECT ImageBounds(const Pixels& pixels) {
    RECT bounds{pixels.width, pixels.height, 0, 0};
    for (int y = 0; y < pixels.height; ++y)
        for (int x = 0; x < pixels.width; ++x)
            if (pixels.At(x, y) != ButtonFace()) {
                bounds.left = std::min<LONG>(bounds.left, x);
                bounds.top = std::min<LONG>(bounds.top, y);
                bounds.right = std::max<LONG>(bounds.right, x + 1);
                bounds.bottom = std::max<LONG>(bounds.bottom, y + 1);
            }
    return bounds;
}

std::string Describe(const RECT& r) {
    std::ostringstream text;
    text << "(" << r.left << "," << r.top << ")-(" << r.right << "," << r.bottom << ")";
    return text.str();
}

enum Image { kNormal, kPressed, kFocused, kDisabled, kHot, kImageCount };
const char* const kImageNames[] = {"normal", "pressed", "focused", "disabled", "hot"};

// Smooth scaling blends the image's outline with the face: its edge may move
// by up to this many pixels from where the nearest-pixel stretch puts it.
constexpr LONG kEdgeSlack = 2;

class ScreenDpiButton : public testing::TestWithParam<DWORD> {
protected:
    void SetUp() override {
        SKIP_UNLESS_WINE("the screen's DPI is set through the prefix's registry");
        // The test reads the program's windows and the screen in real pixels.
        ::SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE);
        DWORD size = sizeof(savedDpi_);
        hadDpi_ = ::RegGetValueW(HKEY_CURRENT_USER, kDesktopKey, L"LogPixels", RRF_RT_REG_DWORD, nullptr, &savedDpi_,
                                 &size) == ERROR_SUCCESS;
        const DWORD dpi = GetParam();
        ASSERT_EQ(::RegSetKeyValueW(HKEY_CURRENT_USER, kDesktopKey, L"LogPixels", REG_DWORD, &dpi, sizeof(dpi)),
                  ERROR_SUCCESS);
        if (dpi != 96) {
            ASSERT_TRUE(w32::StartGdiplus(gdiplusToken_));
        }
        for (int i = 0; i < kImageCount; ++i) {
            images_[i] = ProgramImage(i);
            ASSERT_GT(images_[i].width, 0) << kImageNames[i];
        }
    }
    void TearDown() override {
        if (!testsupport::RunningUnderWine()) return;  // skipped: the user's own DPI setting stays as it is
        if (w32::IsGdiplusRunning()) w32::StopGdiplus(gdiplusToken_);
        if (hadDpi_)
            ::RegSetKeyValueW(HKEY_CURRENT_USER, kDesktopKey, L"LogPixels", REG_DWORD, &savedDpi_, sizeof(savedDpi_));
        else
            ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kDesktopKey, L"LogPixels");
    }

    // Empty when the button on screen shows `expected` as it should at this
    // DPI; otherwise what is wrong.
    std::string Judge(const Pixels& shot, Image expected) const {
        std::ostringstream problem;
        if (GetParam() == 96) {
            if (shot.rgb == AtActualSize(images_[expected], shot.width, shot.height).rgb) return {};
            problem << kImageNames[expected] << ": pixels differ from the image drawn at its own size";
            for (int other = 0; other < kImageCount; ++other)
                if (shot.rgb == AtActualSize(images_[other], shot.width, shot.height).rgb)
                    problem << "; they show the " << kImageNames[other] << " image";
            return problem.str();
        }
        const RECT want = ImageBounds(Stretched(images_[expected], shot.width, shot.height)), got = ImageBounds(shot);
        if (std::abs(got.left - want.left) > kEdgeSlack || std::abs(got.top - want.top) > kEdgeSlack ||
            std::abs(got.right - want.right) > kEdgeSlack || std::abs(got.bottom - want.bottom) > kEdgeSlack)
            problem << kImageNames[expected] << ": the image covers " << Describe(got) << " of the " << shot.width
                    << "x" << shot.height << " button, stretched over it it covers " << Describe(want) << "; ";
        if (shot.rgb != DrawnScaled(images_[expected], shot.width, shot.height).rgb) {
            problem << kImageNames[expected] << ": pixels differ from the image scaled smoothly over the button";
            for (int other = 0; other < kImageCount; ++other)
                if (shot.rgb == DrawnScaled(images_[other], shot.width, shot.height).rgb)
                    problem << "; they show the " << kImageNames[other] << " image";
        }
        return problem.str();
    }

    // Waits until the button shows `expected`; fails with what it shows.
    void ExpectButtonShows(HWND button, Image expected) const {
        RECT area{};
        ::GetWindowRect(button, &area);
        std::string verdict;
        WaitUntil(
            [&] {
                verdict = Judge(ReadScreen(area), expected);
                return verdict.empty();
            },
            10s);
        EXPECT_EQ(verdict, "") << "at " << GetParam() << " DPI";
    }

    Pixels images_[kImageCount];

private:
    bool hadDpi_ = false;
    DWORD savedDpi_ = 0;
    std::uintptr_t gdiplusToken_ = 0;
};

// A window of the test's own, brought to the front as a click on another
// program would: the program's window loses the focus.
class OtherWindow {
public:
    explicit OtherWindow(POINT at) {
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = ::DefWindowProcW;
        windowClass.hInstance = ::GetModuleHandleW(nullptr);
        windowClass.lpszClassName = L"ScreenDpiButtonOther";
        ::RegisterClassW(&windowClass);
        hwnd_ = ::CreateWindowExW(0, windowClass.lpszClassName, L"", WS_POPUP | WS_VISIBLE, at.x, at.y, 40, 40, nullptr,
                                  nullptr, windowClass.hInstance, nullptr);
        ::SetForegroundWindow(hwnd_);
    }
    ~OtherWindow() { ::DestroyWindow(hwnd_); }
    OtherWindow(const OtherWindow&) = delete;
    OtherWindow& operator=(const OtherWindow&) = delete;
    bool Created() const { return hwnd_ != nullptr; }

private:
    HWND hwnd_ = nullptr;
};

}  // namespace

TEST_P(ScreenDpiButton, ImageFillsTheButtonInEveryState) {
    Program program;
    HWND main = program.WaitForMainWindow();
    ASSERT_NE(main, nullptr);
    HWND button = ::GetDlgItem(main, IDC_SYSTEM_REPORT);
    RECT buttonRect{}, mainRect{};
    ::GetWindowRect(button, &buttonRect);
    ::GetWindowRect(main, &mainRect);
    if (GetParam() > 96) {
        EXPECT_GT(buttonRect.right - buttonRect.left, images_[kNormal].width);
        EXPECT_GT(buttonRect.bottom - buttonRect.top, images_[kNormal].height);
    }
    // The mouse rests beside the main window, off the button.
    const POINT away{mainRect.right + 20, mainRect.top + 20};
    ASSERT_LT(away.x + 40, ::GetSystemMetrics(SM_CXSCREEN));
    ::SetCursorPos(away.x, away.y);

    // The dialog gives its only control the focus.
    ExpectButtonShows(button, kFocused);
    // Under the mouse; in its lower right corner, the tooltip opens beyond the button.
    ::SetCursorPos(buttonRect.right - 2, buttonRect.bottom - 2);
    ExpectButtonShows(button, kHot);
    // Held down.
    ::SendMessageW(button, BM_SETSTATE, TRUE, 0);
    ExpectButtonShows(button, kPressed);
    ::SendMessageW(button, BM_SETSTATE, FALSE, 0);
    ExpectButtonShows(button, kHot);
    // Disabled.
    ::EnableWindow(button, FALSE);
    ExpectButtonShows(button, kDisabled);
    ::EnableWindow(button, TRUE);
    ExpectButtonShows(button, kHot);
    // Neither under the mouse nor focused: another window is in front.
    ::SetCursorPos(away.x, away.y);
    ExpectButtonShows(button, kFocused);
    OtherWindow other(away);
    ASSERT_TRUE(other.Created());
    ExpectButtonShows(button, kNormal);
}

INSTANTIATE_TEST_SUITE_P(Scales, ScreenDpiButton, testing::Values(96, 120, 144, 192),
                         [](const testing::TestParamInfo<DWORD>& info) { return std::to_string(info.param) + "Dpi"; });

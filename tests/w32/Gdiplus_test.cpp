#include "w32/Gdiplus.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cwctype>
#include <string>

#include "w32/Scoped.h"
#include "w32/Text.h"

namespace {

constexpr std::uint32_t kBackground = 0x00102030;

// A 32-bit top-down canvas of one colour, drawn on through a memory DC.
class Canvas {
public:
    Canvas(int width, int height) : width_(width), height_(height), dc_(nullptr) {
        BITMAPINFO format{};
        format.bmiHeader.biSize = sizeof(format.bmiHeader);
        format.bmiHeader.biWidth = width;
        format.bmiHeader.biHeight = -height;
        format.bmiHeader.biPlanes = 1;
        format.bmiHeader.biBitCount = 32;
        format.bmiHeader.biCompression = BI_RGB;
        bitmap_.Reset(::CreateDIBSection(nullptr, &format, DIB_RGB_COLORS, reinterpret_cast<void**>(&bits_), nullptr, 0));
        previous_ = ::SelectObject(dc_.Get(), bitmap_.Get());
        for (int i = 0; i < width * height; ++i) bits_[i] = kBackground;
    }
    ~Canvas() { ::SelectObject(dc_.Get(), previous_); }
    HDC Dc() const { return dc_.Get(); }
    // Every pixel's colour, 0x00RRGGBB.
    std::vector<std::uint32_t> Pixels() const {
        ::GdiFlush();
        std::vector<std::uint32_t> result(bits_, bits_ + width_ * height_);
        for (std::uint32_t& pixel : result) pixel &= 0xFFFFFF;
        return result;
    }

private:
    int width_;
    int height_;
    std::uint32_t* bits_ = nullptr;
    w32::ScopedBitmap bitmap_;
    w32::ScopedMemoryDC dc_;
    HGDIOBJ previous_ = nullptr;
};

std::wstring Lower(std::wstring text) {
    for (wchar_t& c : text) c = static_cast<wchar_t>(std::towlower(c));
    return text;
}

class GdiplusTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(w32::StartGdiplus(token_)); }
    void TearDown() override {
        if (w32::IsGdiplusRunning()) w32::StopGdiplus(token_);
    }
    std::uintptr_t token_ = 0;
};

}  // namespace

TEST_F(GdiplusTest, RunsFromTheSystemDirectoryUntilStopped) {
    EXPECT_TRUE(w32::IsGdiplusRunning());
    EXPECT_NE(token_, 0u);
    HMODULE library = ::GetModuleHandleW(L"gdiplus.dll");
    ASSERT_NE(library, nullptr);
    wchar_t system[MAX_PATH] = {};
    ASSERT_GT(::GetSystemDirectoryW(system, MAX_PATH), 0u);
    EXPECT_EQ(Lower(w32::GetModulePath(library)), Lower(std::wstring(system) + L"\\gdiplus.dll"));

    w32::StopGdiplus(token_);
    EXPECT_FALSE(w32::IsGdiplusRunning());
    Canvas canvas(4, 4);
    const w32::ArgbImage opaque{1, 1, {0xFFFF0000u}};
    EXPECT_FALSE(w32::DrawImageScaled(canvas.Dc(), RECT{0, 0, 4, 4}, opaque));
    EXPECT_EQ(canvas.Pixels(), std::vector<std::uint32_t>(16, kBackground));
}

TEST_F(GdiplusTest, OpaqueImageCoversTheWholeTarget) {
    Canvas canvas(12, 10);
    const w32::ArgbImage green{2, 2, std::vector<std::uint32_t>(4, 0xFF00C000u)};
    ASSERT_TRUE(w32::DrawImageScaled(canvas.Dc(), RECT{0, 0, 12, 10}, green));
    EXPECT_EQ(canvas.Pixels(), std::vector<std::uint32_t>(120, 0x0000C000u));
}

TEST_F(GdiplusTest, TransparentPixelsLeaveWhatIsBehind) {
    Canvas canvas(9, 9);
    const w32::ArgbImage clear{3, 3, std::vector<std::uint32_t>(9, 0x00FF00FFu)};
    ASSERT_TRUE(w32::DrawImageScaled(canvas.Dc(), RECT{0, 0, 9, 9}, clear));
    EXPECT_EQ(canvas.Pixels(), std::vector<std::uint32_t>(81, kBackground));
}

TEST_F(GdiplusTest, DrawsOnlyInsideTheTarget) {
    Canvas canvas(10, 10);
    const w32::ArgbImage white{1, 1, {0xFFFFFFFFu}};
    ASSERT_TRUE(w32::DrawImageScaled(canvas.Dc(), RECT{2, 3, 7, 9}, white));
    std::vector<std::uint32_t> expected(100, kBackground);
    for (int y = 3; y < 9; ++y)
        for (int x = 2; x < 7; ++x) expected[y * 10 + x] = 0xFFFFFF;
    EXPECT_EQ(canvas.Pixels(), expected);
}

TEST_F(GdiplusTest, ImageOfTheWrongSizeIsRefused) {
    Canvas canvas(4, 4);
    const w32::ArgbImage shortOfPixels{2, 2, {0xFFFFFFFFu}};
    EXPECT_FALSE(w32::DrawImageScaled(canvas.Dc(), RECT{0, 0, 4, 4}, shortOfPixels));
    EXPECT_EQ(canvas.Pixels(), std::vector<std::uint32_t>(16, kBackground));
}

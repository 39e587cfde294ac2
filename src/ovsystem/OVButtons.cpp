#include "ovsystem/OVButtons.h"

#include "w32/Application.h"
#include "w32/Gdiplus.h"
#include "w32/Text.h"

namespace {
constexpr COLORREF kTransparentKey = RGB(255, 0, 255);

HINSTANCE ResourceInstance() {
    return w32::CurrentApp() ? w32::CurrentApp()->Instance() : ::GetModuleHandleW(nullptr);
}

// The image's pixels for GDI+, the key colour made fully transparent; empty
// when they cannot be read.
w32::ArgbImage TransparentPixels(HBITMAP image, COLORREF key) {
    BITMAP info{};
    if (!::GetObjectW(image, sizeof(info), &info) || info.bmWidth <= 0 || info.bmHeight <= 0) return {};
    BITMAPINFO format{};
    format.bmiHeader.biSize = sizeof(format.bmiHeader);
    format.bmiHeader.biWidth = info.bmWidth;
    format.bmiHeader.biHeight = -info.bmHeight;  // top-down rows
    format.bmiHeader.biPlanes = 1;
    format.bmiHeader.biBitCount = 32;
    format.bmiHeader.biCompression = BI_RGB;
    w32::ArgbImage result{info.bmWidth, info.bmHeight,
                          std::vector<std::uint32_t>(static_cast<std::size_t>(info.bmWidth) * info.bmHeight)};
    w32::ScopedWindowDC screen(nullptr);
    if (::GetDIBits(screen.Get(), image, 0, info.bmHeight, result.pixels.data(), &format, DIB_RGB_COLORS) !=
        info.bmHeight)
        return {};
    const std::uint32_t keyRgb = (GetRValue(key) << 16) | (GetGValue(key) << 8) | GetBValue(key);
    for (std::uint32_t& pixel : result.pixels) {
        const std::uint32_t rgb = pixel & 0x00FFFFFFu;
        pixel = rgb == keyRgb ? 0u : 0xFF000000u | rgb;
    }
    return result;
}

// The image at its own size, centred, as on a screen at 96 DPI.
void DrawActualSize(HDC dc, const RECT& target, HBITMAP image) {
    BITMAP info{};
    ::GetObjectW(image, sizeof(info), &info);
    const int x = target.left + (target.right - target.left - info.bmWidth) / 2;
    const int y = target.top + (target.bottom - target.top - info.bmHeight) / 2;
    w32::ScopedMemoryDC memory(dc);
    w32::ScopedSelect select(memory.Get(), image);
    ::TransparentBlt(dc, x, y, info.bmWidth, info.bmHeight, memory.Get(), 0, 0, info.bmWidth, info.bmHeight,
                     kTransparentKey);
}
}  // namespace

bool CBitmapButtonWithHot::loadBitmapsRange(UINT firstId, int count) {
    bool all = true;
    for (int i = 0; i < count && i < kImageCount; ++i) {
        images_[i].Reset(static_cast<HBITMAP>(::LoadImageW(ResourceInstance(), MAKEINTRESOURCEW(firstId + i),
                                                           IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION)));
        all = all && images_[i].IsValid();
    }
    if (Hwnd()) ::InvalidateRect(Hwnd(), nullptr, TRUE);
    return all;
}

HBITMAP CBitmapButtonWithHot::ImageFor(UINT state) const {
    auto pick = [this](Image wanted) { return images_[wanted] ? images_[wanted].Get() : images_[kNormal].Get(); };
    if (state & ODS_DISABLED) return pick(kDisabled);
    if (state & ODS_SELECTED) return pick(kPressed);
    if (hot_) return pick(kHot);
    if (state & ODS_FOCUS) return pick(kFocused);
    return pick(kNormal);
}

void CBitmapButtonWithHot::DrawItem(const DRAWITEMSTRUCT& item) {
    ::FillRect(item.hDC, &item.rcItem, ::GetSysColorBrush(COLOR_BTNFACE));
    HBITMAP image = ImageFor(item.itemState);
    if (!image) return;
    // GDI+ runs exactly when the screen is scaled: the button grew with the
    // dialog units, and its image then fills it, smoothly scaled.
    if (w32::IsGdiplusRunning() &&
        w32::DrawImageScaled(item.hDC, item.rcItem, TransparentPixels(image, kTransparentKey)))
        return;
    DrawActualSize(item.hDC, item.rcItem, image);
}

bool CBitmapButtonWithHot::OnControlMessage(UINT message, WPARAM, LPARAM, LRESULT&) {
    if (message == WM_MOUSEMOVE && !hot_) {
        hot_ = true;
        TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, Hwnd(), 0};
        ::TrackMouseEvent(&track);
        ::InvalidateRect(Hwnd(), nullptr, FALSE);
    } else if (message == WM_MOUSELEAVE && hot_) {
        hot_ = false;
        ::InvalidateRect(Hwnd(), nullptr, FALSE);
    }
    return false;
}

void COVRoundRectButton::DrawItem(const DRAWITEMSTRUCT& item) {
    const bool pressed = (item.itemState & ODS_SELECTED) != 0;
    const bool disabled = (item.itemState & ODS_DISABLED) != 0;
    RECT r = item.rcItem;
    ::FillRect(item.hDC, &r, ::GetSysColorBrush(COLOR_BTNFACE));

    const COLORREF face = pressed ? RGB(196, 214, 236) : RGB(236, 242, 250);
    const COLORREF edge = disabled ? ::GetSysColor(COLOR_GRAYTEXT) : RGB(0, 90, 170);
    w32::ScopedBrush brush(::CreateSolidBrush(face));
    w32::ScopedPen pen(::CreatePen(PS_SOLID, 1, edge));
    {
        w32::ScopedSelect selectBrush(item.hDC, brush.Get());
        w32::ScopedSelect selectPen(item.hDC, pen.Get());
        ::RoundRect(item.hDC, r.left, r.top, r.right, r.bottom, 8, 8);
    }

    const std::wstring caption = w32::GetWindowTextString(item.hwndItem);
    HFONT font = reinterpret_cast<HFONT>(::SendMessageW(item.hwndItem, WM_GETFONT, 0, 0));
    w32::ScopedSelect selectFont(item.hDC, font ? static_cast<HGDIOBJ>(font) : ::GetStockObject(DEFAULT_GUI_FONT));
    ::SetBkMode(item.hDC, TRANSPARENT);
    ::SetTextColor(item.hDC, disabled ? ::GetSysColor(COLOR_GRAYTEXT) : RGB(0, 0, 0));
    RECT text = r;
    if (pressed) ::OffsetRect(&text, 1, 1);
    ::DrawTextW(item.hDC, caption.c_str(), static_cast<int>(caption.size()), &text,
                DT_CENTER | DT_VCENTER | DT_SINGLELINE);

    if (item.itemState & ODS_FOCUS) {
        RECT focus = r;
        ::InflateRect(&focus, -3, -3);
        ::DrawFocusRect(item.hDC, &focus);
    }
}

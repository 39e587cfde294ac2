// Owner-drawn buttons of the user-interface library.
#pragma once

#include <windows.h>

#include <array>

#include "w32/Dialog.h"
#include "w32/Scoped.h"

// An image button with a separate image under the mouse. loadBitmapsRange
// takes up to five consecutive bitmaps: normal, pressed, focused, disabled,
// hot. Pure magenta (255, 0, 255) in an image is transparent. At 96 DPI an
// image is drawn at its own size, centred; on a scaled screen (GDI+ running)
// it is stretched over the whole button.
class CBitmapButtonWithHot : public w32::OwnerDrawControl {
public:
    enum Image { kNormal, kPressed, kFocused, kDisabled, kHot, kImageCount };

    bool loadBitmapsRange(UINT firstId, int count);
    void DrawItem(const DRAWITEMSTRUCT& item) override;
    bool IsHot() const { return hot_; }

protected:
    bool OnControlMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) override;

private:
    HBITMAP ImageFor(UINT state) const;
    std::array<w32::ScopedBitmap, kImageCount> images_;
    bool hot_ = false;
};

// A push button drawn with rounded corners, its caption centred.
class COVRoundRectButton : public w32::OwnerDrawControl {
public:
    void DrawItem(const DRAWITEMSTRUCT& item) override;
};

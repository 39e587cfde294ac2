// Stand-in for the maker's base dialog: a dialog whose listed controls move
// or stretch with it when it is resized.
#pragma once

#include <windows.h>

#include <cstdint>
#include <vector>

#include "w32/Dialog.h"

// One row of a resize-policy table; the table ends with {-1, 0xFF}.
struct ResizePolicy {
    std::int32_t id;
    std::uint32_t flags;
};

inline constexpr std::uint32_t kOVMoveX = 0x01;  // follows the right edge
inline constexpr std::uint32_t kOVMoveY = 0x02;  // follows the bottom edge
inline constexpr std::uint32_t kOVGrowX = 0x04;  // stretches with the width
inline constexpr std::uint32_t kOVGrowY = 0x08;  // stretches with the height
inline constexpr ResizePolicy kOVEndOfPolicies{-1, 0xFF};

class OVDialog : public w32::Dialog {
public:
    OVDialog(UINT templateId, HWND parent);

protected:
    bool OnInitDialog() override;
    bool OnSize(UINT type, int width, int height) override;
    bool OnPaint() override;

    // Registers the table (up to its closing row) against the current layout.
    void SetResizePolicies(const ResizePolicy* table);

private:
    struct Anchored {
        HWND control;
        std::uint32_t flags;
        RECT initial;  // in client coordinates
    };
    SIZE initialClient_{};
    std::vector<Anchored> anchored_;
};

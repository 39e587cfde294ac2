#include "ovsystem/OVDialog.h"

#include "w32/Scoped.h"

namespace {
bool IsEndOfTable(const ResizePolicy& row) {
    return row.id == kOVEndOfPolicies.id && row.flags == kOVEndOfPolicies.flags;
}
}  // namespace

OVDialog::OVDialog(UINT templateId, HWND parent) : w32::Dialog(templateId, parent) {}

bool OVDialog::OnInitDialog() {
    RECT client{};
    ::GetClientRect(Hwnd(), &client);
    initialClient_ = {client.right - client.left, client.bottom - client.top};
    return true;
}

void OVDialog::SetResizePolicies(const ResizePolicy* table) {
    anchored_.clear();
    for (const ResizePolicy* row = table; row && !IsEndOfTable(*row); ++row) {
        HWND control = Item(row->id);
        if (!control) continue;
        RECT rect{};
        ::GetWindowRect(control, &rect);
        ::MapWindowPoints(nullptr, Hwnd(), reinterpret_cast<POINT*>(&rect), 2);
        anchored_.push_back({control, row->flags, rect});
    }
}

bool OVDialog::OnSize(UINT type, int width, int height) {
    if (type == SIZE_MINIMIZED || anchored_.empty()) return false;
    const int dx = width - initialClient_.cx;
    const int dy = height - initialClient_.cy;
    for (const Anchored& a : anchored_) {
        RECT r = a.initial;
        if (a.flags & kOVMoveX) ::OffsetRect(&r, dx, 0);
        if (a.flags & kOVMoveY) ::OffsetRect(&r, 0, dy);
        if (a.flags & kOVGrowX) r.right += dx;
        if (a.flags & kOVGrowY) r.bottom += dy;
        ::SetWindowPos(a.control, nullptr, r.left, r.top, r.right - r.left, r.bottom - r.top,
                       SWP_NOZORDER | SWP_NOACTIVATE);
    }
    ::InvalidateRect(Hwnd(), nullptr, TRUE);
    return false;
}

bool OVDialog::OnPaint() {
    w32::ScopedPaint paint(Hwnd());
    return true;
}

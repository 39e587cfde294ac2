#include "ovsystem/OVString.h"

std::wstring MFCStringWithOVString(const OVString& text) { return text.Text(); }

OVString OVStringWithMFCString(std::wstring_view text) { return OVString(std::wstring(text)); }

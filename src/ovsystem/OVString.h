// Stand-in for the maker's string type and its conversions to and from the
// program's own string type (std::wstring).
#pragma once

#include <string>
#include <string_view>

class OVString {
public:
    OVString() = default;
    explicit OVString(std::wstring text) : text_(std::move(text)) {}
    const std::wstring& Text() const { return text_; }
    bool IsEmpty() const { return text_.empty(); }

private:
    std::wstring text_;
};

std::wstring MFCStringWithOVString(const OVString& text);
OVString OVStringWithMFCString(std::wstring_view text);

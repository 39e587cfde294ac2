// The one way report text travels: appended piece by piece, in order, at the
// end. The Diagnostics window's view implements it for the user; tests and
// the headless report implement it with a string.
#pragma once

#include <string>
#include <string_view>

class ReportSink {
public:
    virtual ~ReportSink() = default;
    virtual void Append(std::wstring_view text) = 0;
};

class StringReportSink final : public ReportSink {
public:
    void Append(std::wstring_view text) override { text_.append(text); }
    const std::wstring& Text() const { return text_; }
    void Clear() { text_.clear(); }

private:
    std::wstring text_;
};

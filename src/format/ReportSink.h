// The one way report text travels: appended piece by piece, in order, at the
// end. The Diagnostics window's view implements it for the user; tests and
// the headless report implement it with a string.
#pragma once

#include <string>
#include <string_view>
#include <vector>

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

// Keeps each Append as a piece of its own, so that whoever reads it sees how
// the report was cut as well as what it says.
class RecordingSink final : public ReportSink {
public:
    void Append(std::wstring_view text) override { pieces_.emplace_back(text); }
    const std::vector<std::wstring>& Pieces() const { return pieces_; }
    std::wstring Text() const {
        std::wstring text;
        for (const std::wstring& piece : pieces_) text += piece;
        return text;
    }

private:
    std::vector<std::wstring> pieces_;
};

// The report view stores every line break as a paragraph mark and gives its
// text back with CR LF; the saved body is that text.
#pragma once

#include <string>
#include <string_view>

#include "format/ReportSink.h"

// The text the view gives back after `appended` was written into it: each
// LF, CR and CR LF becomes CR LF.
std::wstring AsViewText(std::wstring_view appended);

// AsViewText for text that arrives in pieces: a CR that ends one piece and
// the LF that starts the next make one break, as they do in the view.
class ViewTextConverter {
public:
    // Appends the view text of `piece` to `out`.
    void Convert(std::wstring_view piece, std::wstring& out);

private:
    bool afterCr_ = false;
};

// Hands on to `next`, piece by piece, what the view would give back for the
// text appended: the headless report has no view and writes the same bytes
// as Save without holding the report whole.
class ViewTextSink final : public ReportSink {
public:
    explicit ViewTextSink(ReportSink& next) : next_(next) {}
    void Append(std::wstring_view text) override;

private:
    ReportSink& next_;
    ViewTextConverter converter_;
    std::wstring converted_;  // reused from piece to piece
};

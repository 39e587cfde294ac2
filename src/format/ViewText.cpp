#include "format/ViewText.h"

std::wstring AsViewText(std::wstring_view appended) {
    std::wstring text;
    text.reserve(appended.size() + appended.size() / 16);
    ViewTextConverter().Convert(appended, text);
    return text;
}

void ViewTextConverter::Convert(std::wstring_view piece, std::wstring& out) {
    for (const wchar_t c : piece) {
        // The LF of a CR LF was written with its CR.
        const bool secondHalfOfCrLf = afterCr_ && c == L'\n';
        afterCr_ = c == L'\r';
        if (secondHalfOfCrLf) continue;
        if (c == L'\r' || c == L'\n')
            out += L"\r\n";
        else
            out.push_back(c);
    }
}

void ViewTextSink::Append(std::wstring_view text) {
    converted_.clear();
    converter_.Convert(text, converted_);
    next_.Append(converted_);
}

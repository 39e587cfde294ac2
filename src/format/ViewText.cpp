#include "format/ViewText.h"

std::wstring AsViewText(std::wstring_view appended) {
    std::wstring text;
    text.reserve(appended.size() + appended.size() / 16);
    for (std::size_t i = 0; i < appended.size(); ++i) {
        const wchar_t c = appended[i];
        if (c == L'\r' || c == L'\n') {
            text += L"\r\n";
            if (c == L'\r' && i + 1 < appended.size() && appended[i + 1] == L'\n') ++i;
        } else {
            text.push_back(c);
        }
    }
    return text;
}

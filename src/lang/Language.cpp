#include "lang/Language.h"

namespace {
bool g_english = true;
}  // namespace

void SetInterfaceLanguage(bool english) { g_english = english; }

bool IsEnglish() { return g_english; }

std::wstring LanguagePartOfLocaleName(std::string_view localeName) {
    const std::size_t underscore = localeName.find('_');
    if (underscore == std::string_view::npos) return {};
    std::wstring part;
    for (char c : localeName.substr(0, underscore)) part.push_back(static_cast<unsigned char>(c));
    return part;
}

bool IsEnglishChoice(std::wstring_view choice) {
    // The runtime's capitals in the "C" locale: only ASCII letters change.
    std::wstring capitals(choice);
    for (wchar_t& c : capitals)
        if (c >= L'a' && c <= L'z') c = static_cast<wchar_t>(c - L'a' + L'A');
    return capitals != L"FRENCH";
}

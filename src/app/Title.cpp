#include "app/Title.h"

#include "lang/Language.h"

namespace {
constexpr Bilingual kAdministratorMark{L" [Administrateur]", L" [Administrator]"};
}

std::wstring ComposeMainTitle(std::wstring_view caption, bool elevated, bool english,
                              std::wstring_view version) {
    std::wstring title(caption);
    if (elevated) title += kAdministratorMark.Pick(english);
    title += L' ';
    title += version;
    title += L" (64 bits)";
    return title;
}

std::wstring TooltipTextFor(std::wstring_view controlText) {
    return std::wstring(controlText.substr(0, kMaxTooltipChars));
}

// Choice of the interface language, made once at start-up.
#pragma once

#include <string>
#include <string_view>

// The language part of a runtime locale name such as "French_France.1252":
// everything before the first "_", or nothing when there is no "_".
std::wstring LanguagePartOfLocaleName(std::string_view localeName);

// True unless the choice, in capital letters, reads "FRENCH".
bool IsEnglishChoice(std::wstring_view choice);

// A user-visible text in both languages, French first.
struct Bilingual {
    const wchar_t* french;
    const wchar_t* english;
    const wchar_t* Pick(bool english_) const { return english_ ? english : french; }
};

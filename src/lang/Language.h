// The interface language: its choice, made once at start-up, and the texts
// that exist in French and English. No project dependencies: every layer
// may ask it.
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

// The interface language of this run. The application settles it once at
// start-up (and keeps its own flag, CDiagnosticsApp::m_bEnglish, with it);
// English until then.
void SetInterfaceLanguage(bool english);
bool IsEnglish();
inline const wchar_t* Tr(const Bilingual& text) { return text.Pick(IsEnglish()); }

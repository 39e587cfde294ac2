// The command-line tokenizer against a second, token-first reading of the
// rules, on any text Windows can hand over.
//
// Input: one byte per character, except 0xFF, which takes the next two bytes
// as one UTF-16 code unit (little-endian). Seeds stay readable text that way,
// and every code unit can still be reached.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "app/CommandLine.h"
#include "FuzzCheck.h"

namespace {

std::wstring Decode(const std::uint8_t* data, std::size_t size) {
    std::wstring text;
    for (std::size_t i = 0; i < size; ++i) {
        if (data[i] == 0xFF && i + 2 < size) {
            text.push_back(static_cast<wchar_t>(data[i + 1] | data[i + 2] << 8));
            i += 2;
        } else {
            text.push_back(static_cast<wchar_t>(data[i]));
        }
    }
    return text;
}

// A raw token: its characters as typed (quotes included) up to an unquoted
// space.
std::vector<std::wstring> RawTokens(const std::wstring& text) {
    std::vector<std::wstring> tokens(1);
    bool quoted = false;
    for (wchar_t c : text) {
        if (c == L' ' && !quoted) {
            tokens.emplace_back();
            continue;
        }
        if (c == L'"') quoted = !quoted;
        tokens.back().push_back(c);
    }
    return tokens;
}

// The rules read token by token: a token may hold 1,022 kept characters and
// nothing after them (a quote counts); its quotes are dropped; an option is
// "/" or "-" and a name; "?" and "h" in any case and "help" in small letters
// are help; every other option is unknown.
CommandLine Reference(const std::wstring& text) {
    CommandLine result;
    for (const std::wstring& raw : RawTokens(text)) {
        std::wstring kept;
        std::size_t charactersAfterTheLimit = 0;
        for (wchar_t c : raw) {
            if (kept.size() == kMaxCommandLineToken) {
                ++charactersAfterTheLimit;
                continue;
            }
            if (c != L'"') kept.push_back(c);
        }
        if (charactersAfterTheLimit > 0) {
            result.invalid = true;
            return result;
        }
        if (kept.empty()) continue;
        if (kept[0] == L'/' || kept[0] == L'-') {
            const std::wstring name = kept.substr(1);
            if (name == L"?" || name == L"h" || name == L"H" || name == L"help")
                result.help = true;
            else
                result.invalid = true;
            continue;
        }
        result.arguments.push_back(kept);
    }
    return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring text = Decode(data, size);
    const CommandLine parsed = ParseCommandLine(text);
    const CommandLine expected = Reference(text);

    FUZZ_CHECK(parsed.invalid == expected.invalid);
    if (!parsed.invalid) {
        // What the program acts on: help, and the arguments in order.
        FUZZ_CHECK(parsed.help == expected.help);
        FUZZ_CHECK(parsed.arguments == expected.arguments);
    }
    for (const std::wstring& argument : parsed.arguments) {
        FUZZ_CHECK(!argument.empty());
        FUZZ_CHECK(argument.size() <= kMaxCommandLineToken);
        FUZZ_CHECK(argument.find(L'"') == std::wstring::npos);
        FUZZ_CHECK(argument[0] != L'/' && argument[0] != L'-');
    }

    // The usage text names whatever the program is called.
    const std::wstring name = parsed.arguments.empty() ? std::wstring(L"OrvaneDiagnostics.exe") : parsed.arguments[0];
    const std::wstring english = UsageText(true, name);
    const std::wstring french = UsageText(false, name);
    FUZZ_CHECK(english.compare(0, 7 + name.size(), L"Usage: " + name) == 0);
    FUZZ_CHECK(french.compare(0, 14 + name.size(), L"Utilisation : " + name) == 0);
    return 0;
}

// A report and the copies of it that mail programs and file transfers make:
// what the transit-damage tests of the format and of reportcheck (Linux and
// Windows builds) diagnose and repair.
#pragma once

#include <string>
#include <string_view>

#include "format/ReportChecksum.h"

namespace transit_fixtures {

inline const std::u16string kBody =
    u"Orvane Software system report on 23/11/2026 19:50:05\r\n\r\nProgram:\r\nin C:\\Outils \u00e9t\u00e9\r\n";

inline std::string Utf8Of(std::u16string_view text) {
    std::string out;
    for (char16_t c : text) {
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | c >> 6);
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {  // no surrogates in the tests' texts
            out += static_cast<char>(0xE0 | c >> 12);
            out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

inline std::u16string Without(std::u16string text, std::u16string_view what) {
    for (std::size_t at; (at = text.find(what)) != std::u16string::npos;) text.erase(at, what.size());
    return text;
}

// The text of a report's bytes (UTF-16LE after the byte-order mark), trailer included.
inline std::u16string TextOf(const std::string& reportBytes) {
    std::u16string text;
    for (std::size_t i = 2; i + 1 < reportBytes.size(); i += 2)
        text += static_cast<char16_t>(static_cast<unsigned char>(reportBytes[i]) |
                                      static_cast<unsigned char>(reportBytes[i + 1]) << 8);
    return text;
}

inline std::string Utf16LittleEndian(std::u16string_view text) {
    std::string bytes = "\xFF\xFE";
    for (char16_t c : text) {
        bytes += static_cast<char>(c & 0xFF);
        bytes += static_cast<char>(c >> 8);
    }
    return bytes;
}

inline std::string AsLatin1(const std::string& report) {
    std::string bytes;
    for (char16_t c : TextOf(report)) bytes += static_cast<char>(c);
    return bytes;
}

inline std::string AsBigEndianUtf16(const std::string& report) {
    std::string bytes = "\xFE\xFF";
    for (char16_t c : TextOf(report)) {
        bytes += static_cast<char>(c >> 8);
        bytes += static_cast<char>(c & 0xFF);
    }
    return bytes;
}

// A transfer that made every CR LF an LF.
inline std::string WithLfLineBreaks(const std::string& report) {
    return Utf16LittleEndian(Without(TextOf(report), u"\r"));
}

// Every LF made CR LF, the trailer's too, and sent as UTF-8.
inline std::string AsUtf8WithCrLfLineBreaks(const std::string& report) {
    std::string bytes;
    for (char16_t c : TextOf(report))
        bytes += c == u'\n' && !bytes.empty() && bytes.back() != '\r' ? "\r\n" : Utf8Of(std::u16string(1, c));
    return bytes;
}

// Sent as UTF-8 by a program that could not encode the first "é" and put
// U+FFFD for it, and one more U+FFFD before the trailer.
inline std::string AsUtf8WithReplacedCharacters(const std::string& report) {
    std::u16string text = TextOf(report);
    text[text.find(u'\u00e9')] = u'\uFFFD';
    const std::size_t trailer = text.find(u"\n--- ");
    return Utf8Of(text.substr(0, trailer)) + "\xEF\xBF\xBD" + Utf8Of(text.substr(trailer));
}

}  // namespace transit_fixtures

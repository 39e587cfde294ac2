#include "reader/TerminalText.h"

#include "format/NumberText.h"

namespace report_model {

namespace {

// `lead` and the byte's two lowercase hex digits: \x1b, \u0085.
void AppendEscaped(std::string& out, const char* lead, unsigned char byte) {
    out += lead;
    out += numtext::Hex<char>(byte, 2, false);
}

// The length of the valid UTF-8 sequence at text[at] (the shortest form, no
// surrogate, at most U+10FFFF), or 0 when the byte there starts none.
std::size_t Utf8SequenceLength(std::string_view text, std::size_t at) {
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byteAt(at);
    std::size_t length;
    unsigned char low = 0x80, high = 0xBF;  // the bounds of the second byte
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0) low = 0xA0;   // no overlong form
        if (lead == 0xED) high = 0x9F;  // no surrogate
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;  // nothing past U+10FFFF
    } else {
        return 0;
    }
    if (at + length > text.size()) return 0;
    if (byteAt(at + 1) < low || byteAt(at + 1) > high) return 0;
    for (std::size_t i = 2; i < length; ++i)
        if (byteAt(at + i) < 0x80 || byteAt(at + i) > 0xBF) return 0;
    return length;
}

bool IsC0OrDel(unsigned char byte) {
    return byte < 0x20 || byte == 0x7F;
}

// U+0080..U+009F are C2 80..C2 9F in UTF-8.
bool IsC1(std::string_view text, std::size_t at, std::size_t length) {
    return length == 2 && static_cast<unsigned char>(text[at]) == 0xC2 &&
           static_cast<unsigned char>(text[at + 1]) <= 0x9F;
}

}  // namespace

void AppendForTerminal(std::string& out, std::string_view text, Tabs tabs) {
    std::size_t plainFrom = 0;  // printable text is copied in runs, not byte by byte
    std::size_t at = 0;
    const auto flushPlain = [&] { out.append(text, plainFrom, at - plainFrom); };
    while (at < text.size()) {
        const auto byte = static_cast<unsigned char>(text[at]);
        const std::size_t length = Utf8SequenceLength(text, at);
        if (length == 1 && (!IsC0OrDel(byte) || (byte == '\t' && tabs == Tabs::Keep))) {
            ++at;
            continue;
        }
        if (length > 1 && !IsC1(text, at, length)) {
            at += length;
            continue;
        }
        flushPlain();
        if (length == 2) {  // a C1 control, shown as the character it is
            AppendEscaped(out, "\\u00", static_cast<unsigned char>(text[at + 1]));
            at += 2;
        } else {  // a C0 control, DEL, or a byte of no valid sequence
            AppendEscaped(out, "\\x", byte);
            ++at;
        }
        plainFrom = at;
    }
    flushPlain();
}

bool IsWellFormedUtf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = Utf8SequenceLength(text, at);
        if (length == 0) return false;
        at += length;
    }
    return true;
}

std::string ForTerminal(std::string_view text, Tabs tabs) {
    std::string out;
    out.reserve(text.size());
    AppendForTerminal(out, text, tabs);
    return out;
}

}  // namespace report_model

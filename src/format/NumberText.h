// Numbers as text for the report's fixed formats. The report's layouts come
// from printf conversions ("%08x", "%10d", "%.2X", ...); these helpers
// produce the same characters for narrow and wide text alike, and behave the
// same where wchar_t is 16 or 32 bits wide.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace numtext {

// The digits of `value`, at least `minDigits` of them (zeros in front).
// Written backwards into a buffer and copied once: these run for every
// entry of a listing and every line of a collected report.
template <typename Ch>
std::basic_string<Ch> Unsigned(std::uint64_t value, unsigned base = 10, bool upper = false, std::size_t minDigits = 1) {
    const char* digits = upper ? "0123456789ABCDEF" : "0123456789abcdef";
    Ch buffer[64];
    Ch* const end = buffer + 64;
    Ch* first = end;
    do {
        *--first = static_cast<Ch>(digits[value % base]);
        value /= base;
    } while (value != 0);
    while (static_cast<std::size_t>(end - first) < minDigits && first > buffer) *--first = static_cast<Ch>('0');
    return std::basic_string<Ch>(first, end);
}

template <typename Ch>
std::basic_string<Ch> Signed(std::int64_t value) {
    // The magnitude is taken unsigned so that the most negative value works.
    const std::uint64_t bits = static_cast<std::uint64_t>(value);
    const std::uint64_t magnitude = value < 0 ? 0 - bits : bits;
    std::basic_string<Ch> text = Unsigned<Ch>(magnitude);
    if (value < 0) text.insert(text.begin(), static_cast<Ch>('-'));
    return text;
}

// Right-aligns `text` in `width` places; longer text is kept whole.
template <typename Ch>
std::basic_string<Ch> PadLeft(std::basic_string<Ch> text, std::size_t width, Ch fill = static_cast<Ch>(' ')) {
    if (text.size() < width) text.insert(text.begin(), width - text.size(), fill);
    return text;
}

// `value` right-aligned in `width` places filled with `fill`, appended to
// `out`: "%10d", or "%08x" with base 16 and '0' (for values that are not
// negative), without a text of their own, as a large listing asks for
// hundreds of thousands.
template <typename Ch>
void AppendPadded(std::basic_string<Ch>& out, std::int64_t value, std::size_t width, Ch fill = static_cast<Ch>(' '),
                  unsigned base = 10) {
    const std::uint64_t bits = static_cast<std::uint64_t>(value);
    std::uint64_t magnitude = value < 0 ? 0 - bits : bits;
    Ch buffer[72];
    Ch* const end = buffer + 72;
    Ch* first = end;
    do {
        *--first = static_cast<Ch>("0123456789abcdef"[magnitude % base]);
        magnitude /= base;
    } while (magnitude != 0);
    if (value < 0) *--first = static_cast<Ch>('-');
    const std::size_t length = static_cast<std::size_t>(end - first);
    if (length < width) out.append(width - length, fill);
    out.append(first, end);
}

template <typename Ch>
std::basic_string<Ch> Hex(std::uint64_t value, std::size_t minDigits, bool upper) {
    return Unsigned<Ch>(value, 16, upper, minDigits);
}

}  // namespace numtext

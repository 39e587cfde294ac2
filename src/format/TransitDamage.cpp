#include "format/TransitDamage.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "format/LineForms.h"
#include "format/ReportChecksum.h"
#include "format/ReportVerdict.h"

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16BigEndianMark = "\xFE\xFF";
constexpr std::u16string_view kTrailerStart = u"\n--- \n";

// A whole UTF-8 text as UTF-16 units; nothing when it is not UTF-8.
std::optional<std::u16string> DecodeUtf8(std::string_view text) {
    std::u16string out;
    for (std::size_t i = 0; i < text.size();) {
        const unsigned char lead = static_cast<unsigned char>(text[i]);
        const std::size_t length = lead < 0x80 ? 1 : (lead >> 5) == 6 ? 2 : (lead >> 4) == 14 ? 3 : (lead >> 3) == 30 ? 4 : 0;
        if (length == 0 || i + length > text.size()) return std::nullopt;
        std::uint32_t c = length == 1 ? lead : lead & (0x7F >> length);
        for (std::size_t k = 1; k < length; ++k) {
            const unsigned char next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0) != 0x80) return std::nullopt;
            c = c << 6 | (next & 0x3F);
        }
        if (c >= 0x10000) {
            out.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(c));
        }
        i += length;
    }
    return out;
}

std::u16string DecodeUtf16(std::string_view bytes, bool bigEndian) {
    std::u16string out(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < out.size(); ++i) {
        const auto first = static_cast<unsigned char>(bytes[2 * i]);
        const auto second = static_cast<unsigned char>(bytes[2 * i + 1]);
        out[i] = static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first);
    }
    return out;
}

std::u16string Replaced(std::u16string_view text, std::u16string_view from, std::u16string_view to) {
    // Its exact room at once: a large text is not copied as it grows.
    std::size_t count = 0;
    for (std::size_t at = text.find(from); at != std::u16string_view::npos; at = text.find(from, at + from.size()))
        ++count;
    std::u16string out;
    out.reserve(text.size() - count * from.size() + count * to.size());
    for (std::size_t at = 0;;) {
        const std::size_t found = text.find(from, at);
        out.append(text.substr(at, found == std::u16string_view::npos ? std::u16string_view::npos : found - at));
        if (found == std::u16string_view::npos) return out;
        out.append(to);
        at = found + from.size();
    }
}

// The file's text as units, with what was undone to get it: the report's
// own encoding read back from what a transfer made of it.
struct Decoded {
    std::u16string text;  // byte-order mark left out
    std::string encoding;  // "" when the file is UTF-16LE as written
};

std::optional<Decoded> DecodeAnyEncoding(std::string_view bytes) {
    if (bytes.substr(0, 2) == "\xFF\xFE") return Decoded{DecodeUtf16(bytes.substr(2), false), ""};
    if (bytes.substr(0, 2) == kUtf16BigEndianMark && bytes.size() % 2 == 0)
        return Decoded{DecodeUtf16(bytes.substr(2), true), "big-endian UTF-16"};
    const std::string_view utf8 = bytes.substr(0, 3) == kUtf8Mark ? bytes.substr(3) : bytes;
    if (auto text = DecodeUtf8(utf8)) return Decoded{std::move(*text), "UTF-8"};
    // Any other single-byte encoding: what the report holds is ASCII but for
    // names, and Latin-1 keeps every byte as the unit of the same number.
    std::u16string latin1(utf8.size(), u'\0');
    std::transform(utf8.begin(), utf8.end(), latin1.begin(),
                   [](char c) { return static_cast<char16_t>(static_cast<unsigned char>(c)); });
    return Decoded{std::move(latin1), "Latin-1 (or another single-byte encoding)"};
}

std::string ReportBytes(std::u16string_view text) {
    std::string bytes = "\xFF\xFE";
    bytes.reserve(2 + 2 * text.size());
    for (char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

bool Intact(std::string_view bytes) {
    return CheckReportBytes(bytes).state == ReportState::Intact;
}

// The text as the writer made it, from one whose line breaks a transfer may
// have converted either way (the trailer's own breaks included): candidate
// 0 is the text as found, 1 the text with LF breaks in the body and in the
// trailer, 2 with CR LF breaks in the body and LF ones in the trailer;
// nothing when there is no such candidate. Made one at a time, as a report
// can be a hundred megabytes.
constexpr int kLineBreakCandidates = 3;
std::optional<std::u16string> LineBreakCandidate(const std::u16string& text, int which) {
    if (which == 0) return text;
    std::u16string lf = Replaced(text, u"\r\n", u"\n");
    const std::size_t trailer = lf.rfind(kTrailerStart);
    if (trailer == std::u16string::npos) return std::nullopt;
    if (which == 1) return lf;
    std::u16string crlf = Replaced(std::u16string_view(lf).substr(0, trailer), u"\n", u"\r\n");
    crlf.append(lf, trailer);
    return crlf;
}

std::size_t CrLfCount(std::u16string_view text) {
    std::size_t count = 0;
    for (std::size_t at = text.find(u"\r\n"); at != std::u16string_view::npos; at = text.find(u"\r\n", at + 2)) ++count;
    return count;
}

// What a transfer did to the breaks of `restored` to make `found`.
std::string LineBreakChange(std::u16string_view found, std::u16string_view restored) {
    const std::size_t before = CrLfCount(restored), after = CrLfCount(found);
    if (after > before) return "line breaks converted from LF to CR LF";
    if (after < before) return "line breaks converted from CR LF to LF";
    return "";
}

std::string JoinDamage(const std::string& encoding, const std::string& breaks) {
    std::string damage;
    if (!encoding.empty()) damage = "re-encoded as " + encoding;
    if (!breaks.empty()) damage += (damage.empty() ? "" : ", ") + breaks;
    return damage;
}

// Whether a text that no longer checks was a report: it opens with the
// report's header or holds the start of a trailer. Of any other file
// nothing is said.
bool WasAReport(std::u16string_view text) {
    const std::string_view lead = lineform::kHeaderLead.Narrow();
    const bool header = text.size() >= lead.size() && std::equal(lead.begin(), lead.end(), text.begin());
    return header || text.find(kTrailerStart) != std::u16string_view::npos;
}

// "truncated after 35 of 36 bytes" when the trailer was begun (its length
// is fixed, so the end it had is known), "truncated after 35 bytes" when it
// is missing altogether; "" when the file ends with a whole trailer.
std::string Truncation(std::string_view bytes, const Decoded& decoded) {
    constexpr std::size_t kTrailerUnits = 15;
    const std::size_t trailer = decoded.text.rfind(kTrailerStart);
    if (trailer == std::u16string::npos) return "truncated after " + std::to_string(bytes.size()) + " bytes";
    if (decoded.text.size() - trailer >= kTrailerUnits) return "";
    const std::string expected = decoded.encoding.empty() ? " of " + std::to_string(2 + 2 * (trailer + kTrailerUnits)) : "";
    return "truncated after " + std::to_string(bytes.size()) + expected + " bytes";
}

// What can be said of a file that nothing restores.
std::string DescribeUnrestorable(std::string_view bytes, const Decoded& decoded) {
    if (!WasAReport(decoded.text)) return "";
    std::vector<std::string> parts;
    if (!decoded.encoding.empty()) parts.push_back("re-encoded as " + decoded.encoding);
    const auto replaced = std::count(decoded.text.begin(), decoded.text.end(), u'\uFFFD');
    if (replaced > 0)
        parts.push_back(std::to_string(replaced) + (replaced == 1 ? " character" : " characters") +
                        " replaced by U+FFFD");
    if (const std::string truncation = Truncation(bytes, decoded); !truncation.empty()) parts.push_back(truncation);
    std::string damage;
    for (const std::string& part : parts) damage += (damage.empty() ? "" : ", ") + part;
    return damage;
}

}  // namespace

TransitDiagnosis DiagnoseTransitDamage(std::string_view bytes) {
    TransitDiagnosis diagnosis;
    if (bytes.empty() || Intact(bytes)) return diagnosis;
    const std::optional<Decoded> decoded = DecodeAnyEncoding(bytes);
    if (!decoded) return diagnosis;
    for (int which = 0; which < kLineBreakCandidates; ++which) {
        if (which == 0 && decoded->encoding.empty()) continue;  // the file as it is
        const std::optional<std::u16string> candidate = LineBreakCandidate(decoded->text, which);
        if (!candidate) break;
        const std::string breaks = LineBreakChange(decoded->text, *candidate);
        if (decoded->encoding.empty() && breaks.empty()) continue;  // the file as it is
        std::string restored = ReportBytes(*candidate);
        if (!Intact(restored)) continue;
        diagnosis.damage = JoinDamage(decoded->encoding, breaks);
        diagnosis.undone = diagnosis.damage;
        diagnosis.restored = std::move(restored);
        return diagnosis;
    }
    diagnosis.damage = DescribeUnrestorable(bytes, *decoded);
    return diagnosis;
}

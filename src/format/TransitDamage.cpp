#include "format/TransitDamage.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "format/LineForms.h"
#include "format/ReportChecksum.h"
#include "format/ReportVerdict.h"

// A report can be a hundred megabytes: the file's text and each candidate
// restoration of it are never made whole. They go by a unit at a time,
// from the file's bytes through the undoing of a line-break conversion, to
// what keeps only counts, a few units and a checksum. Only the restoration
// that checks intact is made again, as bytes, and only when it is asked for.

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16BigEndianMark = "\xFE\xFF";
constexpr std::u16string_view kTrailerStart = u"\n--- \n";
constexpr std::size_t kTrailerUnits = 15;  // "\n--- \n" + 8 digits + "\n"
constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

// How a file's bytes hold the report's text.
enum class Encoding { Utf16LittleEndian, Utf16BigEndian, Utf8, SingleByte };

// What was undone to read it: "" when the file is UTF-16LE as written.
std::string EncodingName(Encoding encoding) {
    switch (encoding) {
        case Encoding::Utf16LittleEndian: return "";
        case Encoding::Utf16BigEndian: return "big-endian UTF-16";
        case Encoding::Utf8: return "UTF-8";
        case Encoding::SingleByte: return "Latin-1 (or another single-byte encoding)";
    }
    return "";
}

unsigned char Byte(char c) { return static_cast<unsigned char>(c); }

// Each unit of a UTF-8 text, in order, to `emit`; false (after some
// units perhaps) when it is not UTF-8.
template <class Emit>
bool DecodeUtf8(std::string_view text, Emit&& emit) {
    for (std::size_t i = 0; i < text.size();) {
        const unsigned char lead = Byte(text[i]);
        const std::size_t length = lead < 0x80 ? 1 : (lead >> 5) == 6 ? 2 : (lead >> 4) == 14 ? 3 : (lead >> 3) == 30 ? 4 : 0;
        if (length == 0 || i + length > text.size()) return false;
        std::uint32_t c = length == 1 ? lead : lead & (0x7F >> length);
        for (std::size_t k = 1; k < length; ++k) {
            const unsigned char next = Byte(text[i + k]);
            if ((next & 0xC0) != 0x80) return false;
            c = c << 6 | (next & 0x3F);
        }
        if (c >= 0x10000) {
            emit(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
            emit(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
        } else {
            emit(static_cast<char16_t>(c));
        }
        i += length;
    }
    return true;
}

// The file's text: its bytes after any byte-order mark, and their encoding,
// the report's own read back from what a transfer made of it.
struct FileText {
    std::string_view bytes;
    Encoding encoding = Encoding::Utf16LittleEndian;
};

FileText ReadAnyEncoding(std::string_view bytes) {
    if (bytes.substr(0, 2) == "\xFF\xFE") return {bytes.substr(2), Encoding::Utf16LittleEndian};
    if (bytes.substr(0, 2) == kUtf16BigEndianMark && bytes.size() % 2 == 0)
        return {bytes.substr(2), Encoding::Utf16BigEndian};
    const std::string_view utf8 = bytes.substr(0, 3) == kUtf8Mark ? bytes.substr(3) : bytes;
    // Any other single-byte encoding: what the report holds is ASCII but for
    // names, and Latin-1 keeps every byte as the unit of the same number.
    const bool isUtf8 = DecodeUtf8(utf8, [](char16_t) {});
    return {utf8, isUtf8 ? Encoding::Utf8 : Encoding::SingleByte};
}

// Each unit of the file's text, in order, to `emit` (an odd last byte of
// UTF-16 left out).
template <class Emit>
void ForEachUnit(const FileText& text, Emit&& emit) {
    const std::string_view bytes = text.bytes;
    switch (text.encoding) {
        case Encoding::Utf16LittleEndian:
            for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
                emit(static_cast<char16_t>(Byte(bytes[i]) | Byte(bytes[i + 1]) << 8));
            return;
        case Encoding::Utf16BigEndian:
            for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
                emit(static_cast<char16_t>(Byte(bytes[i]) << 8 | Byte(bytes[i + 1])));
            return;
        case Encoding::Utf8: DecodeUtf8(bytes, emit); return;
        case Encoding::SingleByte:
            for (char c : bytes) emit(static_cast<char16_t>(Byte(c)));
            return;
    }
}

// Every CR LF made LF again, as the units go by: left to right, so that
// CR CR LF gives CR LF. Finish hands on a CR the text ended with.
template <class Emit>
class CrLfToLf {
public:
    explicit CrLfToLf(Emit& emit) : emit_(emit) {}
    void operator()(char16_t unit) {
        if (pendingCr_) {
            pendingCr_ = false;
            if (unit == u'\n') {
                emit_(u'\n');
                return;
            }
            emit_(u'\r');
        }
        if (unit == u'\r')
            pendingCr_ = true;
        else
            emit_(unit);
    }
    void Finish() {
        if (pendingCr_) emit_(u'\r');
        pendingCr_ = false;
    }

private:
    Emit& emit_;
    bool pendingCr_ = false;
};

// Every LF before unit `end` made CR LF: the body's breaks as the program
// writes them, the trailer's left LF.
template <class Emit>
class LfToCrLfBefore {
public:
    LfToCrLfBefore(Emit& emit, std::size_t end) : emit_(emit), end_(end) {}
    void operator()(char16_t unit) {
        if (unit == u'\n' && position_ < end_) emit_(u'\r');
        emit_(unit);
        ++position_;
    }

private:
    Emit& emit_;
    std::size_t end_;
    std::size_t position_ = 0;
};

// Where the last "\n--- \n" of the units starts, and how many units went by.
class LastTrailerStart {
public:
    void operator()(char16_t unit) {
        window_[count_ % window_.size()] = unit;
        ++count_;
        if (unit == u'\n' && count_ >= window_.size() && Matches()) last_ = count_ - window_.size();
    }
    std::size_t Last() const { return last_; }  // kNotFound when there is none
    std::size_t Count() const { return count_; }

private:
    bool Matches() const {
        for (std::size_t k = 0; k < window_.size(); ++k)
            if (window_[(count_ + k) % window_.size()] != kTrailerStart[k]) return false;
        return true;
    }
    std::array<char16_t, kTrailerStart.size()> window_{};
    std::size_t count_ = 0;
    std::size_t last_ = kNotFound;
};

// How many CR LF pairs the units hold.
class CrLfCount {
public:
    void operator()(char16_t unit) {
        if (lastWasCr_ && unit == u'\n') ++count_;
        lastWasCr_ = unit == u'\r';
    }
    std::size_t Count() const { return count_; }

private:
    std::size_t count_ = 0;
    bool lastWasCr_ = false;
};

// Whether units, as the text after a report's byte-order mark, are an
// intact report: their last 15 are the trailer the checksum of all the
// others gives. Only those 15 are kept; the others are folded as they leave.
class IntactCheck {
public:
    void operator()(char16_t unit) {
        breaks_(unit);
        char16_t& slot = tail_[count_ % kTrailerUnits];
        if (count_ >= kTrailerUnits) checksum_.AddUnit(slot);
        slot = unit;
        ++count_;
    }
    bool Intact() const {
        if (count_ < kTrailerUnits) return false;
        std::u16string trailer(kTrailerUnits, u'\0');
        for (std::size_t k = 0; k < kTrailerUnits; ++k) trailer[k] = tail_[(count_ + k) % kTrailerUnits];
        return trailer == FormatReportTrailer(checksum_.Value());
    }
    std::size_t Count() const { return count_; }
    std::size_t CrLfs() const { return breaks_.Count(); }

private:
    ReportChecksumFold checksum_;
    std::array<char16_t, kTrailerUnits> tail_{};
    std::size_t count_ = 0;
    CrLfCount breaks_;
};

// The text as the writer made it, from one whose line breaks a transfer may
// have converted either way (the trailer's own breaks included): candidate
// 0 is the text as found, 1 the text with LF breaks in the body and in the
// trailer, 2 with CR LF breaks in the body and LF ones in the trailer. The
// last two exist only when the text with LF breaks holds a trailer's start.
constexpr int kLineBreakCandidates = 3;

// Each unit of candidate `which` to `emit`; `lfTrailer` is where the last
// trailer starts in the text with LF breaks.
template <class Emit>
void ForEachCandidateUnit(const FileText& text, int which, std::size_t lfTrailer, Emit&& emit) {
    if (which == 0) {
        ForEachUnit(text, emit);
    } else if (which == 1) {
        CrLfToLf<Emit> lf(emit);
        ForEachUnit(text, lf);
        lf.Finish();
    } else {
        LfToCrLfBefore<Emit> crlf(emit, lfTrailer);
        CrLfToLf<decltype(crlf)> lf(crlf);
        ForEachUnit(text, lf);
        lf.Finish();
    }
}

// What one reading of the file's text tells: of the text as found, and of
// candidates 0 and 1, which need nothing known beforehand.
struct FirstReading {
    LastTrailerStart found;  // also counts the units
    std::size_t foundCrLfs = 0;
    std::size_t replaced = 0;  // U+FFFD
    bool header = true;        // whether it opens with the report's header
    LastTrailerStart lf;       // of the text with LF breaks
    IntactCheck candidate0, candidate1;
};

FirstReading ReadOnce(const FileText& text) {
    FirstReading reading;
    CrLfCount foundBreaks;
    const std::string_view lead = lineform::kHeaderLead.Narrow();
    const auto toLf = [&](char16_t unit) {
        reading.lf(unit);
        reading.candidate1(unit);
    };
    CrLfToLf<decltype(toLf)> lf(toLf);
    ForEachUnit(text, [&](char16_t unit) {
        const std::size_t position = reading.found.Count();
        if (position < lead.size() && unit != lead[position]) reading.header = false;
        if (unit == u'\uFFFD') ++reading.replaced;
        reading.found(unit);
        foundBreaks(unit);
        reading.candidate0(unit);
        lf(unit);
    });
    lf.Finish();
    if (reading.found.Count() < lead.size()) reading.header = false;
    reading.foundCrLfs = foundBreaks.Count();
    return reading;
}

IntactCheck CheckCandidate(const FileText& text, int which, std::size_t lfTrailer) {
    IntactCheck check;
    ForEachCandidateUnit(text, which, lfTrailer, check);
    return check;
}

// The report's bytes of candidate `which`, of `units` units.
std::string ReportBytes(const FileText& text, int which, std::size_t lfTrailer, std::size_t units) {
    std::string bytes = "\xFF\xFE";
    bytes.reserve(2 + 2 * units);
    ForEachCandidateUnit(text, which, lfTrailer, [&](char16_t unit) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    });
    return bytes;
}

bool Intact(std::string_view bytes) {
    return CheckReportBytes(bytes).state == ReportState::Intact;
}

// What a transfer did to the breaks of a restored text to make the one found.
std::string LineBreakChange(std::size_t foundCrLfs, std::size_t restoredCrLfs) {
    if (foundCrLfs > restoredCrLfs) return "line breaks converted from LF to CR LF";
    if (foundCrLfs < restoredCrLfs) return "line breaks converted from CR LF to LF";
    return "";
}

std::string JoinDamage(const std::string& encoding, const std::string& breaks) {
    std::string damage;
    if (!encoding.empty()) damage = "re-encoded as " + encoding;
    if (!breaks.empty()) damage += (damage.empty() ? "" : ", ") + breaks;
    return damage;
}

// "truncated after 35 of 36 bytes" when the trailer was begun (its length
// is fixed, so the end it had is known), "truncated after 35 bytes" when it
// is missing altogether; "" when the file ends with a whole trailer.
std::string Truncation(std::size_t fileBytes, Encoding encoding, const LastTrailerStart& found) {
    const std::size_t trailer = found.Last();
    if (trailer == kNotFound) return "truncated after " + std::to_string(fileBytes) + " bytes";
    if (found.Count() - trailer >= kTrailerUnits) return "";
    const std::string expected =
        encoding == Encoding::Utf16LittleEndian ? " of " + std::to_string(2 + 2 * (trailer + kTrailerUnits)) : "";
    return "truncated after " + std::to_string(fileBytes) + expected + " bytes";
}

// What can be said of a file that nothing restores. Of a text that neither
// opens with the report's header nor holds the start of a trailer nothing
// is said: it was no report.
std::string DescribeUnrestorable(std::size_t fileBytes, Encoding encoding, const FirstReading& reading) {
    if (!reading.header && reading.found.Last() == kNotFound) return "";
    std::vector<std::string> parts;
    if (encoding != Encoding::Utf16LittleEndian) parts.push_back("re-encoded as " + EncodingName(encoding));
    if (reading.replaced > 0)
        parts.push_back(std::to_string(reading.replaced) + (reading.replaced == 1 ? " character" : " characters") +
                        " replaced by U+FFFD");
    if (const std::string truncation = Truncation(fileBytes, encoding, reading.found); !truncation.empty())
        parts.push_back(truncation);
    std::string damage;
    for (const std::string& part : parts) damage += (damage.empty() ? "" : ", ") + part;
    return damage;
}

}  // namespace

TransitDiagnosis DiagnoseTransitDamage(std::string_view bytes, Restore restore) {
    TransitDiagnosis diagnosis;
    if (bytes.empty() || Intact(bytes)) return diagnosis;
    const FileText text = ReadAnyEncoding(bytes);
    const bool asWritten = text.encoding == Encoding::Utf16LittleEndian;
    const FirstReading reading = ReadOnce(text);
    const std::size_t lfTrailer = reading.lf.Last();
    for (int which = 0; which < kLineBreakCandidates; ++which) {
        if (which == 0 && asWritten) continue;  // the file as it is
        if (which > 0 && lfTrailer == kNotFound) break;
        const IntactCheck candidate = which == 0   ? reading.candidate0
                                      : which == 1 ? reading.candidate1
                                                   : CheckCandidate(text, which, lfTrailer);
        const std::string breaks = LineBreakChange(reading.foundCrLfs, candidate.CrLfs());
        if (asWritten && breaks.empty()) continue;  // the file as it is
        if (!candidate.Intact()) continue;
        diagnosis.damage = JoinDamage(EncodingName(text.encoding), breaks);
        diagnosis.undone = diagnosis.damage;
        diagnosis.restorable = true;
        if (restore == Restore::Yes) diagnosis.restored = ReportBytes(text, which, lfTrailer, candidate.Count());
        return diagnosis;
    }
    diagnosis.damage = DescribeUnrestorable(bytes.size(), text.encoding, reading);
    return diagnosis;
}

#include "reader/JsonIndent.h"

#include <utility>

namespace report_model {

namespace {
constexpr int kIndentWidth = 2;
constexpr std::size_t kPieceSize = 64 * 1024;
}  // namespace

JsonIndenter::JsonIndenter(std::function<void(std::string_view)> sink) : sink_(std::move(sink)) {
    piece_.reserve(kPieceSize + 256);
}

void JsonIndenter::Add(std::string_view compact) {
    for (std::size_t at = 0; at < compact.size();) {
        if (inString_) {
            at = CopyString(compact, at);
            continue;
        }
        const char c = compact[at++];
        if (justOpened_) {
            justOpened_ = false;
            if (c == '}' || c == ']') {
                Char(c);
                continue;
            }
            NewLine(++depth_);
        }
        switch (c) {
            case '"':
                Char(c);
                inString_ = true;
                break;
            case '{':
            case '[':
                Char(c);
                justOpened_ = true;
                break;
            case '}':
            case ']':
                NewLine(--depth_);
                Char(c);
                break;
            case ',':
                Char(',');
                NewLine(depth_);
                break;
            case ':':
                Text(": ");
                break;
            default:
                Char(c);
        }
    }
}

// A string's characters from compact[at] on, up to its closing quote or the
// end of the piece; where the next character is to be read.
std::size_t JsonIndenter::CopyString(std::string_view compact, std::size_t at) {
    std::size_t end = at;
    while (end < compact.size() && inString_) {
        const char c = compact[end++];
        if (escaped_)
            escaped_ = false;
        else if (c == '\\')
            escaped_ = true;
        else if (c == '"')
            inString_ = false;
    }
    Text(compact.substr(at, end - at));
    return end;
}

void JsonIndenter::Finish() {
    if (!piece_.empty()) sink_(piece_);
    piece_.clear();
}

void JsonIndenter::Char(char c) {
    piece_ += c;
    FlushIfFull();
}

void JsonIndenter::Text(std::string_view text) {
    piece_ += text;
    FlushIfFull();
}

void JsonIndenter::NewLine(int depth) {
    piece_ += '\n';
    piece_.append(static_cast<std::size_t>(depth * kIndentWidth), ' ');
    FlushIfFull();
}

void JsonIndenter::FlushIfFull() {
    if (piece_.size() >= kPieceSize) Finish();
}

void IndentJson(std::string_view compact, const std::function<void(std::string_view)>& sink) {
    JsonIndenter indenter(sink);
    indenter.Add(compact);
    indenter.Finish();
}

}  // namespace report_model

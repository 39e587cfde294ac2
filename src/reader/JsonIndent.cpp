#include "reader/JsonIndent.h"

#include <string>

namespace report_model {

namespace {

constexpr int kIndentWidth = 2;
constexpr std::size_t kPieceSize = 64 * 1024;

class IndentedOutput {
public:
    explicit IndentedOutput(const std::function<void(std::string_view)>& sink) : sink_(sink) {
        piece_.reserve(kPieceSize + 256);
    }

    void Char(char c) {
        piece_ += c;
        FlushIfFull();
    }
    void Text(std::string_view text) {
        piece_ += text;
        FlushIfFull();
    }
    void NewLine(int depth) {
        piece_ += '\n';
        piece_.append(static_cast<std::size_t>(depth * kIndentWidth), ' ');
        FlushIfFull();
    }
    void Finish() {
        if (!piece_.empty()) sink_(piece_);
        piece_.clear();
    }

private:
    void FlushIfFull() {
        if (piece_.size() >= kPieceSize) Finish();
    }
    const std::function<void(std::string_view)>& sink_;
    std::string piece_;
};

// The end of the string that starts at compact[at] (its opening quote), one
// past its closing quote.
std::size_t StringEnd(std::string_view compact, std::size_t at) {
    for (std::size_t i = at + 1; i < compact.size(); ++i) {
        if (compact[i] == '\\') ++i;
        else if (compact[i] == '"') return i + 1;
    }
    return compact.size();
}

}  // namespace

void IndentJson(std::string_view compact, const std::function<void(std::string_view)>& sink) {
    IndentedOutput out(sink);
    int depth = 0;
    for (std::size_t at = 0; at < compact.size();) {
        const char c = compact[at];
        switch (c) {
            case '"': {
                const std::size_t end = StringEnd(compact, at);
                out.Text(compact.substr(at, end - at));
                at = end;
                continue;
            }
            case '{':
            case '[':
                out.Char(c);
                if (at + 1 < compact.size() && (compact[at + 1] == '}' || compact[at + 1] == ']')) {
                    out.Char(compact[at + 1]);  // an empty object or array stays on its line: {} []
                    at += 2;
                    continue;
                }
                out.NewLine(++depth);
                break;
            case '}':
            case ']':
                out.NewLine(--depth);
                out.Char(c);
                break;
            case ',':
                out.Char(',');
                out.NewLine(depth);
                break;
            case ':':
                out.Text(": ");
                break;
            default:
                out.Char(c);
        }
        ++at;
    }
    out.Finish();
}

}  // namespace report_model

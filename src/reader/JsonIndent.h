// JSON text on one line (JsonWriter's) laid out as DumpJson(json, 2) lays
// out the same values, without a tree: `show --json` of a large report
// writes its document as it is made, never holding it whole.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace report_model {

// Takes the one-line text in pieces cut anywhere, and gives the indented
// text to `sink` in pieces of some kilobytes, in order.
class JsonIndenter {
public:
    explicit JsonIndenter(std::function<void(std::string_view)> sink);
    void Add(std::string_view compact);
    void Finish();  // gives what is left

private:
    std::size_t CopyString(std::string_view compact, std::size_t at);
    void Char(char c);
    void Text(std::string_view text);
    void NewLine(int depth);
    void FlushIfFull();

    std::function<void(std::string_view)> sink_;
    std::string piece_;
    int depth_ = 0;
    bool inString_ = false, escaped_ = false;
    bool justOpened_ = false;  // an opening bracket came last: an empty {} or [] stays on its line
};

// The whole text at once.
void IndentJson(std::string_view compact, const std::function<void(std::string_view)>& sink);

}  // namespace report_model

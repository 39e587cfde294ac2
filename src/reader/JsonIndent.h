// JSON text on one line (JsonWriter's) laid out as DumpJson(json, 2) lays
// out the same values, without a tree: `show --json` of a large report holds
// the text once, not a tree of it and a second text.
#pragma once

#include <functional>
#include <string_view>

namespace report_model {

// Gives the indented text to `sink` in pieces of some kilobytes, in order.
void IndentJson(std::string_view compact, const std::function<void(std::string_view)>& sink);

}  // namespace report_model

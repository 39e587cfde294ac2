// The report view stores every line break as a paragraph mark and gives its
// text back with CR LF; the saved body is that text.
#pragma once

#include <string>
#include <string_view>

// The text the view gives back after `appended` was written into it: each
// LF, CR and CR LF becomes CR LF.
std::wstring AsViewText(std::wstring_view appended);

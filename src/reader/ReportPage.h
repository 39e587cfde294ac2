// The report page as one HTML file: the template, its style sheet and script
// (embedded in reportcheck at build time from src/reader/page/) and the
// page's data. Nothing on the page comes from elsewhere, and its own
// Content-Security-Policy allows nothing else: no request, no other script.
#pragma once

#include <string>
#include <string_view>

namespace report_page {

// The whole page for a data document of PageData.h; `lang` "en" or "fr".
std::string BuildPageHtml(std::string_view dataJson, std::string_view lang);

// The JSON text made safe inside a <script> element: no "<", ">" or "&"
// remains (each becomes its \u escape, which JSON reads back the same), so
// that no text of a report can close the element or open a comment.
std::string ScriptSafeJson(std::string_view json);

// The policy the page carries, naming its style sheet and script by hash.
std::string PagePolicy();

}  // namespace report_page

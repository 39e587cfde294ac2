#include "reader/ReportPage.h"

#include <utility>

#include "PageAssets.h"

namespace report_page {

std::string ScriptSafeJson(std::string_view json) {
    std::string safe;
    safe.reserve(json.size() + json.size() / 16);
    for (char c : json) {
        switch (c) {
            case '<': safe += "\\u003c"; break;
            case '>': safe += "\\u003e"; break;
            case '&': safe += "\\u0026"; break;
            default: safe += c;
        }
    }
    return safe;
}

std::string PagePolicy() {
    return "default-src 'none'; script-src '" + std::string(assets::jsHash) + "'; style-src '" +
           std::string(assets::cssHash) + "'; img-src 'none'; base-uri 'none'; form-action 'none'";
}

std::string BuildPageHtml(std::string_view dataJson, std::string_view lang) {
    const std::string policy = PagePolicy();
    const std::string data = ScriptSafeJson(dataJson);
    const std::pair<std::string_view, std::string_view> fills[] = {
        {"{{lang}}", lang}, {"{{policy}}", policy}, {"{{style}}", assets::css},
        {"{{script}}", assets::js}, {"{{data}}", data},
    };
    // Marks are looked for in the template only, never in what fills them.
    const std::string_view page = assets::html;
    std::string whole;
    whole.reserve(page.size() + data.size() + assets::css.size() + assets::js.size() + policy.size());
    std::size_t done = 0;
    for (std::size_t at = page.find("{{"); at != std::string_view::npos; at = page.find("{{", at + 2)) {
        for (const auto& [mark, value] : fills) {
            if (page.compare(at, mark.size(), mark) != 0) continue;
            whole.append(page.substr(done, at - done));
            whole.append(value);
            done = at + mark.size();
        }
    }
    whole.append(page.substr(done));
    return whole;
}

}  // namespace report_page

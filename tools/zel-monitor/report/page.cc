#include "report/page.h"

#include "report/page_template.h"

namespace zel_monitor {
namespace {

/// JSON that may stand inside a script element: no text in it can end the element.
std::string scriptText(const nlohmann::ordered_json& data) {
    std::string text = data.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    for (size_t at = text.find('<'); at != std::string::npos; at = text.find('<', at)) {
        text.replace(at, 1, "\\u003c");
    }
    return text;
}

}  // namespace

bool hasPage() {
    return !pageTemplate().empty();
}

std::string pageHtml(const nlohmann::ordered_json& data) {
    std::string html;
    for (const std::string_view piece : pageTemplate()) {
        html += piece;
    }
    return html.replace(html.find(kPageDataMark), kPageDataMark.size(), scriptText(data));
}

}  // namespace zel_monitor

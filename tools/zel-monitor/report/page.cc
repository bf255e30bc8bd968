#include "report/page.h"

#include <zel/events/kinds.h>

#include <fmt/format.h>

#include "report/container_name.h"
#include "report/page_template.h"

namespace zel_monitor {

using Json = nlohmann::ordered_json;

namespace {

/// What a person calls the containers of the inputs, by FFmpeg's names.
Json containersJson(const Json& inputs) {
    Json containers = Json::object();
    for (const Json& input : inputs) {
        if (const Json& container = input.at("stream").at("container"); container.is_string()) {
            containers[container.get<std::string>()] = containerName(container.get<std::string>());
        }
    }
    return containers;
}

}  // namespace

std::string dataElement(std::string_view id, const Json& data) {
    std::string text = data.dump(-1, ' ', false, Json::error_handler_t::replace);
    for (size_t at = text.find('<'); at != std::string::npos; at = text.find('<', at)) {
        text.replace(at, 1, "\\u003c");
    }
    return fmt::format("<script id=\"{}\" type=\"application/json\">{}</script>\n", id, text);
}

Json kindsJson() {
    Json kinds = Json::array();
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        kinds.push_back({{"name", info.name},
                         {"colour", info.colour},
                         {"source", nameOf(info.source)},
                         {"unit", info.unit},
                         {"meaning", info.meaning}});
    }
    return kinds;
}

bool hasPage() {
    return !pageTemplate().empty();
}

std::string pageHtml(const Json& data) {
    // A record per element: the page takes apart only those that it shows.
    const Json& report = data.at("report");
    std::string elements = dataElement(
        "data",
        {{"report", report}, {"kinds", kindsJson()}, {"containers", containersJson(report.at("inputs"))}});
    const Json& records = data.at("records");
    for (size_t i = 0; i < records.size(); ++i) {
        elements += dataElement(fmt::format("record-{}", i), records[i]);
    }
    std::string html;
    for (const std::string_view piece : pageTemplate()) {
        html += piece;
    }
    return html.replace(html.find(kPageDataMark), kPageDataMark.size(), elements);
}

}  // namespace zel_monitor

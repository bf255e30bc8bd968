#include "archive/index_page.h"

#include <utility>

#include "archive/archive_json.h"
#include "report/page.h"
#include "report/report_json.h"

namespace zel_monitor {

using Json = nlohmann::ordered_json;

std::string indexHtml(const Archive& archive, const std::string& store,
                      const std::map<size_t, std::string>& pages) {
    Json addresses = Json::object();
    for (const auto& [number, address] : pages) {
        addresses[std::to_string(number)] = address;
    }
    const std::string data = dataElement("data", {{"report", archiveJson(archive)},
                                                  {"kinds", kindsJson()},
                                                  {"pages", std::move(addresses)},
                                                  {"store", store}});
    std::string html(indexTemplate());
    return html.replace(html.find(kArchiveDataMark), kArchiveDataMark.size(), data);
}

std::string filePageHtml(const Archive& archive, const ArchivedInput& input) {
    ScanSettings settings = input.missing ? ScanSettings{} : archive.settings.at(input.settings).settings;
    settings.policy = input.policy;
    return pageHtml(
        {{"report", reportJson({input.report}, settings, exitStatus({input.report}, input.policy))},
         {"records", Json::array({nullptr})}});
}

}  // namespace zel_monitor

#include "report/stored/stored_report.h"

#include <exception>

#include "report/report_json.h"
#include "report/report_reader.h"

namespace zel_monitor {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kFormat = "zel-stored-report";
constexpr int kVersion = 1;  // grows when what an older one holds would be misread

template <typename T>
Json orNull(const std::optional<T>& value) {
    return value ? Json(*value) : Json(nullptr);
}

template <typename T>
std::optional<T> valueOf(const Json& json) {
    return json.is_null() ? std::nullopt : std::optional(json.get<T>());
}

}  // namespace

std::string storedText(const StoredReport& stored, const ScanSettings& settings) {
    return jsonText(
        {{"format", kFormat},
         {"version", kVersion},
         {"tool", {{"name", "zel-monitor"}, {"version", stored.tool_version}}},
         {"source",
          {{"path", stored.path},
           {"bytes", orNull(stored.state.bytes)},
           {"modified_ns", orNull(stored.state.modified_ns)},
           {"sha256", orNull(stored.state.sha256)}}},
         {"made",
          {{"at", stored.made.at}, {"took_s", numberJson(stored.made.took_s)}, {"host", stored.made.host}}},
         {"attempts", stored.attempts},
         {"settings", stored.settings},
         {"report", inputJson(stored.report, settings)}},
        false);
}

std::optional<StoredReport> storedReportFrom(std::string_view text) {
    try {
        const Json json = Json::parse(text);
        if (json.at("format") != kFormat || json.at("version") != kVersion) {
            return std::nullopt;
        }
        (void)settingsFrom(json.at("settings"));  // which must be known to whoever judges by them
        const Json& source = json.at("source");
        const Json& made = json.at("made");
        return StoredReport{.path = source.at("path").get<std::string>(),
                            .state = {.bytes = valueOf<uint64_t>(source.at("bytes")),
                                      .modified_ns = valueOf<int64_t>(source.at("modified_ns")),
                                      .sha256 = valueOf<std::string>(source.at("sha256"))},
                            .tool_version = json.at("tool").at("version").get<std::string>(),
                            .settings = json.at("settings"),
                            .made = {.at = made.at("at").get<std::string>(),
                                     .took_s = made.at("took_s").get<double>(),
                                     .host = made.at("host").get<std::string>()},
                            .attempts = json.at("attempts").get<int>(),
                            .report = inputReportFrom(json.at("report"))};
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::string_view toolVersion() {
    return ZEL_VERSION;
}

bool settingsDoFor(const Json& stored, const Json& wanted) {
    const auto essence = [](Json settings) {
        settings["fail_on"] = nullptr;
        settings["survey"] = nullptr;
        return settings;
    };
    const bool is_enough = wanted.at("survey") == true || stored.at("survey") == false;
    return is_enough && essence(stored) == essence(wanted);
}

}  // namespace zel_monitor

#include "archive/archive_json.h"

#include <utility>

#include "report/report_json.h"

namespace zel_monitor {
namespace {

using Json = nlohmann::ordered_json;

Json summaryJson(const Summary& summary) {
    Json kinds = Json::object();
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        const Summary::Kind& mine = summary.kinds[indexOf(info.kind)];
        if (mine.events > 0) {
            kinds[std::string(info.name)] = {{"inputs", mine.inputs},
                                             {"events", mine.events},
                                             {"total_s", numberJson(mine.total_s)},
                                             {"longest_s", numberJson(mine.longest_s)}};
        }
    }
    return {{"inputs", summary.inputs},
            {"missing", summary.missing},
            {"incomplete", summary.incomplete},
            {"passed", summary.passed},
            {"failed", summary.failed},
            {"surveyed", summary.surveyed},
            {"deserve_scan", summary.deserve_scan},
            {"analysed_s", numberJson(summary.analysed_s)},
            {"fault_s", numberJson(summary.fault_s)},
            {"kinds", std::move(kinds)}};
}

Json archivedJson(const ArchivedInput& input) {
    Json kinds = Json::object();
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        const Totals& mine = input.totals[indexOf(info.kind)];
        if (mine.events > 0) {
            kinds[std::string(info.name)] = {{"events", mine.events},
                                             {"total_s", numberJson(mine.total_s)},
                                             {"longest_s", numberJson(mine.longest_s)},
                                             {"first_at_s", numberJson(mine.first_at_s.value_or(0.0))}};
        }
    }
    return {{"input", input.report.facts.input},
            {"missing", input.missing},
            {"complete", !input.report.problem},
            {"problem", problemJson(input.report)},
            {"verdict", verdictJson(input.report, input.policy)},
            {"violations", violations(input.report, input.policy)},
            {"survey", input.report.survey.has_value()},
            {"deserves_scan", deservesScan(input.report)},
            {"settings", input.missing ? Json(nullptr) : Json(input.settings)},
            {"analysed_s", numberJson(input.report.length_s)},
            {"fault_s", numberJson(input.fault_s)},
            {"kinds", std::move(kinds)}};
}

}  // namespace

Json archiveJson(const Archive& archive) {
    const Summary summary = summaryOf(archive);
    Json settings = Json::array();
    for (const UsedSettings& used : archive.settings) {
        settings.push_back(
            {{"tool_version", used.tool_version}, {"inputs", used.inputs}, {"settings", used.json}});
    }
    Json folders = Json::array();
    for (const Folder& folder : foldersOf(archive)) {
        Json json = {{"folder", folder.name}};
        json.update(summaryJson(folder.summary));
        folders.push_back(std::move(json));
    }
    Json inputs = Json::array();
    for (const ArchivedInput& input : archive.inputs) {
        inputs.push_back(archivedJson(input));
    }
    return {{"format", "zel-archive-report"},
            {"version", kArchiveVersion},
            {"tool", toolJson()},
            {"settings", std::move(settings)},
            {"exit_status", exitStatusOf(summary)},
            {"totals", summaryJson(summary)},
            {"folders", std::move(folders)},
            {"inputs", std::move(inputs)}};
}

}  // namespace zel_monitor

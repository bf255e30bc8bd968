#include "scan/stored_scans.h"

#include <array>
#include <chrono>
#include <unistd.h>
#include <utility>

#include "cli/file_list.h"
#include "cli/time_text.h"
#include "report/report_json.h"

namespace zel_monitor {
namespace {

std::string hostName() {
    std::array<char, 256> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

}  // namespace

StoredScans::StoredScans(const StoreOptions& options, const ScanSettings& settings)
    : options_(options),
      settings_(settings),
      settings_json_(settingsJson(settings)),
      host_(hostName()),
      store_(Store::writable(options.folder)) {}

StoredScans::Known StoredScans::look(const std::string& input) const {
    Known known{.path = absoluteName(input), .state = stateOf(input), .report = {}};
    if (std::optional<StoredReport> stored = store_.find(known.path)) {
        known.failed_attempts = stored->report.problem ? stored->attempts : 0;
        known.is_stored_whole = stored->state.bytes && !stored->report.problem;
        if (isGood(*stored, known, input)) {
            nlohmann::ordered_json settings = settings_json_;
            settings["survey"] = stored->settings.at("survey");
            const bool is_judged_otherwise = stored->settings != settings;
            if (is_judged_otherwise || stored->state != known.state) {
                stored->settings = std::move(settings);
                stored->state = known.state;
                stored->path = known.path;
                put(*stored);
            }
            known.report = std::move(stored->report);
            known.report->facts.input = input;
        }
    }
    if (!known.report && options_.by_content && !known.state.sha256) {
        known.state.sha256 = sha256OfFile(input);
    }
    return known;
}

/// Whether nothing would come of another scan.
bool StoredScans::isGood(const StoredReport& stored, Known& known, const std::string& input) const {
    const InputReport& report = stored.report;
    const bool is_tried_again = report.problem && (options_.retry_failed || report.may_pass_later);
    return !options_.rescan && !is_tried_again && stored.tool_version == toolVersion() &&
           settingsDoFor(stored.settings, settings_json_) && isSame(stored.state, known.state, input);
}

/// Whether the file is what it was. Fills in the hash of its content where that tells.
bool StoredScans::isSame(const FileState& stored, FileState& now, const std::string& input) const {
    if (stored.bytes == now.bytes && stored.modified_ns == now.modified_ns) {
        now.sha256 = stored.sha256;
        return true;
    }
    if (!options_.by_content || !stored.sha256 || stored.bytes != now.bytes) {
        return false;
    }
    now.sha256 = sha256OfFile(input);
    return now.sha256 == stored.sha256;
}

InputReport StoredScans::keep(const Known& known, const InputReport& report, double took_s) const {
    if (!known.state.bytes && known.is_stored_whole) {
        return report;  // the file is away, as where a disk is not mounted: what was found in it stays
    }
    StoredReport stored{.path = known.path,
                        .state = known.state,
                        .tool_version = std::string(toolVersion()),
                        .settings = settings_json_,
                        .made = {utcText(std::chrono::system_clock::now()), took_s, host_},
                        .attempts = known.failed_attempts + 1,
                        .report = report};
    stored.settings["survey"] = report.survey.has_value();
    if (stored.attempts >= kMostAttempts) {
        stored.report.may_pass_later = false;
    }
    InputReport kept = put(std::move(stored));
    kept.facts.input = report.facts.input;
    return kept;
}

InputReport StoredScans::put(StoredReport stored) const {
    stored.report.facts.input = stored.path;
    const std::string text = storedText(stored, settings_);
    try {
        store_.put(stored.path, text);
    } catch (const OutputError& error) {
        throw StoreError(error.code().value(), store_.fileFor(stored.path));
    }
    return storedReportFrom(text).value().report;
}

}  // namespace zel_monitor

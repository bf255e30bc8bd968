#include "serve/alarm.h"

#include <array>
#include <cmath>
#include <fmt/format.h>

#include "cli/time_text.h"
#include "report/report_json.h"

namespace zel_monitor {

using Json = nlohmann::ordered_json;

namespace {

Json evidenceOf(const Alarm& alarm) {
    return alarm.kind == kNoSignal ? Json(nullptr)
                                   : evidenceJson(ZEL::eventKinds()[alarm.kind].kind, alarm.evidence);
}

}  // namespace

std::string_view nameOf(Cleared reason) {
    constexpr std::array<std::string_view, 4> kNames{"over", "signal lost", "disconnected", "stopped"};
    return kNames.at(static_cast<size_t>(reason));
}

Json alarmJson(const Alarm& alarm) {
    Json json = {{"format", "zel-alarm"},
                 {"version", 1},
                 {"event", alarm.isCleared() ? "cleared" : "raised"},
                 {"time", utcText(alarm.time)},
                 {"id", alarm.id},
                 {"stream", alarm.stream},
                 {"kind", alarmName(alarm.kind)},
                 {"severity", nameOf(alarm.severity)},
                 {"detail", alarm.detail},
                 {"evidence", evidenceOf(alarm)},
                 {"labels", alarm.labels},
                 {"began", utcText(alarm.began)}};
    if (alarm.ended) {
        const std::chrono::duration<double> lasted = *alarm.ended - alarm.began;
        json["ended"] = utcText(*alarm.ended);
        json["duration_s"] = std::round(lasted.count() * 1000.0) / 1000.0;
        json["reason"] = nameOf(alarm.reason);
    }
    return json;
}

Json alertJson(const Alarm& alarm, std::chrono::system_clock::time_point expires) {
    Json labels = alarm.labels;
    labels["alertname"] = "ZelFault";
    labels["stream"] = alarm.stream;
    labels["kind"] = alarmName(alarm.kind);
    labels["severity"] = nameOf(alarm.severity);
    Json annotations = {
        {"summary", fmt::format("{} on {}", alarmName(alarm.kind), alarm.stream)},
        {"description", alarm.detail.empty() ? std::string(alarmMeaning(alarm.kind)) : alarm.detail}};
    if (const Json evidence = evidenceOf(alarm); !evidence.is_null()) {
        annotations["evidence"] =
            fmt::format("{:.4g} {} (limit {:.4g})", evidence["value"].get<double>(),
                        evidence["unit"].get<std::string>(), evidence["limit"].get<double>());
    }
    // Alertmanager takes alerts for one by their labels, so an id would be a label of no use.
    return {{"labels", std::move(labels)},
            {"annotations", std::move(annotations)},
            {"startsAt", utcText(alarm.began)},
            {"endsAt", utcText(alarm.isCleared() ? alarm.time : expires)}};
}

}  // namespace zel_monitor

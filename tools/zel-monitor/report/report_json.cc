#include "report/report_json.h"

#include <zel/events/analyser.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "cli/time_text.h"

namespace zel_monitor {
namespace {

using Json = nlohmann::ordered_json;

constexpr size_t kMostDamageNotes = 100;

/// To the microsecond; null for what is not finite.
Json number(double value) {
    return std::isfinite(value) ? Json(toMicroseconds(value)) : Json(nullptr);
}

Json number(const std::optional<double>& value) {
    return value ? number(*value) : Json(nullptr);
}

Json rulesJson(const ZEL::EventRules& rules) {
    Json json = Json::object();
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        const ZEL::EventRule& rule = rules[indexOf(info.kind)];
        json[std::string(info.name)] = {{"min_s", number(rule.min_s)}, {"gap_s", number(rule.gap_s)}};
    }
    return json;
}

Json damageJson(const std::vector<DamageNote>& damage) {
    Json notes = Json::array();
    for (const DamageNote& note : damage) {
        if (notes.size() == kMostDamageNotes) {
            break;
        }
        notes.push_back({{"what", note.what},
                         {"track", note.track.empty() ? Json(nullptr) : Json(note.track)},
                         {"start_s", number(note.span.start_s)},
                         {"end_s", number(note.span.end_s)},
                         {"count", note.count},
                         {"share", number(note.share)}});
    }
    return notes;
}

Json streamJson(const InputReport& report) {
    const MediaFacts& facts = report.facts;
    Json video = nullptr;
    if (facts.video) {
        video = {{"codec", facts.video->codec},
                 {"pixel_format", facts.video->pixel_format},
                 {"width", facts.video->width},
                 {"height", facts.video->height},
                 {"frame_rate", facts.video->frame_rate > 0.0 ? number(facts.video->frame_rate) : nullptr},
                 {"frames", report.counts.video_frames}};
    }
    Json audio = nullptr;
    if (facts.audio) {
        audio = {{"codec", facts.audio->codec},
                 {"sample_rate", facts.audio->sample_rate},
                 {"channels", facts.audio->channels},
                 {"frames", report.counts.audio_frames}};
    }
    return {{"container", facts.container.empty() ? Json(nullptr) : Json(facts.container)},
            {"declared_duration_s", number(facts.duration)},
            {"declared_duration_is_estimate", facts.duration_estimated},
            {"analysed_duration_s", number(report.length_s)},
            {"damaged", report.counts.damaged},
            {"damage", damageJson(report.damage)},
            {"video", std::move(video)},
            {"audio", std::move(audio)}};
}

/// Null for a kind that was not asked for: none is another thing than not looked for.
Json totalsJson(const InputReport& report, const Wanted& wanted) {
    const ZEL::PerEventKind<Totals> totals = totalsOf(report);
    Json json = Json::object();
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        if (!wanted[indexOf(info.kind)]) {
            json[std::string(info.name)] = nullptr;
            continue;
        }
        const Totals& mine = totals[indexOf(info.kind)];
        json[std::string(info.name)] = {{"events", mine.events},
                                        {"total_s", number(mine.total_s)},
                                        {"share", number(mine.share)},
                                        {"longest_s", number(mine.longest_s)},
                                        {"first_at_s", number(mine.first_at_s)}};
    }
    return json;
}

Json loudnessJson(const std::optional<Loudness>& loudness) {
    return !loudness ? Json(nullptr)
                     : Json{{"integrated_lufs", number(loudness->integrated_lufs)},
                            {"short_term_max_lufs", number(loudness->short_term_max_lufs)},
                            {"true_peak_dbtp", number(loudness->true_peak_dbtp)}};
}

Json surveyJson(const std::optional<Survey>& survey) {
    return !survey ? Json(nullptr)
                   : Json{{"key_frames", survey->key_frames},
                          {"longest_distance_s", number(survey->longest_distance_s)},
                          {"rules", rulesJson(survey->rules)},
                          {"deserves_scan", survey->deserves_scan}};
}

}  // namespace

Json settingsJson(const ScanSettings& settings) {
    Json wanted = Json::array();
    Json policy = Json::object();
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        if (settings.wanted[indexOf(info.kind)]) {
            wanted.push_back(info.name);
        }
        if (const auto& limit = settings.policy[indexOf(info.kind)]) {
            policy[std::string(info.name)] = number(*limit);
        }
    }
    const ZELAlgo::ZELAlgoConfig config = ZEL::EventAnalyser::detectorConfig();
    return {{"survey", settings.survey},
            {"kinds", std::move(wanted)},
            {"rules", rulesJson(settings.rules)},
            {"fail_on", std::move(policy)},
            {"detectors",
             {{"black_screen_ratio", number(config.black_screen_ratio)},
              {"green_screen_ratio", number(config.green_screen_ratio)},
              {"block_param", number(config.block_param)},
              {"staticframe_param", number(config.staticframe_param)},
              {"mute_level", number(config.mute_level)},
              {"low_voice_level", number(config.low_voice_level)},
              {"high_voice_level", number(config.high_voice_level)},
              {"novoice_scale", number(config.novoice_scale)},
              {"silence_period_s", number(ZEL::EventAnalyser::kSilencePeriodS)},
              {"voice_period_s", number(ZEL::EventAnalyser::kVoicePeriodS)}}}};
}

Json inputJson(const InputReport& report, const ScanSettings& settings) {
    Json events = Json::array();
    std::transform(report.events.begin(), report.events.end(), std::back_inserter(events), eventJson);
    return {{"input", report.facts.input},
            {"complete", !report.problem},
            {"problem", problemJson(report)},
            {"may_pass_later", report.may_pass_later},
            {"verdict", verdictJson(report, settings.policy)},
            {"violations", violations(report, settings.policy)},
            {"survey", surveyJson(report.survey)},
            {"stream", streamJson(report)},
            {"loudness", loudnessJson(report.loudness)},
            {"totals", totalsJson(report, settings.wanted)},
            {"events", std::move(events)}};
}

Json toolJson() {
    return {{"name", "zel-monitor"}, {"version", ZEL_VERSION}};
}

Json numberJson(double value) {
    return number(value);
}

nlohmann::ordered_json reportJson(const std::vector<InputReport>& reports, const ScanSettings& settings,
                                  int status) {
    Json inputs = Json::array();
    for (const InputReport& report : reports) {
        inputs.push_back(inputJson(report, settings));
    }
    return {{"format", "zel-scan-report"},        {"version", kReportVersion}, {"tool", toolJson()},
            {"settings", settingsJson(settings)}, {"exit_status", status},     {"inputs", std::move(inputs)}};
}

Json eventJson(const ZEL::Event& event) {
    return {{"kind", infoOf(event.kind).name},
            {"start_s", number(event.span.start_s)},
            {"end_s", number(event.span.end_s)},
            {"duration_s", number(event.span.length())},
            {"share", number(event.share)},
            {"open_at_end", event.open_at_end},
            {"evidence", evidenceJson(event.kind, event.evidence)}};
}

Json evidenceJson(ZEL::EventKind kind, const std::optional<ZEL::Evidence>& evidence) {
    return !evidence ? Json(nullptr)
                     : Json{{"value", number(evidence->value)},
                            {"limit", number(evidence->limit)},
                            {"unit", infoOf(kind).unit}};
}

Json verdictJson(const InputReport& report, const Policy& policy) {
    const Verdict verdict = verdictOn(report, policy);
    return verdict == Verdict::kNone ? Json(nullptr) : Json(nameOf(verdict));
}

Json problemJson(const InputReport& report) {
    return report.problem ? Json(*report.problem) : Json(nullptr);
}

std::string jsonText(const Json& json, bool indented) {
    return json.dump(indented ? 2 : -1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace zel_monitor

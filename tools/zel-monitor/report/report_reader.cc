#include "report/report_reader.h"

#include <limits>
#include <stdexcept>
#include <string>

namespace zel_monitor {
namespace {

using Json = nlohmann::ordered_json;

template <typename T>
std::optional<T> valueOf(const Json& json) {
    return json.is_null() ? std::nullopt : std::optional(json.get<T>());
}

ZEL::EventKind kindNamed(const std::string& name) {
    const auto kind = ZEL::eventKindByName(name);
    if (!kind) {
        throw std::out_of_range("there is no kind " + name);
    }
    return *kind;
}

ZEL::Event eventFrom(const Json& json) {
    ZEL::Event event{.kind = kindNamed(json.at("kind").get<std::string>()),
                     .span = {json.at("start_s").get<double>(), json.at("end_s").get<double>()},
                     .share = json.at("share").get<double>(),
                     .open_at_end = json.at("open_at_end").get<bool>()};
    if (const Json& evidence = json.at("evidence"); !evidence.is_null()) {
        constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
        event.evidence = {valueOf<double>(evidence.at("value")).value_or(kNone),
                          valueOf<double>(evidence.at("limit")).value_or(kNone)};
    }
    return event;
}

DamageNote damageFrom(const Json& json) {
    return {.what = json.at("what").get<std::string>(),
            .track = valueOf<std::string>(json.at("track")).value_or(""),
            .span = {json.at("start_s").get<double>(), json.at("end_s").get<double>()},
            .count = json.at("count").get<uint64_t>(),
            .share = valueOf<double>(json.at("share")).value_or(0.0)};
}

void readStream(const Json& stream, InputReport& report) {
    MediaFacts& facts = report.facts;
    facts.container = valueOf<std::string>(stream.at("container")).value_or("");
    facts.duration = valueOf<double>(stream.at("declared_duration_s"));
    facts.duration_estimated = stream.at("declared_duration_is_estimate").get<bool>();
    report.length_s = valueOf<double>(stream.at("analysed_duration_s")).value_or(0.0);
    report.counts.damaged = stream.at("damaged").get<uint64_t>();
    for (const Json& note : stream.at("damage")) {
        report.damage.push_back(damageFrom(note));
    }
    if (const Json& video = stream.at("video"); !video.is_null()) {
        facts.video = VideoFacts{.codec = video.at("codec").get<std::string>(),
                                 .pixel_format = video.at("pixel_format").get<std::string>(),
                                 .width = video.at("width").get<int>(),
                                 .height = video.at("height").get<int>(),
                                 .frame_rate = valueOf<double>(video.at("frame_rate")).value_or(0.0)};
        report.counts.video_frames = video.at("frames").get<uint64_t>();
    }
    if (const Json& audio = stream.at("audio"); !audio.is_null()) {
        facts.audio = AudioFacts{.codec = audio.at("codec").get<std::string>(),
                                 .sample_rate = audio.at("sample_rate").get<int>(),
                                 .channels = audio.at("channels").get<int>()};
        report.counts.audio_frames = audio.at("frames").get<uint64_t>();
    }
}

ZEL::EventRules rulesFrom(const Json& json) {
    ZEL::EventRules rules{};
    for (const auto& [name, rule] : json.items()) {
        rules[indexOf(kindNamed(name))] = {rule.at("min_s").get<double>(), rule.at("gap_s").get<double>()};
    }
    return rules;
}

Survey surveyFrom(const Json& json) {
    Survey survey{.key_frames = json.at("key_frames").get<uint64_t>(),
                  .longest_distance_s = json.at("longest_distance_s").get<double>(),
                  .deserves_scan = json.at("deserves_scan").get<bool>()};
    survey.rules = rulesFrom(json.at("rules"));
    return survey;
}

}  // namespace

InputReport inputReportFrom(const Json& json) {
    InputReport report;
    report.facts.input = json.at("input").get<std::string>();
    report.problem = valueOf<std::string>(json.at("problem"));
    report.may_pass_later = json.at("may_pass_later").get<bool>();
    readStream(json.at("stream"), report);
    if (const Json& loudness = json.at("loudness"); !loudness.is_null()) {
        report.loudness = Loudness{valueOf<double>(loudness.at("integrated_lufs")),
                                   valueOf<double>(loudness.at("short_term_max_lufs")),
                                   valueOf<double>(loudness.at("true_peak_dbtp"))};
    }
    for (const Json& event : json.at("events")) {
        report.events.push_back(eventFrom(event));
    }
    if (const Json& survey = json.at("survey"); !survey.is_null()) {
        report.survey = surveyFrom(survey);
    }
    return report;
}

ScanSettings settingsFrom(const Json& json) {
    ScanSettings settings{.rules = rulesFrom(json.at("rules")), .wanted = {}};
    settings.survey = json.at("survey").get<bool>();
    for (const Json& name : json.at("kinds")) {
        settings.wanted[indexOf(kindNamed(name.get<std::string>()))] = true;
    }
    for (const auto& [name, limit] : json.at("fail_on").items()) {
        settings.policy[indexOf(kindNamed(name))] = limit.get<double>();
    }
    return settings;
}

}  // namespace zel_monitor

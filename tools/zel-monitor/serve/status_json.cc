#include "serve/status_json.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

#include "cli/time_text.h"
#include "report/page.h"
#include "report/report_json.h"

namespace zel_monitor {
namespace {

using Json = nlohmann::ordered_json;

Json timeJson(const std::optional<std::chrono::system_clock::time_point>& time) {
    return time ? Json(utcText(*time)) : Json(nullptr);
}

Json rounded(const std::optional<double>& value) {
    return value ? Json(std::round(*value * 1000.0) / 1000.0) : Json(nullptr);
}

Json videoJson(const std::optional<MediaFacts>& facts) {
    if (!facts || !facts->video) {
        return nullptr;
    }
    return {{"codec", facts->video->codec},
            {"width", facts->video->width},
            {"height", facts->video->height},
            {"frame_rate", rounded(facts->video->frame_rate)}};
}

Json audioJson(const std::optional<MediaFacts>& facts) {
    if (!facts || !facts->audio) {
        return nullptr;
    }
    return {{"codec", facts->audio->codec},
            {"sample_rate", facts->audio->sample_rate},
            {"channels", facts->audio->channels}};
}

Json streamJson(const StreamStatus& stream) {
    Json alarms = Json::array();
    for (const AlarmBook::Active& alarm : stream.alarms) {
        alarms.push_back({{"kind", alarmName(alarm.kind)},
                          {"severity", nameOf(alarm.severity)},
                          {"detail", alarm.detail},
                          {"meaning", alarmMeaning(alarm.kind)},
                          {"began", utcText(alarm.began)}});
    }
    return {{"name", stream.name},
            {"input", stream.input},
            {"labels", stream.labels},
            {"state", kStreamStateNames.at(static_cast<size_t>(stream.state))},
            {"reason", stream.reason},
            {"since", utcText(stream.since)},
            {"last_frame", timeJson(stream.last_frame)},
            {"last_good", timeJson(stream.last_good)},
            {"video", videoJson(stream.facts)},
            {"audio", audioJson(stream.facts)},
            {"video_frames", stream.counts.video_frames},
            {"audio_frames", stream.counts.audio_frames},
            {"dropped", stream.dropped},
            {"damaged", stream.counts.damaged},
            {"connections", stream.connections},
            {"luma", rounded(stream.luma)},
            {"audio_level", rounded(stream.level)},
            {"delay_s", rounded(stream.delay_s)},
            {"alarms", std::move(alarms)}};
}

}  // namespace

Json statusJson(const std::vector<StreamStatus>& streams, std::chrono::system_clock::time_point now) {
    Json list = Json::array();
    std::transform(streams.begin(), streams.end(), std::back_inserter(list), &streamJson);
    return {{"format", "zel-streams"},
            {"version", 1},
            {"tool", {{"name", "zel-monitor"}, {"version", ZEL_VERSION}}},
            {"time", utcText(now)},
            {"streams", std::move(list)}};
}

std::string hourPage(const StreamStatus& stream, const History& history,
                     std::chrono::system_clock::time_point now) {
    if (!hasPage()) {
        return "";
    }
    InputReport report;
    report.facts = stream.facts.value_or(MediaFacts{});
    report.facts.input = fmt::format("{}, the hour before {}", stream.name, utcText(now));
    report.facts.duration.reset();
    report.counts = stream.counts;
    report.length_s = History::kLengthS;
    report.events = history.events(now);
    for (const AlarmBook::Active& alarm : stream.alarms) {
        if (alarm.kind == kNoSignal) {
            continue;  // the curves have a gap there
        }
        const std::chrono::duration<double> ago = now - alarm.began;
        ZEL::Event event;
        event.kind = ZEL::eventKinds()[alarm.kind].kind;
        event.span = {std::max(History::kLengthS - ago.count(), 0.0), History::kLengthS};
        event.open_at_end = true;
        report.events.push_back(event);
    }
    std::stable_sort(report.events.begin(), report.events.end(),
                     [](const auto& a, const auto& b) { return a.span.start_s < b.span.start_s; });
    return pageHtml({{"report", reportJson({report}, ScanSettings{}, 0)},
                     {"records", Json::array({history.record(now)})}});
}

}  // namespace zel_monitor

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "cli/time_text.h"
#include "report/report_json.h"
#include "watch/formats.h"

namespace zel_monitor {
namespace {

using Json = nlohmann::ordered_json;

template <typename Number>
std::optional<Number> whole(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/// Report values are text; what is a number becomes one.
Json valueOf(const std::string& text) {
    if (const auto integer = whole<int64_t>(text)) {
        return *integer;
    }
    if (const auto real = whole<double>(text)) {
        return *real;
    }
    return text;
}

void addFields(const ReportMap& report, Json& object) {
    for (const auto& [key, value] : report) {
        object[key] = valueOf(value);
    }
}

double toMilliseconds(double seconds) {
    return std::round(seconds * 1000) / 1000;
}

class JsonHeartbeats : public HeartbeatWriter {
  public:
    JsonHeartbeats(Console& console, std::string name) : console_(console), name_(std::move(name)) {}

    void fault(const FaultNotice& notice) override {
        Json object = objectFor(notice.length_s ? "cleared" : "raised", notice.time, notice.position);
        object["kind"] = infoOf(notice.kind).name;
        object["start"] = toMilliseconds(notice.start_s);
        if (notice.length_s) {
            object["duration"] = toMilliseconds(*notice.length_s);
        }
        object["evidence"] = evidenceJson(notice.kind, notice.evidence);
        write(object);
    }

    void interrupted(const Interruption& interruption) override {
        Json object = objectFor("interrupted", interruption.time, interruption.position);
        object["reason"] = interruption.reason;
        write(object);
    }

    void heartbeat(const ReportEvent& event) override { write(reportObject("heartbeat", event)); }

    void finalReport(const ReportEvent& event, const Ending& ending) override {
        Json object = reportObject("final", event);
        object["bytes_read"] = ending.counts.bytes_read;
        object["damaged"] = ending.counts.damaged;
        for (const auto& [name, answer] : ending.assessments) {
            addFields(answer, object["assessments"][name]);
        }
        write(object);
    }

  private:
    Json objectFor(std::string_view event, std::chrono::system_clock::time_point time,
                   double position) const {
        Json object = {{"event", event}, {"time", utcText(time)}, {"position", toMilliseconds(position)}};
        if (!name_.empty()) {
            object["name"] = name_;
        }
        return object;
    }

    Json reportObject(std::string_view name, const ReportEvent& event) const {
        Json object = objectFor(name, event.time, event.position);
        if (!event.caption.empty()) {
            object["shown"] = event.caption;
        }
        addFields(event.report, object);
        if (event.drops) {
            object["dropped_video_frames"] = event.drops->video;
            object["dropped_audio_frames"] = event.drops->audio;
        }
        return object;
    }

    void write(const Json& object) {
        console_.line(object.dump(-1, ' ', false, Json::error_handler_t::replace));
    }

    Console& console_;
    const std::string name_;
};

}  // namespace

std::unique_ptr<HeartbeatWriter> makeHeartbeatJson(Console& console, const std::string& name) {
    return std::make_unique<JsonHeartbeats>(console, name);
}

}  // namespace zel_monitor

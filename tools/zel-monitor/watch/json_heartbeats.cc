#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>

#include "cli/time_text.h"
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

Json objectFor(std::string_view name, const ReportEvent& event) {
    Json object = {{"event", name},
                   {"time", utcText(event.time)},
                   {"position", std::round(event.position * 1000) / 1000}};
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

class JsonHeartbeats : public HeartbeatWriter {
  public:
    explicit JsonHeartbeats(Console& console) : console_(console) {}

    void heartbeat(const ReportEvent& event) override { write(objectFor("heartbeat", event)); }

    void finalReport(const ReportEvent& event, const Ending& ending) override {
        Json object = objectFor("final", event);
        object["bytes_read"] = ending.counts.bytes_read;
        object["damaged"] = ending.counts.damaged;
        for (const auto& [name, answer] : ending.assessments) {
            addFields(answer, object["assessments"][name]);
        }
        write(object);
    }

  private:
    void write(const Json& object) {
        console_.line(object.dump(-1, ' ', false, Json::error_handler_t::replace));
    }

    Console& console_;
};

}  // namespace

std::unique_ptr<HeartbeatWriter> makeHeartbeatJson(Console& console) {
    return std::make_unique<JsonHeartbeats>(console);
}

}  // namespace zel_monitor

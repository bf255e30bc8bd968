#include "serve/history.h"

#include <algorithm>
#include <cmath>

namespace zel_monitor {
namespace {

constexpr size_t kMostEvents = 2000;

double secondsOf(History::TimePoint time) {
    return std::chrono::duration<double>(time.time_since_epoch()).count();
}

}  // namespace

int64_t History::stepAt(TimePoint time) {
    return static_cast<int64_t>(std::floor(secondsOf(time) / kStepS));
}

void History::add(Curve curve, double value, TimePoint time) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const int64_t number = stepAt(time);
    Step& step = steps_[static_cast<size_t>(number) % steps_.size()];
    if (step.number != number) {
        step = {.number = number, .curves = {}};
    }
    Sum& sum = step.curves[static_cast<size_t>(curve)];
    sum.sum += static_cast<float>(value);
    ++sum.count;
}

void History::add(ZEL::EventKind kind, TimePoint began, TimePoint ended) {
    const std::lock_guard<std::mutex> lock(mutex_);
    events_.push_back({kind, began, ended});
    const TimePoint oldest = ended - std::chrono::seconds(static_cast<int64_t>(kLengthS));
    while (events_.size() > kMostEvents || events_.front().ended < oldest) {
        events_.pop_front();
    }
}

nlohmann::ordered_json History::curve(Curve curve, int64_t first, double scale) const {
    nlohmann::ordered_json values = nlohmann::ordered_json::array();
    for (size_t i = 0; i < steps_.size(); ++i) {
        const int64_t number = first + static_cast<int64_t>(i);
        const Step& step = steps_[static_cast<size_t>(number) % steps_.size()];
        const Sum& sum = step.curves[static_cast<size_t>(curve)];
        const bool known = step.number == number && sum.count > 0;
        values.push_back(known ? nlohmann::ordered_json(
                                     std::round(sum.sum / static_cast<float>(sum.count) * scale) / scale)
                               : nullptr);
    }
    return {{"step_s", kStepS}, {"values", std::move(values)}};
}

nlohmann::ordered_json History::record(TimePoint now) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    const int64_t first = stepAt(now) - static_cast<int64_t>(steps_.size()) + 1;
    return {{"luma", curve(Curve::kLuma, first, 10.0)},
            {"audio_level", curve(Curve::kLevel, first, 1.0)},
            {"voice_share", curve(Curve::kVoice, first, 1000.0)},
            {"thumbnails", nlohmann::ordered_json::array()}};
}

std::vector<ZEL::Event> History::events(TimePoint now) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    const double origin_s = secondsOf(now) - kLengthS;
    std::vector<ZEL::Event> events;
    for (const Past& past : events_) {
        const ZEL::TimeSpan span{std::max(secondsOf(past.began) - origin_s, 0.0),
                                 secondsOf(past.ended) - origin_s};
        if (span.end_s > 0.0) {
            ZEL::Event event;
            event.kind = past.kind;
            event.span = span;
            events.push_back(event);
        }
    }
    return events;
}

}  // namespace zel_monitor

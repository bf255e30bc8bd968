#include "watch/progress.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

#include "cli/time_text.h"

namespace zel_monitor {
namespace {

constexpr std::chrono::milliseconds kBetweenUpdates{100};
constexpr std::chrono::duration<double> kSpeedWindow{2.0};
constexpr size_t kBarWidth = 24;

std::string bar(double share) {
    const auto filled = static_cast<size_t>(std::lround(std::clamp(share, 0.0, 1.0) * kBarWidth));
    return '[' + std::string(filled, '#') + std::string(kBarWidth - filled, '.') + "] ";
}

}  // namespace

std::optional<std::string> WatchProgress::update(TimePoint now, double position, uint64_t pictures,
                                                 uint64_t sounds) {
    if (last_update_ && now - *last_update_ < kBetweenUpdates) {
        return std::nullopt;
    }
    last_update_ = now;
    if (!mark_) {
        mark_ = {.time = now, .position = position};
    }
    const std::chrono::duration<double> since_mark = now - mark_->time;
    if (since_mark >= kSpeedWindow || (speed_ == 0 && since_mark >= kSpeedWindow / 4)) {
        speed_ = (position - mark_->position) / since_mark.count();
        mark_ = {.time = now, .position = position};
    }
    std::string text;
    if (duration_) {
        text = bar(position / *duration_) + shortClockText(position) + " / " + shortClockText(*duration_);
    } else {
        text = shortClockText(position);
    }
    return text + fmt::format("  {:.2f}x  {} pictures, {} sounds", speed_, pictures, sounds);
}

}  // namespace zel_monitor

#include "input/item_placer.h"

#include <utility>
#include <variant>

namespace zel_monitor {
namespace {

/// A live stream may be one still picture, or a frame every minute, beside sound that goes on.
constexpr double kLatestS = 1.0;

}  // namespace

void ItemPlacer::take(MediaItem item) {
    const StreamTrack track = trackOf(item);
    const double time_s = timeOf(item);
    const double length_s = durationOf(item);
    held_[track].push_back(std::move(item));
    clock_.take(track, time_s, length_s, place_);
    settleIfLate(siblingOf(track), length_s);
}

void ItemPlacer::finish() {
    clock_.finish(place_);
}

std::optional<MediaItem> ItemPlacer::next() {
    if (placed_.empty()) {
        return std::nullopt;
    }
    MediaItem item = std::move(placed_.front());
    placed_.pop_front();
    return item;
}

void ItemPlacer::place(StreamTrack track, double start_s) {
    MediaItem& item = held_[track].front();
    std::visit([start_s](auto& content) { content.time = start_s; }, item);
    late_s_[track] = 0.0;
    ends_s_[track] = start_s + durationOf(item);
    placed_.push_back(std::move(item));
    held_[track].pop_front();
}

/// `passed_s` more of the sibling has come.
void ItemPlacer::settleIfLate(StreamTrack track, double passed_s) {
    if (held_[track].empty()) {
        return;
    }
    late_s_[track] += passed_s;
    if (late_s_[track] > kLatestS) {
        clock_.settle(track, place_);
    }
}

}  // namespace zel_monitor

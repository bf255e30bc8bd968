#include "events/gaps.h"

#include <algorithm>
#include <limits>

namespace ZEL {
namespace {

constexpr double kNever = std::numeric_limits<double>::infinity();

bool startsBefore(const TimeSpan& a, const TimeSpan& b) {
    return a.start_s < b.start_s;
}

}  // namespace

Gaps::Gaps(StreamTracks tracks)
    : reached_{tracks.video ? -kNever : kNever, tracks.audio ? -kNever : kNever} {}

void Gaps::add(StreamTrack track, TimeSpan span) {
    waiting_.insert(std::upper_bound(waiting_.begin(), waiting_.end(), span, startsBefore), span);
    reach(track, span.end_s);
}

void Gaps::reach(StreamTrack track, double time_s) {
    double& reached = reached_.at(static_cast<size_t>(track));
    reached = std::max(reached, time_s);
}

std::vector<TimeSpan> Gaps::takeSettled() {
    auto end = std::upper_bound(waiting_.begin(), waiting_.end(), TimeSpan{settledTo(), 0.0}, startsBefore);
    if (waiting_.end() - end > std::ptrdiff_t{kMostWaiting}) {
        end = waiting_.end() - std::ptrdiff_t{kMostWaiting};
    }
    std::vector<TimeSpan> settled(waiting_.begin(), end);
    waiting_.erase(waiting_.begin(), end);
    return settled;
}

double Gaps::settledTo() const {
    return *std::min_element(reached_.begin(), reached_.end());
}

}  // namespace ZEL

#include "scan/gaps.h"

#include <algorithm>
#include <limits>

namespace zel_monitor::scan {
namespace {

constexpr double kNever = std::numeric_limits<double>::infinity();

bool startsBefore(const Span& a, const Span& b) {
    return a.start_s < b.start_s;
}

}  // namespace

Gaps::Gaps(Tracks tracks) : reached_{tracks.video ? -kNever : kNever, tracks.audio ? -kNever : kNever} {}

void Gaps::add(Track track, Span span) {
    waiting_.insert(std::upper_bound(waiting_.begin(), waiting_.end(), span, startsBefore), span);
    reach(track, span.end_s);
}

void Gaps::reach(Track track, double time_s) {
    double& reached = reached_.at(static_cast<size_t>(track));
    reached = std::max(reached, time_s);
}

std::vector<Span> Gaps::takeSettled() {
    const auto end = std::upper_bound(waiting_.begin(), waiting_.end(), Span{settledTo(), 0.0}, startsBefore);
    std::vector<Span> settled(waiting_.begin(), end);
    waiting_.erase(waiting_.begin(), end);
    return settled;
}

double Gaps::settledTo() const {
    return *std::min_element(reached_.begin(), reached_.end());
}

}  // namespace zel_monitor::scan

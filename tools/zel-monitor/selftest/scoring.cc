#include "selftest/scoring.h"

#include <algorithm>
#include <cmath>

namespace zel_monitor::selftest {
namespace {

constexpr double kLeastOverlap = 0.5;

std::optional<double> ratio(double part, size_t whole) {
    return whole > 0 ? std::optional(part / static_cast<double>(whole)) : std::nullopt;
}

}  // namespace

double overlap(ZEL::TimeSpan a, ZEL::TimeSpan b) {
    const double both = std::min(a.end_s, b.end_s) - std::max(a.start_s, b.start_s);
    const double either = std::max(a.end_s, b.end_s) - std::min(a.start_s, b.start_s);
    return both > 0.0 ? both / either : 0.0;
}

void Score::add(const Score& other) {
    hits += other.hits;
    misses += other.misses;
    false_alarms += other.false_alarms;
    onset_sum_s += other.onset_sum_s;
    length_error_sum_s += other.length_error_sum_s;
}

std::optional<double> Score::precision() const {
    return ratio(static_cast<double>(hits), hits + false_alarms);
}

std::optional<double> Score::recall() const {
    return ratio(static_cast<double>(hits), hits + misses);
}

std::optional<double> Score::onsetDelay() const {
    return ratio(onset_sum_s, hits);
}

std::optional<double> Score::lengthError() const {
    return ratio(length_error_sum_s, hits);
}

Score scoreOf(const std::vector<ZEL::TimeSpan>& truth, const std::vector<ZEL::TimeSpan>& found) {
    Score score;
    // Two stretches that do not overlap one another cannot both cover half of a third, so the best
    // candidate is the only one.
    for (const ZEL::TimeSpan real : truth) {
        const auto best = std::max_element(
            found.begin(), found.end(),
            [real](ZEL::TimeSpan a, ZEL::TimeSpan b) { return overlap(real, a) < overlap(real, b); });
        if (best == found.end() || overlap(real, *best) < kLeastOverlap) {
            ++score.misses;
            continue;
        }
        ++score.hits;
        score.onset_sum_s += best->start_s - real.start_s;
        score.length_error_sum_s += std::abs(best->length() - real.length());
    }
    score.false_alarms = found.size() - score.hits;
    return score;
}

}  // namespace zel_monitor::selftest

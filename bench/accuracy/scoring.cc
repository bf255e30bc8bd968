#include "bench/accuracy/scoring.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace bench::accuracy {
namespace {

constexpr double kLeastOverlap = 0.5;
constexpr double kLeastWithin = 0.7;

double sharedLength(ZEL::TimeSpan a, ZEL::TimeSpan b) {
    return std::max(std::min(a.end_s, b.end_s) - std::max(a.start_s, b.start_s), 0.0);
}

size_t falseAlarms(const std::vector<ZEL::TimeSpan>& found, const std::vector<ZEL::TimeSpan>& ignored,
                   const std::function<bool(ZEL::TimeSpan)>& right) {
    return static_cast<size_t>(std::count_if(found.begin(), found.end(), [&](ZEL::TimeSpan span) {
        double covered_s = 0.0;
        for (const ZEL::TimeSpan real : ignored) {
            covered_s += sharedLength(span, real);
        }
        return !right(span) && covered_s < kLeastOverlap * span.length();
    }));
}

std::optional<double> ratio(double part, size_t whole) {
    return whole > 0 ? std::optional(part / static_cast<double>(whole)) : std::nullopt;
}

}  // namespace

double overlap(ZEL::TimeSpan a, ZEL::TimeSpan b) {
    const double both = sharedLength(a, b);
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

double Score::accuracy() const {
    return ratio(static_cast<double>(hits), hits + misses + false_alarms).value_or(1.0);
}

Score scoreOf(const std::vector<ZEL::TimeSpan>& truth, const std::vector<ZEL::TimeSpan>& found,
              const std::vector<ZEL::TimeSpan>& ignored) {
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
    score.false_alarms = falseAlarms(found, ignored, [&truth](ZEL::TimeSpan span) {
        return std::any_of(truth.begin(), truth.end(),
                           [span](ZEL::TimeSpan real) { return overlap(real, span) >= kLeastOverlap; });
    });
    return score;
}

Score scoreWithin(const std::vector<ZEL::TimeSpan>& truth, const std::vector<ZEL::TimeSpan>& found,
                  const std::vector<ZEL::TimeSpan>& ignored) {
    Score score;
    const auto within = [](ZEL::TimeSpan span, ZEL::TimeSpan real) {
        return sharedLength(real, span) > kLeastWithin * span.length();
    };
    for (const ZEL::TimeSpan real : truth) {
        const bool hit =
            std::any_of(found.begin(), found.end(), [&](ZEL::TimeSpan span) { return within(span, real); });
        ++(hit ? score.hits : score.misses);
    }
    score.false_alarms = falseAlarms(found, ignored, [&](ZEL::TimeSpan span) {
        return std::any_of(truth.begin(), truth.end(),
                           [&](ZEL::TimeSpan real) { return within(span, real); });
    });
    return score;
}

}  // namespace bench::accuracy

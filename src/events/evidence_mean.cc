#include "events/evidence_mean.h"

#include <algorithm>

namespace ZEL {
namespace {

constexpr double kLeastS = 1e-9;  // a frame may be shown for no time at all

}  // namespace

void EvidenceMean::add(const Evidence& evidence, double seconds) {
    const double weight = std::max(seconds, kLeastS);
    for (std::optional<Measure>& measure : measures_) {
        if (!measure) {
            measure = Measure{evidence.limit, 0.0, 0.0};
        }
        if (measure->limit == evidence.limit) {
            measure->sum += evidence.value * weight;
            measure->seconds += weight;
            return;
        }
    }
}

std::optional<Evidence> EvidenceMean::mean() const {
    const auto& [first, second] = measures_;
    if (!first) {
        return std::nullopt;
    }
    const Measure& longest = second && second->seconds > first->seconds ? *second : *first;
    return Evidence{longest.sum / longest.seconds, longest.limit};
}

}  // namespace ZEL

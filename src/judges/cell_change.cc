#include "judges/cell_change.h"

#include <algorithm>

#include "judges/cell_kernels.h"
#include "judges/cells.h"

namespace ZELJudges {
namespace {

// A cell has changed beyond kLeastChange levels, or beyond what kNoiseReach deviations of noise explain,
// which is taken to be kMostNoise at most.
constexpr double kLeastChange = 2.5;
constexpr double kNoiseReach = 4.5;
constexpr double kMostNoise = 1.5;
constexpr double kDeviationsPerMedian = 1.0 / 0.6745;  // of the absolute value, for a normal distribution

}  // namespace

uint16_t changeLimit(const std::vector<uint16_t>& now, const std::vector<uint16_t>& then) {
    const auto limit_for = [](int median) {
        const double noise = std::min(kMostNoise, median * kDeviationsPerMedian / kMeanScale);
        return static_cast<uint16_t>(std::max(kLeastChange, kNoiseReach * noise) * kMeanScale);
    };
    // The smallest difference that half of the cells stay within, looked for where it decides.
    int low = static_cast<int>(kLeastChange / kNoiseReach / kDeviationsPerMedian * kMeanScale);
    int high = static_cast<int>(kMostNoise / kDeviationsPerMedian * kMeanScale) + 1;
    while (low < high) {
        const int middle = (low + high) / 2;
        const size_t like = countLike(now.data(), then.data(), now.size(), static_cast<uint16_t>(middle));
        if (2 * like >= now.size()) {
            high = middle;
        } else {
            low = middle + 1;
        }
    }
    return limit_for(low);
}

}  // namespace ZELJudges

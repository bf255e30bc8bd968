#include "judges/antiphase_judge.h"

#include <algorithm>
#include <cmath>

namespace ZELJudges {
namespace {

constexpr float kLeastCorrelation = -0.9F;

}  // namespace

std::span<const Stretch> AntiphaseJudge::feed(const SoundChunk& chunk) {
    bridge_.clearSettled();
    if (!chunk.has_pair || std::min(chunk.left, chunk.right) < QuietBridge::kQuiet) {
        bridge_.addQuiet(chunk);
    } else {
        const auto correlation = static_cast<float>(chunk.product / std::sqrt(chunk.left * chunk.right));
        bridge_.add(chunk, correlation < kLeastCorrelation, correlation, kLeastCorrelation);
    }
    return bridge_.settled();
}

std::span<const Stretch> AntiphaseJudge::finish() {
    bridge_.clearSettled();
    bridge_.end();
    return bridge_.settled();
}

}  // namespace ZELJudges

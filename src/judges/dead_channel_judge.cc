#include "judges/dead_channel_judge.h"

#include <algorithm>
#include <cmath>

namespace ZELJudges {
namespace {

constexpr float kMostDb = 40.0F;
constexpr double kSilence = 1e-12;  // of the louder one, so that 120 dB is the most

}  // namespace

std::span<const Stretch> DeadChannelJudge::feed(const SoundChunk& chunk) {
    bridge_.clearSettled();
    const auto [quieter, louder] = std::minmax(chunk.left, chunk.right);
    if (!chunk.has_pair || louder < QuietBridge::kQuiet) {
        bridge_.addQuiet(chunk);
    } else {
        const auto below_db =
            static_cast<float>(10.0 * std::log10(louder / std::max(quieter, louder * kSilence)));
        bridge_.add(chunk, below_db >= kMostDb, below_db, kMostDb);
    }
    return bridge_.settled();
}

std::span<const Stretch> DeadChannelJudge::finish() {
    bridge_.clearSettled();
    bridge_.end();
    return bridge_.settled();
}

}  // namespace ZELJudges

#include "judges/clipping_judge.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace ZELJudges {
namespace {

constexpr double kSlackS = 1e-6;
constexpr double kWindowS = 1.0;
constexpr float kMostClipped = 0.005F;

}  // namespace

std::span<const Stretch> ClippingJudge::feed(const SoundChunk& chunk) {
    settled_.clear();
    const bool follows = window_.empty() || chunk.start_s >= window_.back().stretch.start_s;
    settleUpTo(follows ? chunk.end_s - kWindowS - kSlackS : std::numeric_limits<double>::infinity());
    window_.push_back({{chunk.start_s, chunk.end_s, false, 0.0F, kMostClipped}, chunk.clipped});
    judge();
    settleUpTo(chunk.end_s - kWindowS + kSlackS);  // no later second reaches back so far
    return settled_;
}

std::span<const Stretch> ClippingJudge::finish() {
    settled_.clear();
    settleUpTo(std::numeric_limits<double>::infinity());
    return settled_;
}

/// Settles the chunks that start before `time_s`.
void ClippingJudge::settleUpTo(double time_s) {
    const auto end = std::find_if(window_.begin(), window_.end(),
                                  [time_s](const Chunk& chunk) { return chunk.stretch.start_s >= time_s; });
    std::transform(window_.begin(), end, std::back_inserter(settled_),
                   [](const Chunk& chunk) { return chunk.stretch; });
    window_.erase(window_.begin(), end);
}

/// Marks what is clipped in the second that ends now.
void ClippingJudge::judge() {
    double clipped_s = 0.0;
    double all_s = 0.0;
    for (const Chunk& chunk : window_) {
        clipped_s += chunk.clipped * (chunk.stretch.end_s - chunk.stretch.start_s);
        all_s += chunk.stretch.end_s - chunk.stretch.start_s;
    }
    const auto share = static_cast<float>(clipped_s / all_s);
    const auto is_clipped = [](const Chunk& chunk) { return chunk.clipped > 0.0F; };
    const auto first = std::find_if(window_.begin(), window_.end(), is_clipped);
    const auto last = std::find_if(window_.rbegin(), window_.rend(), is_clipped).base();
    for (auto chunk = first; chunk < last; ++chunk) {
        chunk->stretch.present |= share >= kMostClipped;
        chunk->stretch.value = std::max(chunk->stretch.value, share);
    }
}

}  // namespace ZELJudges

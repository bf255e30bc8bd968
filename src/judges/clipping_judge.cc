#include "judges/clipping_judge.h"

#include <algorithm>

namespace ZELJudges {
namespace {

constexpr double kSlackS = 1e-6;
constexpr double kWindowS = 1.0;
constexpr float kMostClipped = 0.005F;

}  // namespace

std::span<const Stretch> ClippingJudge::feed(const SoundChunk& chunk) {
    settled_.clear();
    const auto leaves = [&chunk](const Chunk& old) {
        return old.stretch.start_s < chunk.end_s - kWindowS - kSlackS || old.stretch.start_s > chunk.start_s;
    };
    while (!window_.empty() && leaves(window_.front())) {
        settled_.push_back(window_.front().stretch);
        window_.erase(window_.begin());
    }
    window_.push_back({{chunk.start_s, chunk.end_s, false, 0.0F, kMostClipped}, chunk.clipped});
    judge();
    return settled_;
}

std::span<const Stretch> ClippingJudge::finish() {
    settled_.clear();
    for (const Chunk& chunk : window_) {
        settled_.push_back(chunk.stretch);
    }
    window_.clear();
    return settled_;
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

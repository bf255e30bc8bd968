#include "judges/pair_judge.h"

#include <algorithm>
#include <cmath>

namespace ZELJudges {
namespace {

constexpr double kQuiet = 1e-5;  // mean square: -50 dB of full scale
constexpr float kLeastCorrelation = -0.9F;
constexpr float kMostDb = 40.0F;
constexpr double kSilence = 1e-12;  // of the louder one, so that 120 dB is the most
constexpr double kLongestPauseS = 2.0;

}  // namespace

std::optional<PairVerdict> antiphaseOf(const SoundChunk& chunk) {
    if (!chunk.has_pair || std::min(chunk.left, chunk.right) < kQuiet) {
        return std::nullopt;
    }
    const auto correlation = static_cast<float>(chunk.product / std::sqrt(chunk.left * chunk.right));
    return PairVerdict{correlation < kLeastCorrelation, correlation, kLeastCorrelation};
}

std::optional<PairVerdict> deadChannelOf(const SoundChunk& chunk) {
    const auto [quieter, louder] = std::minmax(chunk.left, chunk.right);
    if (!chunk.has_pair || louder < kQuiet) {
        return std::nullopt;
    }
    const auto below_db =
        static_cast<float>(10.0 * std::log10(louder / std::max(quieter, louder * kSilence)));
    return PairVerdict{below_db >= kMostDb, below_db, kMostDb};
}

std::span<const Stretch> PairJudge::feed(const SoundChunk& chunk) {
    settled_.clear();
    if (const auto verdict = measure_(chunk)) {
        settlePause(verdict->present);
        settle({chunk.start_s, chunk.end_s, verdict->present, verdict->value, verdict->limit});
    } else if (last_.present && chunk.end_s - last_.end_s <= kLongestPauseS) {
        pause_end_s_ = chunk.end_s;
    } else {
        settlePause(false);
        settle({chunk.start_s, chunk.end_s, false, 0.0F, last_.limit});
    }
    return settled_;
}

std::span<const Stretch> PairJudge::finish() {
    settled_.clear();
    settlePause(false);
    last_ = {};
    return settled_;
}

void PairJudge::settle(const Stretch& stretch) {
    settled_.push_back(stretch);
    last_ = stretch;
}

void PairJudge::settlePause(bool present) {
    if (last_.present && pause_end_s_ > last_.end_s) {
        settle({last_.end_s, pause_end_s_, present, last_.value, last_.limit});
    }
}

}  // namespace ZELJudges

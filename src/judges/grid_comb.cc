#include "judges/grid_comb.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ZELJudges {
namespace {

constexpr size_t kShortestPeriod = 8;
constexpr size_t kFewestTeeth = 6;  // a comb of fewer is chance
constexpr float kTrimmedShare =
    0.25F;                            // of a comb's boundaries, those that show most: one texture is no grid
constexpr float kLivingShare = 0.5F;  // of all strips count as living at least
constexpr size_t kPhaseSlack = 2;     // an edge is a few samples wide
constexpr float kChanceReach = 2.0F;  // standard errors that are put down to chance

}  // namespace

GridComb::Share GridComb::trimmedShare(size_t phase, size_t period) {
    const size_t size = counts_->living.size();
    teeth_.clear();
    for (size_t b = kGridMargin + (phase + period - kGridMargin % period) % period; b + kGridMargin < size;
         b += period) {
        const auto incoherent = static_cast<float>(counts_->incoherent[b]);
        const auto living = static_cast<float>(counts_->living[b]);
        teeth_.push_back({incoherent / std::max(living, 1.0F), incoherent, living});
    }
    const auto kept =
        static_cast<std::ptrdiff_t>(std::ceil(static_cast<float>(teeth_.size()) * (1.0F - kTrimmedShare)));
    if (kept == 0) {
        return {};
    }
    const auto end = teeth_.begin() + kept;
    if (end != teeth_.end()) {
        std::nth_element(teeth_.begin(), end, teeth_.end(),
                         [](const Tooth& a, const Tooth& b) { return a.share < b.share; });
    }
    float incoherent = 0.0F;
    float living = 0.0F;
    std::for_each(teeth_.begin(), end, [&](const Tooth& tooth) {
        incoherent += tooth.incoherent;
        living += tooth.living;
    });
    const float strips = std::max(living, least_living_ * static_cast<float>(kept));
    const float share = incoherent / strips;
    return {share, share * (1.0F - share) * frames_ / strips};
}

/// How much the best phase stands out, if `same` at a phase is what both halves of a comb must show and
/// `either` what one does: beyond the largest share of phases more than kPhaseSlack away, around the ring.
float GridComb::standingOut(const std::vector<Share>& same, const std::vector<Share>& either) {
    const auto shows_less = [](const Share& a, const Share& b) { return a.incoherent < b.incoherent; };
    const auto best = std::max_element(same.begin(), same.end(), shows_less);
    const auto phase = static_cast<size_t>(best - same.begin());
    Share elsewhere;
    for (size_t p = 0; p < either.size(); ++p) {
        const size_t apart = p > phase ? p - phase : phase - p;
        if (std::min(apart, either.size() - apart) > kPhaseSlack) {
            elsewhere = std::max(elsewhere, either[p], shows_less);
        }
    }
    const float chance = kChanceReach * std::sqrt(best->chance + elsewhere.chance);
    return std::max(0.0F, best->incoherent - elsewhere.incoherent - chance);
}

void GridComb::measurePhases(size_t period) {
    shares_.resize(period);
    for (size_t phase = 0; phase < period; ++phase) {
        shares_[phase] = trimmedShare(phase, period);
    }
}

CombStrength GridComb::strength(const EdgeProfile::Counts& counts, size_t strips, size_t frames,
                                size_t longest, size_t period_step) {
    counts_ = &counts;
    frames_ = static_cast<float>(frames);
    least_living_ = std::max(1.0F, kLivingShare * static_cast<float>(strips * frames));
    CombStrength strength;
    for (size_t period = kShortestPeriod; period <= longest; period += period_step) {
        if (counts.living.size() < 2 * kGridMargin + kFewestTeeth * period) {
            break;
        }
        measurePhases(period);
        strength.any = std::max(strength.any, standingOut(shares_, shares_));
        if (period == 2 * kShortestPeriod) {
            std::vector<Share> both(shares_.begin(), shares_.begin() + kShortestPeriod);
            std::vector<Share> either(shares_.begin() + kShortestPeriod, shares_.end());
            for (size_t p = 0; p < kShortestPeriod; ++p) {
                if (both[p].incoherent > either[p].incoherent) {
                    std::swap(both[p], either[p]);
                }
            }
            strength.eight = standingOut(both, either);
        }
    }
    return strength;
}

}  // namespace ZELJudges

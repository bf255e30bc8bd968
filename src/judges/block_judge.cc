#include "judges/block_judge.h"

#include <algorithm>

namespace ZELJudges {
namespace {

constexpr double kSlackS = 1e-3;
constexpr double kWindowS = 0.25;   // over which edges are gathered before combs are laid over them
constexpr double kReachS = 0.5;     // to either side over which strengths are averaged
constexpr double kMostWaitS = 5.0;  // for a weak beginning to become strong

constexpr float kNearLimit = 0.092F;  // share of strips
constexpr float kFarLimit = 0.04F;
constexpr float kFlatLimit = 0.15F;  // share of steps
// As if a frame had so many steps more, none of them flat: of few, a share tells nothing.
constexpr float kFewSteps = 20.0F;
constexpr float kFewStepsOfCells = 0.006F;
constexpr float kStays = 0.6F;  // of the limit, once blocky

constexpr size_t kLongestPeriod = 32;
constexpr size_t kLongestFarPeriod = 24;  // loop filters are laid over grids of whole blocks
constexpr size_t kFarPeriodStep = 4;

}  // namespace

std::span<const Stretch> BlockJudge::feed(const MeasuredFrame& frame, double time_s, double duration_s) {
    settled_.clear();
    if (frame.width != width_ || frame.height != height_ || time_s < start_s_) {
        end();
        width_ = frame.width;
        height_ = frame.height;
    }
    if (frame.has_edges && looks_ > 0 && time_s >= start_s_ + kWindowS - kSlackS) {
        closeWindow();
    }
    if (frame.has_edges) {
        look(frame, time_s);
    }
    end_s_ = time_s + duration_s;
    return settled_;
}

std::span<const Stretch> BlockJudge::finish() {
    settled_.clear();
    end();
    return settled_;
}

void BlockJudge::look(const MeasuredFrame& frame, double time_s) {
    if (looks_ == 0) {
        start_s_ = time_s;
        columns_ = frame.column_edges;
        rows_ = frame.row_edges;
        flat_steps_ = frame.flat_steps;
        cells_ = frame.cells.luma.size();
    } else {
        columns_.add(frame.column_edges);
        rows_.add(frame.row_edges);
        flat_steps_.all += frame.flat_steps.all;
        flat_steps_.flat += frame.flat_steps.flat;
    }
    ++looks_;
}

void BlockJudge::closeWindow() {
    windows_.push_back({start_s_, end_s_, strength()});
    looks_ = 0;
    judge(false);
}

float BlockJudge::strength() {
    const auto stronger = [](const CombStrength& across, const CombStrength& down) {
        return std::max({across.eight, down.eight, std::min(across.any, down.any)});
    };
    const size_t across = height_ / 8;
    const size_t down = width_ / 8;
    const float near = stronger(comb_.strength(columns_.near, across, looks_, kLongestPeriod, 1),
                                comb_.strength(rows_.near, down, looks_, kLongestPeriod, 1));
    const float far =
        stronger(comb_.strength(columns_.far, across, looks_, kLongestFarPeriod, kFarPeriodStep),
                 comb_.strength(rows_.far, down, looks_, kLongestFarPeriod, kFarPeriodStep));
    return std::max({near / kNearLimit, far / kFarLimit, flatShare() / kFlatLimit});
}

float BlockJudge::flatShare() const {
    const float few =
        (kFewSteps + kFewStepsOfCells * static_cast<float>(cells_)) * static_cast<float>(looks_);
    return static_cast<float>(flat_steps_.flat) / (static_cast<float>(flat_steps_.all) + few);
}

float BlockJudge::meanStrength(size_t window) const {
    const double middle_s = windows_[window].middle();
    float sum = 0.0F;
    float count = 0.0F;
    for (const Window& other : windows_) {
        if (std::abs(other.middle() - middle_s) <= kReachS) {
            sum += other.strength;
            count += 1.0F;
        }
    }
    return sum / count;
}

void BlockJudge::judge(bool at_end) {
    while (judged_ < windows_.size() &&
           (at_end || windows_.back().middle() >= windows_[judged_].middle() + kReachS)) {
        const float mean = meanStrength(judged_);
        const bool strong = windows_[judged_].strength >= kStays;
        ++judged_;
        if (mean < kStays) {
            open_ = false;
            settle(judged_, false);
        } else if (open_ || mean >= 1.0F) {
            if (!open_) {
                open_ = true;
                size_t first = unsettled_;  // a weak beginning belongs to it
                while (first < judged_ && windows_[first].strength < kStays) {
                    ++first;
                }
                settle(first, false);
            }
            if (strong) {
                settle(judged_, true);
            }
        } else {
            while (windows_[unsettled_].end_s < windows_[judged_ - 1].end_s - kMostWaitS) {
                settle(unsettled_ + 1, false);
            }
        }
    }
    // What no later mean reaches back to.
    size_t old = 0;
    while (old < unsettled_ && old < judged_ &&
           windows_[old].middle() < windows_[judged_ - 1].middle() - kReachS) {
        ++old;
    }
    windows_.erase(windows_.begin(), windows_.begin() + static_cast<std::ptrdiff_t>(old));
    judged_ -= old;
    unsettled_ -= old;
}

void BlockJudge::settle(size_t end, bool present) {
    for (; unsettled_ < end; ++unsettled_) {
        const Window& window = windows_[unsettled_];
        settled_.push_back({window.start_s, window.end_s, present, window.strength * kNearLimit, kNearLimit});
    }
}

void BlockJudge::end() {
    if (looks_ > 0) {
        closeWindow();
    }
    judge(true);
    settle(windows_.size(), false);
    windows_.clear();
    judged_ = 0;
    unsettled_ = 0;
    open_ = false;
}

}  // namespace ZELJudges

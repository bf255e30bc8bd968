#include "judges/loss_judge.h"

#include <algorithm>
#include <cstdlib>

namespace ZELJudges {
namespace {

// What a decoder's memory holds before anything is decoded into it: mid-grey, or zeros, which look green. A
// frame that was coded once more is off by a little.
constexpr int kGrey = 128 * kMeanScale;
constexpr int kGreyLuma = 127 * kMeanScale;  // 126 in limited range, 128 as memory
constexpr int kMostOff = 4 * kMeanScale;
constexpr int kMostGreen = 24 * kMeanScale;  // of all three planes
constexpr int kMostUneven = 8;               // from the darkest to the brightest sample of a cell

constexpr double kLeastShare = 0.03;  // of the cells
constexpr double kLeastRun = 0.2;     // of a row, on average
constexpr int kMostMotion = 12 * kMeanScale;
constexpr double kLeastGoingOn = 0.6;  // share of the cells that are not lost
constexpr double kLeastRest = 0.05;    // of the cells are not lost

bool isBlank(int luma, int cb, int cr) {
    const bool grey = std::abs(luma - kGreyLuma) <= kMostOff && std::abs(cb - kGrey) <= kMostOff &&
                      std::abs(cr - kGrey) <= kMostOff;
    return grey || std::max({luma, cb, cr}) <= kMostGreen;
}

}  // namespace

std::span<const Stretch> LossJudge::feed(const Cells& cells, double time_s, double duration_s) {
    const bool has_before = cells.columns == columns_ && cells.luma.size() == luma_.size();
    const auto all = static_cast<double>(std::max<size_t>(cells.luma.size(), 1));
    const auto is_much = [all](size_t count) { return static_cast<double>(count) >= kLeastShare * all; };
    std::swap(blank_, blank_before_);
    const size_t blank = markBlank(cells);
    if (!is_much(blank) || !has_before) {
        lost_ = false;
    } else if (!lost_) {
        size_t fresh = 0;
        for (size_t i = 0; i < blank_.size(); ++i) {
            fresh += blank_[i] & ~blank_before_[i] & 1U;
        }
        lost_ = is_much(fresh) && liesInRows(cells.columns) && restGoesOn(cells);
    }
    columns_ = cells.columns;
    luma_.assign(cells.luma.begin(), cells.luma.end());
    last_ = {time_s, time_s + duration_s, lost_, static_cast<float>(static_cast<double>(blank) / all),
             static_cast<float>(kLeastShare)};
    return {&last_, 1};
}

void LossJudge::finish() {
    luma_.clear();
    lost_ = false;
}

/// Marks and counts the cells that show nothing decoded.
size_t LossJudge::markBlank(const Cells& cells) {
    blank_.assign(cells.luma.size(), 0);
    if (cells.cb.empty()) {
        return 0;
    }
    size_t count = 0;
    for (size_t y = 0; y < cells.rows; ++y) {
        const size_t chroma_row = std::min(y / 2, cells.chroma_rows - 1) * cells.chroma_columns;
        for (size_t x = 0; x < cells.columns; ++x) {
            const size_t i = y * cells.columns + x;
            const size_t chroma = chroma_row + std::min(x / 2, cells.chroma_columns - 1);
            if (cells.brightest[i] - cells.darkest[i] <= kMostUneven &&
                isBlank(cells.luma[i], cells.cb[chroma], cells.cr[chroma])) {
                blank_[i] = 1;
                ++count;
            }
        }
    }
    return count;
}

/// Slices run along rows of blocks, so what is lost with them does.
bool LossJudge::liesInRows(size_t columns) const {
    size_t cells = 0;
    size_t runs = 0;
    for (size_t i = 0; i < blank_.size(); ++i) {
        cells += blank_[i];
        runs += blank_[i] != 0 && (i % columns == 0 || blank_[i - 1] == 0) ? 1U : 0U;
    }
    return static_cast<double>(cells) >= kLeastRun * static_cast<double>(columns) * static_cast<double>(runs);
}

/// No cut: most of what is not lost is where it was.
bool LossJudge::restGoesOn(const Cells& cells) const {
    size_t rest = 0;
    size_t like = 0;
    for (size_t i = 0; i < blank_.size(); ++i) {
        const size_t shown = blank_[i] == 0 ? 1U : 0U;
        rest += shown;
        like += std::abs(cells.luma[i] - luma_[i]) <= kMostMotion ? shown : 0U;
    }
    return static_cast<double>(rest) >= kLeastRest * static_cast<double>(blank_.size()) &&
           static_cast<double>(like) >= kLeastGoingOn * static_cast<double>(rest);
}

}  // namespace ZELJudges

#include "judges/loss_judge.h"

#include <algorithm>
#include <cstdlib>

#include "judges/cell_kernels.h"

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

void markBlankLuma(Cells& cells) {
    cells.blank.resize(cells.luma.size());
    cells.blank_count = markPlain({.luma = cells.luma.data(),
                                   .darkest = cells.darkest.data(),
                                   .brightest = cells.brightest.data(),
                                   .count = cells.luma.size()},
                                  {.most_uneven = kMostUneven,
                                   .most_dark = kMostGreen,
                                   .least_grey = kGreyLuma - kMostOff,
                                   .most_grey = kGreyLuma + kMostOff},
                                  cells.blank.data());
}

double shareOf(size_t count, const Cells& cells) {
    return static_cast<double>(count) / static_cast<double>(std::max<size_t>(cells.luma.size(), 1));
}

bool hasMoved(int now, int before) {
    return std::abs(now - before) > kMostOff;
}

bool isMuch(size_t count, const Cells& cells) {
    return shareOf(count, cells) >= kLeastShare;
}

}  // namespace

bool BlankLuma::turnsUp(Cells& cells) {
    markBlankLuma(cells);
    const std::vector<uint8_t>& marks = cells.blank;
    size_t fresh = cells.blank_count;
    if (isMuch(fresh, cells) && marks_.size() == marks.size()) {
        fresh = 0;
        for (size_t i = 0; i < marks.size(); ++i) {
            const bool is_same = marks[i] == marks_[i] && !hasMoved(cells.luma[i], luma_[i]);
            fresh += marks[i] != 0 && !is_same ? 1U : 0U;
        }
    }
    luma_.assign(cells.luma.begin(), cells.luma.end());
    marks_.assign(marks.begin(), marks.end());
    return isMuch(fresh, cells);
}

std::span<const Stretch> LossJudge::feed(const Cells& cells, double time_s, double duration_s) {
    const bool has_before = cells.columns == columns_ && cells.luma.size() == luma_.size();
    std::swap(blank_, blank_before_);
    blank_.assign(cells.blank.begin(), cells.blank.end());
    size_t blank = cells.blank_count;
    if (!has_before) {
        chroma_.clear();
    }
    if (cells.has_chroma) {
        noteChroma(cells);
    }
    if (isMuch(blank, cells)) {
        blank = unmarkColoured(cells);
    }
    if (!isMuch(blank, cells) || !has_before) {
        lost_ = false;
    } else if (!lost_ && cells.has_chroma) {
        size_t fresh = 0;
        for (size_t i = 0; i < blank_.size(); ++i) {
            const bool is_fresh =
                blank_[i] != 0 && blank_before_[i] == 0 && hasMoved(cells.luma[i], luma_[i]);
            fresh += is_fresh ? 1U : 0U;
        }
        lost_ = isMuch(fresh, cells) && liesInRows(cells.columns) && restGoesOn(cells);
    }
    columns_ = cells.columns;
    luma_.assign(cells.luma.begin(), cells.luma.end());
    last_ = {time_s, time_s + duration_s, lost_, static_cast<float>(shareOf(blank, cells)),
             static_cast<float>(kLeastShare)};
    return {&last_, 1};
}

void LossJudge::finish() {
    luma_.clear();
    lost_ = false;
}

void LossJudge::noteChroma(const Cells& cells) {
    chroma_.resize(cells.cb.size());
    for (size_t i = 0; i < chroma_.size(); ++i) {
        const int cb = cells.cb[i];
        const int cr = cells.cr[i];
        const bool is_grey = std::abs(cb - kGrey) <= kMostOff && std::abs(cr - kGrey) <= kMostOff;
        const bool is_green = std::max(cb, cr) <= kMostGreen;
        chroma_[i] = static_cast<uint8_t>((is_grey ? kGreyMark : 0) | (is_green ? kDarkMark : 0));
    }
    chroma_columns_ = cells.chroma_columns;
}

/// Takes the marks from cells whose chroma shows that something was decoded; returns how many keep theirs.
size_t LossJudge::unmarkColoured(const Cells& cells) {
    if (chroma_.empty()) {  // not needed yet, or too small a frame
        std::fill(blank_.begin(), blank_.end(), uint8_t{0});
        return 0;
    }
    const size_t chroma_rows = chroma_.size() / chroma_columns_;
    size_t kept = 0;
    for (size_t y = 0; y < cells.rows; ++y) {
        const uint8_t* const chroma = chroma_.data() + std::min(y / 2, chroma_rows - 1) * chroma_columns_;
        uint8_t* const marks = blank_.data() + y * cells.columns;
        for (size_t x = 0; x < cells.columns; ++x) {
            marks[x] &= chroma[std::min(x / 2, chroma_columns_ - 1)];
            kept += marks[x] != 0 ? 1U : 0U;
        }
    }
    return kept;
}

/// Slices run along rows of blocks, so what is lost with them does.
bool LossJudge::liesInRows(size_t columns) const {
    size_t cells = 0;
    size_t runs = 0;
    for (size_t i = 0; i < blank_.size(); ++i) {
        cells += blank_[i] != 0 ? 1U : 0U;
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

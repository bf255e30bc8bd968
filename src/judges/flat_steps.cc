#include "judges/flat_steps.h"

#include <algorithm>
#include <cstdlib>

#include "judges/cell_kernels.h"

namespace ZELJudges {
namespace {

constexpr int kLeastStep = 4 * kMeanScale;
constexpr int kMostUneven = 2 * kMeanScale;  // within a flat cell
constexpr int kUnevenPart = 4;               // of a larger step, which may go on in its cells
constexpr int kSamePart = 8;                 // of a step that another may differ from it and be the same
constexpr int kLongest = 8;                  // run of steps one way that may be of a mosaic

int unevenness(const Cells& cells, size_t i) {
    return (cells.brightest[i] - cells.darkest[i]) * kMeanScale;
}

}  // namespace

/// Adds the step from cell `a` to cell `b`, the `at`th along the line; between those that are added there are
/// none.
void FlatStepCounter::Line::add(const Cells& cells, size_t a, size_t b, size_t at, FlatSteps& steps) {
    if (at != next_) {
        close(steps);
        way_ = 0;
    }
    next_ = at + 1;
    const int step = cells.luma[b] - cells.luma[a];
    const int way = step < 0 ? -1 : 1;
    steps.all += way != way_ ? 1U : 0U;
    way_ = way;
    const bool is_flat = std::max(unevenness(cells, a), unevenness(cells, b)) <=
                         std::max(kMostUneven, std::abs(step) / kUnevenPart);
    if (length_ > 0 && (!is_flat || (step < 0) != (step_ < 0))) {
        close(steps);
    }
    if (is_flat && length_ == 0) {
        step_ = step;
    }
    length_ += is_flat ? 1 : 0;
}

void FlatStepCounter::Line::close(FlatSteps& steps) {
    if (length_ == 0) {
        return;
    }
    const bool is_same = std::abs(step_ - last_) <= std::max(kLeastStep / 2, std::abs(last_) / kSamePart);
    steps.flat += length_ <= kLongest && !is_same ? 1U : 0U;
    last_ = step_;
    length_ = 0;
}

/// Marks the cells that differ from those `apart` further on; the last ones are left unmarked.
void FlatStepCounter::mark(const Cells& cells, size_t apart) {
    const size_t count = cells.luma.size();
    marks_.assign(count, 0);
    if (count > apart) {
        markUnlike(cells.luma.data() + apart, cells.luma.data(), count - apart, kLeastStep - 1,
                   marks_.data());
    }
}

FlatSteps FlatStepCounter::count(const Cells& cells) {
    FlatSteps steps;
    mark(cells, 1);
    upright_.assign(cells.columns, {});
    for (size_t y = 0; y < cells.rows; ++y) {
        for (size_t x = 0; x + 1 < cells.columns; ++x) {
            if (const size_t i = y * cells.columns + x; marks_[i] != 0) {
                upright_[x].add(cells, i, i + 1, y, steps);
            }
        }
    }
    for (Line& line : upright_) {
        line.close(steps);
    }
    mark(cells, cells.columns);
    for (size_t y = 0; y + 1 < cells.rows; ++y) {
        Line level;
        for (size_t x = 0; x < cells.columns; ++x) {
            if (const size_t i = y * cells.columns + x; marks_[i] != 0) {
                level.add(cells, i, i + cells.columns, x, steps);
            }
        }
        level.close(steps);
    }
    return steps;
}

}  // namespace ZELJudges

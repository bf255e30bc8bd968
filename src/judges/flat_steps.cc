#include "judges/flat_steps.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <vector>

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

/// Follows the steps along one line between cells.
class Line {
  public:
    void add(const Cells& cells, size_t a, size_t b, FlatSteps& steps) {
        const int step = cells.luma[b] - cells.luma[a];
        const int height = std::abs(step);
        const int way = height < kLeastStep ? 0 : step < 0 ? -1 : 1;
        steps.all += way != 0 && way != way_ ? 1U : 0U;
        way_ = way;
        const bool is_flat = way != 0 && std::max(unevenness(cells, a), unevenness(cells, b)) <=
                                             std::max(kMostUneven, height / kUnevenPart);
        if (length_ > 0 && (!is_flat || (step < 0) != (step_ < 0))) {
            close(steps);
        }
        if (is_flat && length_ == 0) {
            step_ = step;
        }
        length_ += is_flat ? 1 : 0;
    }

    void close(FlatSteps& steps) {
        if (length_ == 0) {
            return;
        }
        const bool is_same = std::abs(step_ - last_) <= std::max(kLeastStep / 2, std::abs(last_) / kSamePart);
        steps.flat += length_ <= kLongest && !is_same ? 1U : 0U;
        last_ = step_;
        length_ = 0;
    }

  private:
    int way_ = 0;     // of the last step
    int length_ = 0;  // of the run of flat steps that goes on
    int step_ = 0;    // its first one
    int last_ = 0;    // of the run before
};

}  // namespace

FlatSteps countFlatSteps(const Cells& cells) {
    FlatSteps steps;
    std::vector<Line> upright(cells.columns);
    for (size_t y = 0; y < cells.rows; ++y) {
        Line level;
        for (size_t x = 0; x < cells.columns; ++x) {
            const size_t i = y * cells.columns + x;
            if (x + 1 < cells.columns) {
                upright[x].add(cells, i, i + 1, steps);
            }
            if (y + 1 < cells.rows) {
                level.add(cells, i, i + cells.columns, steps);
            }
        }
        level.close(steps);
    }
    for (Line& line : upright) {
        line.close(steps);
    }
    return steps;
}

}  // namespace ZELJudges

#include "judges/black_judge.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "judges/cell_kernels.h"

namespace ZELJudges {
namespace {

constexpr int kMostLuma = 29 * kMeanScale;
constexpr int kMostUneven = 5 * kMeanScale;  // from the mean of all that is dark
constexpr int kMostChroma = 6 * kMeanScale;  // from grey
constexpr int kGrey = 128 * kMeanScale;
constexpr double kLeastShare = 0.9;    // of the cells are black; the rest stands in the corners
constexpr double kStrayShare = 0.001;  // of the cells may not be black where they like
constexpr double kCornerWidth = 0.4;   // of the frame
constexpr double kCornerHeight = 0.25;
constexpr int kMostCorners = 2;
constexpr double kMostColoured = 0.1;  // of the cells of chroma

double darkShare(const Cells& cells) {
    return static_cast<double>(cells.dark.count) /
           static_cast<double>(std::max<size_t>(cells.luma.size(), 1));
}

bool isDark(int mean) {
    return mean <= kMostLuma;
}

/// Which of the corners 0 to 3 a cell stands in; 4 for none.
size_t cornerOf(const Cells& cells, size_t x, size_t y) {
    const auto end = [](size_t at, size_t count, double share) {
        const auto middle = static_cast<double>(at) + 0.5;
        const auto all = static_cast<double>(count);
        return middle < share * all ? 0 : middle > (1.0 - share) * all ? 1 : 2;
    };
    const int across = end(x, cells.columns, kCornerWidth);
    const int down = end(y, cells.rows, kCornerHeight);
    return across == 2 || down == 2 ? 4 : static_cast<size_t>(2 * down + across);
}

bool restIsLogo(const Cells& cells, int black) {
    std::array<size_t, 5> bright{};
    for (size_t y = 0; y < cells.rows; ++y) {
        for (size_t x = 0; x < cells.columns; ++x) {
            const int mean = cells.luma[y * cells.columns + x];
            if (!isDark(mean) || std::abs(mean - black) > kMostUneven) {
                ++bright[cornerOf(cells, x, y)];
            }
        }
    }
    const double stray = kStrayShare * static_cast<double>(cells.luma.size());
    const auto corners = std::count_if(bright.begin(), bright.end() - 1,
                                       [stray](size_t count) { return static_cast<double>(count) > stray; });
    return static_cast<double>(bright[4]) <= stray && corners <= kMostCorners;
}

bool isColourless(const Cells& cells) {
    size_t coloured = 0;
    for (size_t i = 0; i < cells.cb.size(); ++i) {
        coloured +=
            std::abs(cells.cb[i] - kGrey) > kMostChroma || std::abs(cells.cr[i] - kGrey) > kMostChroma;
    }
    return static_cast<double>(coloured) <= kMostColoured * static_cast<double>(cells.cb.size());
}

}  // namespace

bool BlackJudge::needsChroma(Cells& cells) {
    cells.dark = sumUpTo(cells.luma.data(), cells.luma.size(), kMostLuma);
    return darkShare(cells) >= kLeastShare;
}

std::span<const Stretch> BlackJudge::feed(const Cells& cells, double time_s, double duration_s) {
    const double share = darkShare(cells);
    const bool black = share >= kLeastShare && isColourless(cells) &&
                       restIsLogo(cells, static_cast<int>(cells.dark.sum / cells.dark.count));
    last_ = {time_s, time_s + duration_s, black, static_cast<float>(share), static_cast<float>(kLeastShare)};
    return {&last_, 1};
}

}  // namespace ZELJudges

#include "judges/exposure_judge.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace ZELJudges {
namespace {

constexpr int kBorder = 20 * kMeanScale;  // no brighter cell in a border
constexpr double kLeastArea = 1.0 / 3.0;  // of the frame inside its borders; of less, nothing is said
constexpr int kBright = 90 * kMeanScale;
constexpr int kDark = 150 * kMeanScale;
constexpr uint8_t kCeiling = 230;  // no darker sample in a clipped cell

constexpr float kLeastBright = 0.02F;
constexpr float kLeastDark = 0.05F;   // the edge of a border may be among them
constexpr float kMostClipped = 0.2F;  // more than lamps and windows

/// Cells inside the borders, first and one past the last.
struct Area {
    size_t top;
    size_t bottom;
    size_t left;
    size_t right;
};

Area withoutBorders(const Cells& cells) {
    Area area{.top = cells.rows, .bottom = 0, .left = cells.columns, .right = 0};
    for (size_t y = 0; y < cells.rows; ++y) {
        const auto row = cells.luma.begin() + static_cast<std::ptrdiff_t>(y * cells.columns);
        const auto end = row + static_cast<std::ptrdiff_t>(cells.columns);
        const auto shows = [](int mean) { return mean > kBorder; };
        const auto first = std::find_if(row, end, shows);
        if (first == end) {
            continue;
        }
        const auto last =
            std::find_if(std::make_reverse_iterator(end), std::make_reverse_iterator(first), shows);
        area.top = std::min(area.top, y);
        area.bottom = y + 1;
        area.left = std::min(area.left, static_cast<size_t>(first - row));
        area.right = std::max(area.right, static_cast<size_t>(last.base() - row));
    }
    return area;
}

struct Counts {
    size_t all = 0;
    size_t bright = 0;
    size_t dark = 0;
    size_t clipped = 0;
};

Counts count(const Cells& cells, const Area& area) {
    Counts counts;
    for (size_t y = area.top; y < area.bottom; ++y) {
        for (size_t i = y * cells.columns + area.left; i < y * cells.columns + area.right; ++i) {
            counts.bright += cells.luma[i] >= kBright;
            counts.dark += cells.luma[i] < kDark;
            counts.clipped += cells.darkest[i] >= kCeiling;
        }
        counts.all += area.right - area.left;
    }
    return counts;
}

}  // namespace

ExposureJudge::Verdicts ExposureJudge::feed(const Cells& cells, bool is_black, double time_s,
                                            double duration_s) {
    const Counts counts = count(cells, withoutBorders(cells));
    const auto share = [&counts](size_t part) {
        return static_cast<float>(part) / static_cast<float>(std::max<size_t>(counts.all, 1));
    };
    const bool judged =
        !is_black && counts.all > 0 &&
        static_cast<double>(counts.all) >= kLeastArea * static_cast<double>(cells.luma.size());
    const double end_s = time_s + duration_s;
    const float bright = share(counts.bright);
    under_ = {time_s, end_s, judged && bright < kLeastBright, bright, kLeastBright};
    const float clipped = share(counts.clipped);
    const float dark = share(counts.dark);
    over_ = clipped > kMostClipped ? Stretch{time_s, end_s, judged, clipped, kMostClipped}
                                   : Stretch{time_s, end_s, judged && dark < kLeastDark, dark, kLeastDark};
    return {.under = {&under_, 1}, .over = {&over_, 1}};
}

}  // namespace ZELJudges

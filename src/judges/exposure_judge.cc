#include "judges/exposure_judge.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace ZELJudges {
namespace {

constexpr uint8_t kBorder = 40;  // nothing brighter in a border
constexpr int kBright = 110 * kMeanScale;
constexpr int kDark = 150 * kMeanScale;
constexpr uint8_t kFloor = 20;
constexpr uint8_t kCeiling = 230;
constexpr uint8_t kHighlight = 150;

constexpr float kLeastShare = 0.02F;
constexpr float kMostCrushed = 1.0F / 3.0F;
constexpr float kMostClipped = 0.2F;

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
        const auto row = cells.brightest.begin() + static_cast<std::ptrdiff_t>(y * cells.columns);
        const auto end = row + static_cast<std::ptrdiff_t>(cells.columns);
        const auto shows = [](uint8_t brightest) { return brightest > kBorder; };
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
    size_t crushed = 0;
    size_t clipped = 0;
    uint8_t brightest = 0;
};

Counts count(const Cells& cells, const Area& area) {
    Counts counts;
    for (size_t y = area.top; y < area.bottom; ++y) {
        for (size_t i = y * cells.columns + area.left; i < y * cells.columns + area.right; ++i) {
            counts.bright += cells.luma[i] >= kBright;
            counts.dark += cells.luma[i] < kDark;
            counts.crushed += cells.brightest[i] <= kFloor;
            counts.clipped += cells.darkest[i] >= kCeiling;
            counts.brightest = std::max(counts.brightest, cells.brightest[i]);
        }
        counts.all += area.right - area.left;
    }
    return counts;
}

}  // namespace

ExposureJudge::Verdicts ExposureJudge::feed(const Cells& cells, double time_s, double duration_s) {
    const Counts counts = count(cells, withoutBorders(cells));
    const auto share = [&counts](size_t part) {
        return static_cast<float>(part) / static_cast<float>(std::max<size_t>(counts.all, 1));
    };
    const bool under = share(counts.bright) < kLeastShare ||
                       (share(counts.crushed) > kMostCrushed && counts.brightest <= kHighlight);
    const bool over = share(counts.dark) < kLeastShare || share(counts.clipped) > kMostClipped;
    const double end_s = time_s + duration_s;
    under_ = {time_s, end_s, counts.all > 0 && under, share(counts.bright), kLeastShare};
    over_ = {time_s, end_s, counts.all > 0 && over, share(counts.dark), kLeastShare};
    return {.under = {&under_, 1}, .over = {&over_, 1}};
}

}  // namespace ZELJudges

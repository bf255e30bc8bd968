#include "judges/changed_rows.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>

namespace ZELJudges {
namespace {

constexpr double kTickerHeight = 0.12;  // of the frame at most
constexpr double kTickerReach = 0.2;    // from its upper and lower end

size_t shareOfRows(size_t rows, double share) {
    return static_cast<size_t>(std::ceil(static_cast<double>(rows) * share));
}

}  // namespace

ChangedRows::ChangedRows(const std::vector<uint16_t>& marks, size_t rows) : columns_(marks.size() / rows) {
    for (size_t y = 0; y < rows; ++y) {
        const auto row = marks.begin() + static_cast<std::ptrdiff_t>(y * columns_);
        const auto unmarked = std::count(row, row + static_cast<std::ptrdiff_t>(columns_), 0);
        counts_.push_back(columns_ - static_cast<size_t>(unmarked));
    }
}

size_t ChangedRows::ticker() const {
    const size_t reach = shareOfRows(counts_.size(), kTickerReach);
    return std::max(band(0, reach), band(counts_.size() - reach, counts_.size()));
}

size_t ChangedRows::inner() const {
    const auto outer = static_cast<std::ptrdiff_t>(shareOfRows(counts_.size(), kTickerHeight));
    return outer * 2 >= std::ssize(counts_)
               ? 0
               : std::accumulate(counts_.begin() + outer, counts_.end() - outer, size_t{0});
}

/// From the first to the last row of which most cells are marked, if that is no higher than a ticker.
size_t ChangedRows::band(size_t first, size_t last) const {
    const auto crowded = [this](size_t y) { return 2 * counts_[y] > columns_; };
    while (first < last && !crowded(first)) {
        ++first;
    }
    while (first < last && !crowded(last - 1)) {
        --last;
    }
    if (last - first > shareOfRows(counts_.size(), kTickerHeight)) {
        return 0;
    }
    return std::accumulate(counts_.begin() + static_cast<std::ptrdiff_t>(first),
                           counts_.begin() + static_cast<std::ptrdiff_t>(last), size_t{0});
}

}  // namespace ZELJudges

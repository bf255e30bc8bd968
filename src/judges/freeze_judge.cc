#include "judges/freeze_judge.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <numeric>

#include "judges/cell_kernels.h"

namespace ZELJudges {
namespace {

constexpr double kSlackS = 1e-3;          // timestamps are rounded to milliseconds in some containers
constexpr double kLooksPerMinimum = 128;  // frames that come faster are passed over
constexpr size_t kRetryPart = 4;          // of a run that failed, after which another is tried
constexpr size_t kMostRows = 112;         // of cells; larger frames are measured in larger cells

// A cell has changed beyond kLeastChange levels, or beyond what kNoiseReach deviations of noise explain,
// which is taken to be kMostNoise at most.
constexpr double kLeastChange = 2.5;
constexpr double kNoiseReach = 4.5;
constexpr double kMostNoise = 1.5;
constexpr double kDeviationsPerMedian = 1.0 / 0.6745;  // of the absolute value, for a normal distribution

constexpr float kMostChanged = 0.06F;  // share of all cells
// A ticker does not count: one band of rows of which most cells have changed, near the upper or lower end.
constexpr double kTickerHeight = 0.12;
constexpr double kTickerReach = 0.2;
// Where changes spread by more than this over the second half of a run, something moves. Changes that come at
// once do not move: a frame was coded anew, a sign put up.
constexpr double kMostSpread = 1.15;
constexpr double kLeastSpread = 0.001;  // share of all cells
constexpr double kLeastSpreadCells = 4.0;

constexpr int kMostUneven = 3 * kMeanScale;
constexpr double kCardShare = 0.85;

size_t shareOfRows(size_t rows, double share) {
    return static_cast<size_t>(std::ceil(static_cast<double>(rows) * share));
}

/// Joins cells by fours until they are few enough; returns how many rows are left.
size_t pool(std::vector<uint16_t>& cells, size_t columns, size_t rows) {
    while (rows > kMostRows) {
        const size_t half = columns / 2;
        for (size_t y = 0; y < rows / 2; ++y) {
            const uint16_t* const upper = cells.data() + 2 * y * columns;
            const uint16_t* const lower = upper + columns;
            for (size_t x = 0; x < half; ++x) {
                cells[y * half + x] = static_cast<uint16_t>(
                    (upper[2 * x] + upper[2 * x + 1] + lower[2 * x] + lower[2 * x + 1]) / 4);
            }
        }
        columns = half;
        rows /= 2;
    }
    cells.resize(columns * rows);
    return rows;
}

/// Hardly anything but one plain colour: a title or a logo, which stands still by intent, or nothing at all.
bool isCard(std::vector<uint16_t> cells) {
    const auto middle = cells.begin() + static_cast<std::ptrdiff_t>(cells.size() / 2);
    std::nth_element(cells.begin(), middle, cells.end());
    const auto is_plain = [median = int{*middle}](int mean) {
        return std::abs(mean - median) <= kMostUneven;
    };
    const auto plain = std::count_if(cells.begin(), cells.end(), is_plain);
    return static_cast<double>(plain) >= kCardShare * static_cast<double>(cells.size());
}

/// Where the marked cells lie.
class ChangedRows {
  public:
    ChangedRows(const std::vector<uint16_t>& marks, size_t rows) : columns_(marks.size() / rows) {
        for (size_t y = 0; y < rows; ++y) {
            const auto row = marks.begin() + static_cast<std::ptrdiff_t>(y * columns_);
            const auto unmarked = std::count(row, row + static_cast<std::ptrdiff_t>(columns_), 0);
            counts_.push_back(columns_ - static_cast<size_t>(unmarked));
        }
    }

    /// Cells in the one band that may be a ticker.
    size_t ticker() const {
        const size_t reach = shareOfRows(counts_.size(), kTickerReach);
        return std::max(band(0, reach), band(counts_.size() - reach, counts_.size()));
    }

    /// Cells outside the rows where tickers run.
    size_t inner() const {
        const auto outer = static_cast<std::ptrdiff_t>(shareOfRows(counts_.size(), kTickerHeight));
        return outer * 2 >= std::ssize(counts_)
                   ? 0
                   : std::accumulate(counts_.begin() + outer, counts_.end() - outer, size_t{0});
    }

  private:
    /// From the first to the last row of which most cells are marked, if that is no higher than a ticker.
    size_t band(size_t first, size_t last) const {
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

    size_t columns_;
    std::vector<size_t> counts_;
};

/// How many 64ths of a level a cell may differ, from the noise that most cells show.
uint16_t changeLimit(const std::vector<uint16_t>& now, const std::vector<uint16_t>& then) {
    const auto limit_for = [](int median) {
        const double noise = std::min(kMostNoise, median * kDeviationsPerMedian / kMeanScale);
        return static_cast<uint16_t>(std::max(kLeastChange, kNoiseReach * noise) * kMeanScale);
    };
    // The smallest difference that half of the cells stay within, looked for where it decides.
    int low = static_cast<int>(kLeastChange / kNoiseReach / kDeviationsPerMedian * kMeanScale);
    int high = static_cast<int>(kMostNoise / kDeviationsPerMedian * kMeanScale) + 1;
    while (low < high) {
        const int middle = (low + high) / 2;
        const size_t like = countLike(now.data(), then.data(), now.size(), static_cast<uint16_t>(middle));
        if (2 * like >= now.size()) {
            high = middle;
        } else {
            low = middle + 1;
        }
    }
    return limit_for(low);
}

}  // namespace

FreezeJudge::FreezeJudge(double min_s) : min_s_(std::min(min_s, kLongestMinimumS)) {}

std::span<const Stretch> FreezeJudge::feed(const Cells& cells, double time_s, double duration_s) {
    settled_.clear();
    if (!looks_.empty()) {
        if (cells.columns != columns_ || cells.rows != rows_ || time_s < looks_.back().start_s) {
            end();
        } else if (time_s < looks_.back().start_s + min_s_ / kLooksPerMinimum - kSlackS) {
            looks_.back().end_s = time_s + duration_s;
            return settled_;
        }
    }
    if (!cells.luma.empty()) {
        addLook(cells, time_s, duration_s);
        if (looks_.size() == 1) {
            settled_s_ = time_s;
            beginRun(0);
        }
        while (next_ < looks_.size()) {
            compareNext();
        }
    }
    return settled_;
}

std::span<const Stretch> FreezeJudge::finish() {
    settled_.clear();
    end();
    return settled_;
}

void FreezeJudge::end() {
    if (!looks_.empty()) {
        settle(looks_.back().end_s, isLong(looks_.back().end_s) && !firstIsCard());
        looks_.clear();
        next_ = 0;
    }
}

void FreezeJudge::addLook(const Cells& cells, double time_s, double duration_s) {
    columns_ = cells.columns;
    rows_ = cells.rows;
    const double oldest_s = time_s + duration_s - min_s_ - kSlackS;
    size_t old = 0;
    while (old + 1 < looks_.size() && looks_[old].start_s < oldest_s) {
        ++old;
    }
    const size_t kept = looks_.size() - old;
    std::rotate(looks_.begin(), looks_.begin() + static_cast<std::ptrdiff_t>(old), looks_.end());
    looks_.resize(kept + 1);  // the memory of an old look serves the new one
    next_ -= old;             // all had been compared
    first_ -= std::min(first_, old);

    Look& look = looks_.back();
    look.start_s = time_s;
    look.end_s = time_s + duration_s;
    look.cells.assign(cells.luma.begin(), cells.luma.end());
    pooled_rows_ = pool(look.cells, columns_, rows_);
}

void FreezeJudge::beginRun(size_t look) {
    first_ = look;
    next_ = look + 1;
    alike_ = 1;
    told_ = false;
    run_start_s_ = looks_[look].start_s;
    first_cells_ = looks_[look].cells;
    first_is_card_.reset();
    changed_.assign(first_cells_.size(), 0);
    changed_count_ = 0;
    changed_share_ = 0.0F;
    growth_.assign(1, {run_start_s_, 0});
    last_end_s_ = looks_[look].end_s;
}

bool FreezeJudge::isLong(double end_s) const {
    return alike_ > 1 && end_s - run_start_s_ >= min_s_ - kSlackS;
}

bool FreezeJudge::firstIsCard() {
    if (!first_is_card_) {
        first_is_card_ = isCard(first_cells_);
    }
    return *first_is_card_;
}

void FreezeJudge::compareNext() {
    const Look& look = looks_[next_];
    if (!staysLikeFirst(look)) {
        if (isLong(last_end_s_)) {
            settle(last_end_s_, !firstIsCard());
            beginRun(next_);
        } else {
            tryLater();
        }
        return;
    }
    ++next_;
    ++alike_;
    last_end_s_ = look.end_s;
    if (!isLong(look.end_s)) {
        return;
    }
    const double half_s = (run_start_s_ + look.end_s) / 2.0;
    if (const double spread_s = spreadFrom(half_s); spread_s < look.end_s) {
        const double end_s = std::max({spread_s, looks_.front().start_s, settled_s_});
        if (isLong(end_s)) {
            settle(end_s, !firstIsCard());
            const auto starts_later = [end_s](const Look& other) { return other.start_s >= end_s; };
            beginRun(static_cast<size_t>(std::find_if(looks_.begin(), looks_.end() - 1, starts_later) -
                                         looks_.begin()));
        } else {
            tryLater();
        }
    } else if (const double sure_s = std::max(half_s, look.end_s - kSureAfterS); isLong(sure_s)) {
        settle(sure_s, !firstIsCard());
    }
}

/// Gives up a run that was too short. The next begins a good part into it, so that the cost stays linear.
void FreezeJudge::tryLater() {
    const size_t part = first_ + (next_ - first_) / kRetryPart;
    const size_t later = std::max(first_ + 1, part);
    settle(looks_[later].start_s, false);
    beginRun(later);
}

bool FreezeJudge::staysLikeFirst(const Look& look) {
    const size_t all = look.cells.size();
    const size_t count = markUnlike(look.cells.data(), first_cells_.data(), all,
                                    changeLimit(look.cells, first_cells_), changed_.data());
    if (count == changed_count_) {
        return true;
    }
    changed_count_ = count;
    const ChangedRows rows(changed_, pooled_rows_);
    const auto share = [all](size_t cells) { return static_cast<float>(cells) / static_cast<float>(all); };
    const float changed = share(count) > kMostChanged ? share(count - rows.ticker()) : share(count);
    if (changed > kMostChanged) {
        return false;
    }
    changed_share_ = changed;
    if (const size_t inner = rows.inner(); inner > growth_.back().cells) {
        growth_.push_back({look.start_s, inner});
    }
    return true;
}

/// When the changes first went beyond what is allowed for those up to `half_s`; infinite if they did not.
double FreezeJudge::spreadFrom(double half_s) const {
    const auto all = static_cast<double>(changed_.size());
    const double slack = std::max(kLeastSpread * all, kLeastSpreadCells);
    auto later = growth_.begin() + 1;
    while (later != growth_.end() && later->start_s <= half_s) {
        ++later;
    }
    const size_t before = std::prev(later)->cells;
    if (static_cast<double>(growth_.back().cells) <= kMostSpread * static_cast<double>(before) + slack) {
        return std::numeric_limits<double>::infinity();
    }
    const auto grown_at = [](auto growth) { return growth->cells - std::prev(growth)->cells; };
    auto largest = later;
    for (auto growth = later; growth != growth_.end(); ++growth) {
        largest = grown_at(growth) > grown_at(largest) ? growth : largest;
    }
    double steady = 0.0;
    for (auto growth = later; growth != growth_.end(); ++growth) {
        steady += growth == largest ? 0.0 : static_cast<double>(grown_at(growth));
        if (steady > slack) {
            return growth->start_s;
        }
    }
    return std::numeric_limits<double>::infinity();
}

void FreezeJudge::settle(double end_s, bool present) {
    if (end_s > settled_s_) {
        settled_.push_back({settled_s_, end_s, present, changed_share_, kMostChanged, !told_});
        told_ = true;
        settled_s_ = end_s;
    }
}

}  // namespace ZELJudges

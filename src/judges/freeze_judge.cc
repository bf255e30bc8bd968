#include "judges/freeze_judge.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <limits>

#include "judges/cell_change.h"
#include "judges/cell_kernels.h"
#include "judges/changed_rows.h"

namespace ZELJudges {
namespace {

constexpr double kSlackS = 1e-3;          // timestamps are rounded to milliseconds in some containers
constexpr double kLooksPerMinimum = 128;  // frames that come faster are passed over
constexpr size_t kRetryPart = 4;          // of a run that failed, after which another is tried
constexpr size_t kMostRows = 112;         // of cells; larger frames are measured in larger cells

constexpr float kMostChanged = 0.06F;  // share of all cells
// Where changes spread by more than this over the second half of a run, something moves. Changes that come at
// once do not move: a frame was coded anew, a sign put up.
constexpr double kMostSpread = 1.15;
constexpr double kLeastSpread = 0.001;  // share of all cells
constexpr double kLeastSpreadCells = 4.0;
constexpr double kStillPart = 0.5;  // of that, in what was still before something moved
constexpr double kStillOfMinimum = 0.8;

constexpr int kMostUneven = 3 * kMeanScale;
constexpr double kCardShare = 0.85;
constexpr double kLongestCardS = 10.0;  // on which something moved just before

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

/// Hardly anything but one plain colour: a title or a logo, which stands still by intent, nothing at all, or
/// a scene on a plain ground.
bool isCard(std::vector<uint16_t> cells) {
    const auto middle = cells.begin() + static_cast<std::ptrdiff_t>(cells.size() / 2);
    std::nth_element(cells.begin(), middle, cells.end());
    const auto is_plain = [median = int{*middle}](int mean) {
        return std::abs(mean - median) <= kMostUneven;
    };
    const auto plain = std::count_if(cells.begin(), cells.end(), is_plain);
    return static_cast<double>(plain) >= kCardShare * static_cast<double>(cells.size());
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
        release();
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
        settle(looks_.back().end_s, isLong(looks_.back().end_s) && (told_long_ || !isOfCard()));
        motion_ = {};
        release();
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
    motion_.see(look.cells, time_s);
}

void FreezeJudge::beginRun(size_t look) {
    first_ = look;
    next_ = look + 1;
    alike_ = 1;
    told_ = false;
    told_long_ = false;
    run_start_s_ = looks_[look].start_s;
    first_cells_ = looks_[look].cells;
    is_of_card_.reset();
    changed_.assign(first_cells_.size(), 0);
    changed_count_ = 0;
    changed_share_ = 0.0F;
    growth_.assign(1, {run_start_s_, 0});
    last_end_s_ = looks_[look].end_s;
}

bool FreezeJudge::isLong(double end_s) const {
    return alike_ > 1 && end_s - run_start_s_ >= min_s_ - kSlackS;
}

/// What fades in on a plain ground may still show, at first, a little of what was there before.
bool FreezeJudge::isOfCard() {
    if (!is_of_card_) {
        is_of_card_ = isCard(first_cells_) || isCard(looks_[next_ - 1].cells);
    }
    return *is_of_card_;
}

void FreezeJudge::compareNext() {
    const Look& look = looks_[next_];
    if (!staysLikeFirst(look)) {
        if (isLong(last_end_s_)) {
            settleRun(last_end_s_);
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
        if (isLong(end_s) && (told_ || wasStill(end_s))) {
            settleRun(end_s);
            const auto starts_later = [end_s](const Look& other) { return other.start_s >= end_s; };
            beginRun(static_cast<size_t>(std::find_if(looks_.begin(), looks_.end() - 1, starts_later) -
                                         looks_.begin()));
        } else {
            tryLater();
        }
    } else if (const double sure_s = std::max(half_s, look.end_s - kSureAfterS); isLong(sure_s)) {
        if (!isOfCard() || told_long_) {
            settle(sure_s, true);
        } else if (!motion_.ledTo({run_start_s_, look.end_s})) {
            settle(sure_s, false);
        } else if (look.end_s - run_start_s_ >= kLongestCardS) {
            told_long_ = true;
            settle(sure_s, true);
        }
    }
}

/// Settles the run in work, which was long enough. Of a plain frame that something led to it is not known yet
/// whether it was a card.
void FreezeJudge::settleRun(double end_s) {
    if (isOfCard() && !told_long_ && motion_.ledTo({run_start_s_, end_s})) {
        settle(end_s, true, SmallMotion::Span{run_start_s_, end_s});
    } else {
        settle(end_s, !isOfCard() || told_long_);
    }
}

/// Tells what is settled, up to what still depends on how the stream goes on.
void FreezeJudge::release() {
    auto waiting = waiting_.begin();
    for (; waiting != waiting_.end(); ++waiting) {
        if (waiting->until) {
            const auto goes_on = motion_.goesOnAfter(*waiting->until);
            if (!goes_on) {
                break;
            }
            waiting->stretch.present = *goes_on;
        }
        settled_.push_back(waiting->stretch);
    }
    waiting_.erase(waiting_.begin(), waiting);
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

double FreezeJudge::spreadSlack() const {
    return std::max(kLeastSpread * static_cast<double>(changed_.size()), kLeastSpreadCells);
}

/// Whether hardly anything spread for most of the minimum somewhere in the run up to `end_s`: if not, what
/// has moved since has moved all along.
bool FreezeJudge::wasStill(double end_s) const {
    const auto most = static_cast<size_t>(kStillPart * spreadSlack());
    const double still_s = kStillOfMinimum * min_s_;
    return std::any_of(growth_.begin(), growth_.end(), [&](const Growth& first) {
        const double until_s = first.start_s + still_s;
        const auto is_later = [until_s](const Growth& growth) { return growth.start_s > until_s; };
        const auto later = std::find_if(growth_.begin(), growth_.end(), is_later);
        return until_s <= end_s && std::prev(later)->cells - first.cells <= most;
    });
}

/// When the changes first went beyond what is allowed for those up to `half_s`; infinite if they did not.
double FreezeJudge::spreadFrom(double half_s) const {
    const double slack = spreadSlack();
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

void FreezeJudge::settle(double end_s, bool present, std::optional<SmallMotion::Span> until) {
    if (end_s > settled_s_) {
        waiting_.push_back({{settled_s_, end_s, present, changed_share_, kMostChanged, !told_}, until});
        told_ = true;
        settled_s_ = end_s;
    }
}

}  // namespace ZELJudges

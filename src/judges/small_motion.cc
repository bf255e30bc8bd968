#include "judges/small_motion.h"

#include <algorithm>
#include <cstdlib>

#include "judges/cell_change.h"
#include "judges/cell_kernels.h"

namespace ZELJudges {
namespace {

constexpr double kStepS = 0.2;   // from look to look, so that slow motion shows
constexpr double kLeastS = 1.0;  // of motion on either side
constexpr double kApartS = 0.5;  // between it and what looks frozen
constexpr double kKeptS = 20.0;
constexpr double kSmallShare = 0.2;  // of the cells change at most

}  // namespace

SmallMotion::Change SmallMotion::changeTo(const std::vector<uint16_t>& cells) const {
    const uint16_t limit = changeLimit(cells, before_);
    const size_t like = countLike(cells.data(), before_.data(), cells.size(), limit);
    if (like == cells.size()) {
        return Change::kNone;
    }
    if (static_cast<double>(cells.size() - like) > kSmallShare * static_cast<double>(cells.size())) {
        return Change::kCut;
    }
    std::vector<uint16_t> sorted = cells;
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    const int ground = *middle;
    bool comes = false;
    bool leaves = false;
    for (size_t i = 0; i < cells.size(); ++i) {
        const int now = cells[i];
        const int then = before_[i];
        if (std::abs(now - then) > limit) {
            (std::abs(now - ground) > std::abs(then - ground) ? comes : leaves) = true;
        }
    }
    return comes && leaves ? Change::kMotion : Change::kNone;
}

void SmallMotion::see(const std::vector<uint16_t>& cells, double time_s) {
    if (before_.empty()) {
        before_ = cells;
        before_s_ = time_s;
    }
    if (time_s < before_s_ + kStepS) {
        return;
    }
    const Change change = changeTo(cells);
    if (change == Change::kCut) {
        cut_s_ = time_s;
    } else if (change == Change::kMotion && !spans_.empty() && spans_.back().end_s >= before_s_ &&
               cut_s_ <= spans_.back().start_s) {
        spans_.back().end_s = time_s;
    } else if (change == Change::kMotion) {
        spans_.push_back({before_s_, time_s});
        std::erase_if(spans_, [time_s](Span span) { return span.end_s < time_s - kKeptS; });
    }
    before_ = cells;
    before_s_ = time_s;
}

bool SmallMotion::ledTo(Span still) const {
    const double latest_s = (still.start_s + still.end_s) / 2.0;
    return cut_s_ <= still.start_s && std::any_of(spans_.begin(), spans_.end(), [&](Span span) {
               return span.start_s <= still.start_s && span.end_s >= still.start_s - kApartS &&
                      std::min(span.end_s, latest_s) - span.start_s >= kLeastS;
           });
}

std::optional<bool> SmallMotion::goesOnAfter(Span still) const {
    if (cut_s_ <= still.start_s && !before_.empty()) {
        if (std::any_of(spans_.begin(), spans_.end(), [still](Span span) {
                return span.start_s <= still.end_s + kApartS &&
                       span.end_s - std::max(span.start_s, still.end_s) >= kLeastS;
            })) {
            return true;
        }
        if (before_s_ < still.end_s + kApartS + kLeastS + kStepS) {
            return std::nullopt;
        }
    }
    return false;
}

}  // namespace ZELJudges

#include "judges/either.h"

#include <algorithm>

namespace ZELJudges {

std::span<const Stretch> Either::feed(std::span<const Stretch> first, std::span<const Stretch> second) {
    take(first, second);
    join();
    return settled_;
}

std::span<const Stretch> Either::finish(std::span<const Stretch> first, std::span<const Stretch> second) {
    take(first, second);
    join();
    for (std::deque<Stretch>& rest : waiting_) {  // of one at most: what the other has nothing to say of
        for (const Stretch& stretch : rest) {
            settle(stretch, stretch.end_s);
        }
        rest.clear();
    }
    settled_s_ = -std::numeric_limits<double>::infinity();
    return settled_;
}

void Either::take(std::span<const Stretch> first, std::span<const Stretch> second) {
    settled_.clear();
    waiting_[0].insert(waiting_[0].end(), first.begin(), first.end());
    waiting_[1].insert(waiting_[1].end(), second.begin(), second.end());
}

void Either::join() {
    do {
        for (std::deque<Stretch>& waiting : waiting_) {
            while (!waiting.empty() && waiting.front().end_s <= settled_s_) {
                waiting.pop_front();
            }
        }
    } while (joinNext());
}

/// Settles what comes next, if that is known.
bool Either::joinNext() {
    if (waiting_[0].empty() || waiting_[1].empty()) {
        const std::deque<Stretch>& only = waiting_[waiting_[0].empty() ? 1 : 0];
        if (only.empty() || !only.front().present) {
            return false;
        }
        settle(only.front(), only.front().end_s);
        return true;
    }
    const auto starts = [this](const Stretch& stretch) { return std::max(stretch.start_s, settled_s_); };
    const Stretch* early = &waiting_[0].front();
    const Stretch* late = &waiting_[1].front();
    if (starts(*late) < starts(*early)) {
        std::swap(early, late);
    }
    if (starts(*early) < starts(*late)) {  // only one has anything there
        settle(*early, std::min(early->end_s, late->start_s));
    } else if (early->present != late->present) {
        settle(early->present ? *early : *late, early->present ? early->end_s : late->end_s);
    } else {
        settle(*early, std::min(early->end_s, late->end_s));
    }
    return true;
}

void Either::settle(const Stretch& stretch, double end_s) {
    Stretch part = stretch;
    part.start_s = std::max(stretch.start_s, settled_s_);
    part.end_s = end_s;
    if (part.end_s > part.start_s) {
        settled_.push_back(part);
    }
    settled_s_ = std::max(settled_s_, end_s);
}

}  // namespace ZELJudges

#ifndef ZEL_SRC_JUDGES_EITHER_H_
#define ZEL_SRC_JUDGES_EITHER_H_

#include <array>
#include <deque>
#include <limits>
#include <span>
#include <vector>

#include "judges/stretch.h"

namespace ZELJudges {

/// Joins two judges of one fault, which settle the same stream each at its own time: it is there where either
/// says so. One thread at a time.
class Either {
  public:
    /// What the two have settled next. Returns what is settled by that, valid until the next call: a fault as
    /// soon as one has told it, its absence when both have.
    std::span<const Stretch> feed(std::span<const Stretch> first, std::span<const Stretch> second);

    /// The end of the stream: the last of both. Settles the rest and begins anew.
    std::span<const Stretch> finish(std::span<const Stretch> first, std::span<const Stretch> second);

  private:
    void take(std::span<const Stretch> first, std::span<const Stretch> second);
    void join();
    bool joinNext();
    void settle(const Stretch& stretch, double end_s);

    std::array<std::deque<Stretch>, 2> waiting_;
    double settled_s_ = -std::numeric_limits<double>::infinity();
    std::vector<Stretch> settled_;
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_EITHER_H_

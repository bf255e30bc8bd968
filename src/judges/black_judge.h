#ifndef ZEL_SRC_JUDGES_BLACK_JUDGE_H_
#define ZEL_SRC_JUDGES_BLACK_JUDGE_H_

#include <span>

#include "judges/cells.h"
#include "judges/stretch.h"

namespace ZELJudges {

/// Tells black stretches: frames of nothing but one even black, but for a logo or a clock in one or two
/// corners. Noise averages out in a cell; a dark scene is uneven; a title, a subtitle and credits are no
/// logo, since they stand elsewhere. One thread at a time.
class BlackJudge {
  public:
    /// Measures how dark the luma of a frame is. Returns whether that leaves open that it is black.
    static bool needsChroma(Cells& cells);

    /// The next frame, measured by needsChroma(), with its chroma if that is needed, shown from `time_s` for
    /// `duration_s`. Returns its verdict, valid until the next call: the value is the share of black cells,
    /// the limit the least that is asked for.
    std::span<const Stretch> feed(const Cells& cells, double time_s, double duration_s);

  private:
    Stretch last_{};
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_BLACK_JUDGE_H_

#ifndef ZEL_SRC_JUDGES_EXPOSURE_JUDGE_H_
#define ZEL_SRC_JUDGES_EXPOSURE_JUDGE_H_

#include <span>

#include "judges/cells.h"
#include "judges/stretch.h"

namespace ZELJudges {

/// Tells frames that are exposed too little or too much. A mean says nothing: a night scene has its
/// highlights, snow and a white wall have their shadows, a badly exposed frame lacks them. Dark borders do
/// not count. One thread at a time.
class ExposureJudge {
  public:
    struct Verdicts {
        std::span<const Stretch> under;  ///< value: share of bright cells; limit: the least there should be
        /// Value: share of dark cells; limit: the least there should be. Or, if the value lies above the
        /// limit: share of cells at the ceiling, and the most there may be.
        std::span<const Stretch> over;
    };

    /// The next frame, shown from `time_s` for `duration_s`; nothing is wrong with the exposure of a black
    /// one. Returns its verdicts, valid until the next call.
    Verdicts feed(const Cells& cells, bool is_black, double time_s, double duration_s);

  private:
    Stretch under_{};
    Stretch over_{};
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_EXPOSURE_JUDGE_H_

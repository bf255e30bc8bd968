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
        std::span<const Stretch> under;  ///< value: share of cells that are bright; limit: the least
        std::span<const Stretch> over;   ///< value: share of cells that are dark; limit: the least
    };

    /// The next frame, shown from `time_s` for `duration_s`. Returns its verdicts, valid until the next call.
    Verdicts feed(const Cells& cells, double time_s, double duration_s);

  private:
    Stretch under_{};
    Stretch over_{};
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_EXPOSURE_JUDGE_H_

#ifndef ZEL_SRC_JUDGES_GRID_COMB_H_
#define ZEL_SRC_JUDGES_GRID_COMB_H_

#include <cstddef>
#include <vector>

#include "judges/grid_kernels.h"

namespace ZELJudges {

/// How much more a comb of equally spaced boundaries shows than the same comb elsewhere: a difference of
/// shares of strips, 0 to 1, less what chance makes of so few strips.
struct CombStrength {
    float any = 0.0F;    ///< of the period that shows most
    float eight = 0.0F;  ///< of period 8, on both of its halves of period 16
};

/// Finds coding grids in the edges of one direction. Keeps its memory from call to call.
class GridComb {
  public:
    /// `counts` were gathered over the `strips` strips of each of `frames` frames, which are so alike that
    /// only one of them speaks against chance; boundaries closer than kGridMargin to the ends of strips are
    /// not looked at. Periods up to `longest`, in steps of `period_step`, from 8 on.
    CombStrength strength(const EdgeProfile::Counts& counts, size_t strips, size_t frames, size_t longest,
                          size_t period_step);

  private:
    struct Tooth {
        float share;
        float incoherent;
        float living;
    };

    /// Of the strips that live at a phase's boundaries.
    struct Share {
        float incoherent = 0.0F;
        float chance = 0.0F;  ///< its variance, were each strip an independent trial
    };

    void measurePhases(size_t period);
    Share trimmedShare(size_t phase, size_t period);
    static float standingOut(const std::vector<Share>& same, const std::vector<Share>& either);

    const EdgeProfile::Counts* counts_ = nullptr;
    float frames_ = 1.0F;
    float least_living_ = 0.0F;  // of a boundary's strips
    std::vector<Tooth> teeth_;
    std::vector<Share> shares_;  // by phase
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_GRID_COMB_H_

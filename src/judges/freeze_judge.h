#ifndef ZEL_SRC_JUDGES_FREEZE_JUDGE_H_
#define ZEL_SRC_JUDGES_FREEZE_JUDGE_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "judges/cells.h"
#include "judges/small_motion.h"
#include "judges/stretch.h"

namespace ZELJudges {

/// Tells frozen stretches: runs of frames that stay like the first one of the run. Comparing neighbours
/// instead would call slow pans and 60 frames per second frozen, and miss what is frozen under noise.
///
/// A cell has changed where it differs from the run's first frame by more than 2.5 levels, or by more than
/// the noise of most cells explains. What has changed once counts to the end of the run. Few cells may
/// change: a clock, a logo, a ticker; and they must stay in place, since what spreads is motion. A freeze
/// ends at a cut, even where the next one begins there. A plain frame that stands still is a card, unless
/// something moves on its ground before it and goes on after it, or it stands for longer than cards do.
///
/// Memory for the frames of the last `min_s` at most, however long the stream. A frozen stretch is settled
/// from kSureAfterS after the minimum on, as it goes on; a plain one later. One thread at a time.
class FreezeJudge {
  public:
    /// Whatever is to be found, runs of this length are judged: longer ones are made of them.
    static constexpr double kLongestMinimumS = 4.0;
    /// So long a run must go on for what has come before to be frozen: what moves slowly shows by then.
    static constexpr double kSureAfterS = 0.8;

    /// Shorter runs are not frozen, seconds, and neither is a single frame, however long it is shown.
    explicit FreezeJudge(double min_s = 2.0);

    /// From the run in work on.
    void setMinimum(double min_s) { min_s_ = std::min(min_s, kLongestMinimumS); }

    /// The next frame, shown from `time_s` for `duration_s`. Returns what it settles, valid until the next
    /// call: the value is the share of cells that have changed, the limit how many may. A frame of another
    /// size, or of an earlier time, begins anew.
    std::span<const Stretch> feed(const Cells& cells, double time_s, double duration_s);

    /// The end of the stream: settles the rest and begins anew.
    std::span<const Stretch> finish();

  private:
    struct Look {
        double start_s = 0.0;
        double end_s = 0.0;
        std::vector<uint16_t> cells;
    };

    /// From `start_s` on, `cells` cells of the run had changed.
    struct Growth {
        double start_s;
        size_t cells;
    };

    /// Present only if the motion that led to it goes on after it, where that is asked for.
    struct Waiting {
        Stretch stretch;
        std::optional<SmallMotion::Span> until;
    };

    void end();
    void addLook(const Cells& cells, double time_s, double duration_s);
    void beginRun(size_t look);
    void compareNext();
    void tryLater();
    void settleRun(double end_s);
    void release();
    bool staysLikeFirst(const Look& look);
    bool isLong(double end_s) const;
    bool isOfCard();
    double spreadSlack() const;
    bool wasStill(double end_s) const;
    double spreadFrom(double half_s) const;
    void settle(double end_s, bool present, std::optional<SmallMotion::Span> until = {});

    double min_s_;
    size_t columns_ = 0;  // of the frames' cells
    size_t rows_ = 0;
    size_t pooled_rows_ = 0;
    std::vector<Look> looks_;  // kept in case a run fails and another must be tried from its middle
    size_t first_ = 0;         // look of the run, while it is kept
    size_t next_ = 0;          // look to be compared
    size_t alike_ = 0;         // looks of the run
    bool told_ = false;        // part of the run is settled
    bool told_long_ = false;   // it has been still for too long for a card
    double run_start_s_ = 0.0;
    double last_end_s_ = 0.0;  // of the last look that stayed like the first
    double settled_s_ = 0.0;
    std::vector<uint16_t> first_cells_;
    std::optional<bool> is_of_card_;  // unknown until it matters
    std::vector<uint16_t> changed_;   // marks of cells that have changed since the run's first frame
    size_t changed_count_ = 0;
    float changed_share_ = 0.0F;  // of all cells, without a ticker
    std::vector<Growth> growth_;  // between the outer rows
    SmallMotion motion_;
    std::vector<Waiting> waiting_;  // settled, or to be released after what is not
    std::vector<Stretch> settled_;
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_FREEZE_JUDGE_H_

#ifndef ZEL_SRC_JUDGES_LOSS_JUDGE_H_
#define ZEL_SRC_JUDGES_LOSS_JUDGE_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "judges/cells.h"
#include "judges/stretch.h"

namespace ZELJudges {

/// Watches the luma of frames for cells that may show nothing decoded. One thread at a time.
class BlankLuma {
  public:
    /// Marks them in the next frame. Returns whether so many have turned up that the loss judge needs its
    /// chroma.
    bool turnsUp(Cells& cells);

  private:
    std::vector<uint16_t> luma_;  // of the frame before
    std::vector<uint8_t> marks_;
};

/// Tells stretches in which part of the frame was never decoded: areas along rows of blocks that turn at
/// once, while the rest of the frame goes on, into the one flat grey or green that decoders start from. One
/// thread at a time.
class LossJudge {
  public:
    /// The next frame, marked by BlankLuma and with its chroma if that asked for it, shown from `time_s` for
    /// `duration_s`. Returns its verdict, valid until the next call: the value is the share of lost cells,
    /// the limit how much makes a fault.
    std::span<const Stretch> feed(const Cells& cells, double time_s, double duration_s);

    /// The end of the stream: begins anew.
    void finish();

  private:
    void noteChroma(const Cells& cells);
    size_t unmarkColoured(const Cells& cells);
    bool liesInRows(size_t columns) const;
    bool restGoesOn(const Cells& cells) const;

    bool lost_ = false;
    size_t columns_ = 0;
    size_t chroma_columns_ = 0;
    std::vector<uint16_t> luma_;  // of the frame before
    std::vector<uint8_t> blank_;  // cells that are flat and, where chroma is known, of a decoder's colour
    std::vector<uint8_t> blank_before_;  // of the frame before
    std::vector<uint8_t> chroma_;        // cells of chroma of a decoder's colour, as last measured
    Stretch last_{};
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_LOSS_JUDGE_H_

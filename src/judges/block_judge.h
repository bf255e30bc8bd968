#ifndef ZEL_SRC_JUDGES_BLOCK_JUDGE_H_
#define ZEL_SRC_JUDGES_BLOCK_JUDGE_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "judges/frame_meter.h"
#include "judges/grid_comb.h"
#include "judges/grid_kernels.h"
#include "judges/stretch.h"

namespace ZELJudges {

/// Tells stretches that are blocky all over: mosaics and coarsely quantised frames. A coding grid has one
/// edge per period at the same phase everywhere, and its edges have no common direction; text, windows and
/// facades do not. Where little is in the frame, or the frame is small, there are too few edges to tell a
/// grid from chance; there steps that lie in the lines between cells only give a mosaic away.
///
/// Looks at the frames whose edges were measured. Settled a second or so late. One thread at a time.
class BlockJudge {
  public:
    /// The next frame. Returns what is settled, valid until the next call: the value is how much more of all
    /// strips has an edge on the grid than off it, beyond chance, or as much as what else was measured comes
    /// to, the limit how much makes a frame blocky.
    std::span<const Stretch> feed(const MeasuredFrame& frame, double time_s, double duration_s);

    /// The end of the stream: settles the rest and begins anew.
    std::span<const Stretch> finish();

  private:
    /// A stretch over which edges were gathered.
    struct Window {
        double start_s;
        double end_s;
        float strength;  ///< in units of the limit

        double middle() const { return (start_s + end_s) / 2.0; }
    };

    void end();
    void look(const MeasuredFrame& frame, double time_s);
    void closeWindow();
    float strength();
    float flatShare() const;
    void judge(bool at_end);
    float meanStrength(size_t window) const;
    void settle(size_t end, bool present);

    uint32_t width_ = 0;
    uint32_t height_ = 0;
    // The window that is being gathered.
    EdgeProfile columns_;
    EdgeProfile rows_;
    FlatSteps flat_steps_;
    size_t cells_ = 0;  // of a frame
    size_t looks_ = 0;
    double start_s_ = 0.0;
    double end_s_ = 0.0;
    GridComb comb_;

    std::vector<Window> windows_;
    size_t judged_ = 0;     // as many have been averaged
    size_t unsettled_ = 0;  // the first one that waits for what follows
    bool open_ = false;
    std::vector<Stretch> settled_;
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_BLOCK_JUDGE_H_

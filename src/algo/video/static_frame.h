#ifndef ZEL_SRC_ALGO_VIDEO_STATIC_FRAME_H_
#define ZEL_SRC_ALGO_VIDEO_STATIC_FRAME_H_

#include <cstddef>
#include <cstdint>
#include <memory>

#include "algo/video/planes.h"

namespace ZELAlgo {

/// Uniform non-negative integers. Each detector has its own, so that threads share none and the host's own
/// rand() sequence stays its own.
class OffsetGenerator {
  public:
    uint32_t next();

  private:
    uint64_t state_ = 0;
};

/// Frozen frame: how many frames in a row hardly differed from their predecessor.
struct StaticFrame_t {
    uint32_t width;
    uint32_t height;
    std::unique_ptr<uint8_t[]> prev;  ///< luma plane of the previous frame
    float score;                      ///< last mean difference, in luma steps
    uint32_t still_count;
    uint32_t limit;
    OffsetGenerator offsets;
};

/// Null, with a log line, if there is no memory for the record.
StaticFrame_t* StaticFrameCreate(uint32_t width, uint32_t height, uint32_t limit);

/// Compares a frame with the one before. `is_static` becomes true when `limit` like frames in a row have
/// been seen, and their count starts anew. Returns 0 if it is false; 1 if it is true or an input is null.
int32_t StaticFrameExecute(StaticFrame_t* state, const Planes& frame, bool& is_static);

void StaticFrameDestroy(StaticFrame_t* state);

/// Rows [top, bottom) and columns [left, right) of a frame.
struct Region {
    size_t top;
    size_t bottom;
    size_t left;
    size_t right;
};

/// The middle of a width x height frame, moved along the diagonal by what `random` says; never leaves it.
Region comparedRegion(uint32_t width, uint32_t height, uint32_t random);

/// Mean difference over a region of a quarter of the frame, from its summed one; 32-bit, truncated.
int32_t meanDifference(uint32_t sum, uint32_t width, uint32_t height);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_VIDEO_STATIC_FRAME_H_

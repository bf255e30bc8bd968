#ifndef ZEL_SRC_ALGO_VIDEO_BLOCK_FRAME_H_
#define ZEL_SRC_ALGO_VIDEO_BLOCK_FRAME_H_

#include <cstddef>
#include <cstdint>
#include <memory>

#include "algo/video/block_corners.h"
#include "algo/video/planes.h"
#include "algo/video/smoothing_kernels.h"

namespace ZELAlgo {

/// Mosaic artefacts in the middle of a frame: smoothing, edges, corners, and pairs of corners that close
/// small rectangles.
struct BlockFrame_t {
    size_t w;  ///< half the width of the frame, whose middle is examined
    size_t h;
    GaussianKernel kernel;
    std::unique_ptr<uint8_t[]> smoothed;   ///< the examined middle
    std::unique_ptr<uint8_t[]> magnitude;  ///< of its gradient, kSpareBytes into the buffer
    std::unique_ptr<uint8_t[]> scratch;    ///< of the kernels
    std::unique_ptr<uint64_t[]> edge_map;  ///< a bit per pixel
    Corners corners;
    uint32_t threshold;
};

/// Null, with a log line, if there is no memory for the record. Without memory for its buffers there is a log
/// line too, and every frame asks for them again.
BlockFrame_t* BlockCreate(uint32_t width, uint32_t height, uint32_t threshold);

/// Writes whether the frame is blocky. Returns 0, or 1 for null input or if there is
/// no memory for the buffers.
int32_t BlockExecute(BlockFrame_t* state, const Planes& frame, bool& is_block);

void BlockDestroy(BlockFrame_t* state);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_VIDEO_BLOCK_FRAME_H_

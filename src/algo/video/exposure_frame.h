#ifndef ZEL_SRC_ALGO_VIDEO_EXPOSURE_FRAME_H_
#define ZEL_SRC_ALGO_VIDEO_EXPOSURE_FRAME_H_

#include <zel/algo/algo_types.h>

#include <cstdint>

#include "algo/video/planes.h"

namespace ZELAlgo {

/// Green screen, black screen and exposure of one stream. Samples are counted where they lie in the frame, so
/// nothing is kept from frame to frame.
struct ExposureFrame_t {
    ZELAlgoConfig config;
};

/// Null, with a log line, if there is no memory.
ExposureFrame_t* ExposureCreate(const ZELAlgoConfig& config);

/// Writes the verdicts on one frame; what is not examined is not written. 0, or 1 for null input.
int32_t ExposureExecute(ExposureFrame_t* state, const Planes& frame, uint32_t& screen_type,
                        uint32_t& exposure_type);

void ExposureDestroy(ExposureFrame_t* state);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_VIDEO_EXPOSURE_FRAME_H_

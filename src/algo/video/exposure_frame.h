#ifndef ZEL_SRC_ALGO_VIDEO_EXPOSURE_FRAME_H_
#define ZEL_SRC_ALGO_VIDEO_EXPOSURE_FRAME_H_

#include <cstdint>

#include "algo/video/planes.h"

namespace ZELAlgo {

/// What the exposure detector is to look for.
struct ExposureSettings {
    float black_ratio;
    float green_ratio;
    bool black_on;
    bool exposure_on;
    bool green_on;
};

/// Green screen, black screen and exposure of one stream. Samples are counted where they lie in the frame, so
/// nothing is kept from frame to frame.
struct ExposureFrame_t {
    ExposureSettings settings;
};

/// Null, with a log line, if there is no memory.
ExposureFrame_t* ExposureCreate(const ExposureSettings& settings);

/// Writes the verdicts on one picture; what is not examined is not written. 0, or 1 for null input.
int32_t ExposureExecute(ExposureFrame_t* state, const Planes& picture, uint32_t& screen_type,
                        uint32_t& exposure_type);

void ExposureDestroy(ExposureFrame_t* state);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_VIDEO_EXPOSURE_FRAME_H_

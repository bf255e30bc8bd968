#ifndef ZEL_SRC_ALGO_VIDEO_EXPOSURE_MODEL_H_
#define ZEL_SRC_ALGO_VIDEO_EXPOSURE_MODEL_H_

#include <cstdint>
#include <optional>

#include "algo/video/luma_kernels.h"

namespace ZELAlgo {

/// What the exposure models look at.
struct ExposureFeatures {
    float bright;      ///< share of samples from 200 up
    float dark;        ///< share of samples up to 60
    int32_t mean;      ///< mean sample, truncated
    int32_t skewness;  ///< third central moment, truncated after every level
};

/// Features of a histogram of `samples` > 0 samples.
ExposureFeatures exposureFeatures(const Histogram& histogram, uint32_t samples);

/// The exposure type by three fixed logistic models over the features.
uint32_t classifyExposure(const ExposureFeatures& features);

/// The same type from a summary of `samples` > 0 samples, unless it depends on how the third moment is
/// rounded.
std::optional<uint32_t> classifyClearExposure(const LumaSummary& summary, uint32_t samples);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_VIDEO_EXPOSURE_MODEL_H_

#ifndef ZEL_SRC_ALGO_VIDEO_SCREEN_TYPE_H_
#define ZEL_SRC_ALGO_VIDEO_SCREEN_TYPE_H_

#include <cstdint>
#include <optional>

#include "algo/video/luma_kernels.h"

namespace ZELAlgo {

/// True if at least `ratio` of the `samples` luma samples are zero; without that no screen is green.
bool isLumaZero(uint32_t zeros, uint32_t samples, float ratio);

/// True if at least `ratio` of the chroma samples are zero, `zeros` of half as many as there are luma
/// samples.
bool isChromaZero(uint32_t zeros, uint32_t samples, float ratio);

/// True if at least `ratio` of the luma samples are darker than 30.
bool isBlack(const Histogram& histogram, uint32_t samples, float ratio);

/// The same from the number of samples darker than 30, unless it lies so near the ratio that roundings
/// decide.
std::optional<bool> isClearlyBlack(uint32_t dark, uint32_t samples, float ratio);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_VIDEO_SCREEN_TYPE_H_

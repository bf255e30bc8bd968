#ifndef ZEL_SRC_ALGO_MIX_DOWN_H_
#define ZEL_SRC_ALGO_MIX_DOWN_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ZELAlgo {

/// `samples` times `channels` interleaved samples as one channel: per sample the mean over the channels,
/// truncated toward zero. One channel is handed on as it is, without a copy, and so is null; otherwise the
/// result lies in `buffer`, which grows when it must and never shrinks.
const int16_t* mixedDown(const int16_t* interleaved, size_t samples, uint32_t channels,
                         std::vector<int16_t>& buffer);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_MIX_DOWN_H_

#ifndef ZEL_SRC_SESSION_MIX_DOWN_H_
#define ZEL_SRC_SESSION_MIX_DOWN_H_

#include <zel/session/frames.h>

#include <cstdint>
#include <vector>

namespace ZEL {

/// The frame as one channel: per sample the mean over its channels, truncated toward zero. A frame of one
/// channel is handed on as it is, without a copy; otherwise the result lies in `buffer`, which grows when it
/// must and never shrinks.
const int16_t* mixedDown(const AudioFrame& frame, std::vector<int16_t>& buffer);

}  // namespace ZEL

#endif  // ZEL_SRC_SESSION_MIX_DOWN_H_

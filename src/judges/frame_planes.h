#ifndef ZEL_SRC_JUDGES_FRAME_PLANES_H_
#define ZEL_SRC_JUDGES_FRAME_PLANES_H_

#include <cstddef>
#include <cstdint>

namespace ZELJudges {

/// One I420 frame where a decoder left it: luma, Cb and Cr, their rows any distance apart. Sides may be odd;
/// chroma has half of them, rounded up. The bytes are borrowed for a call.
struct FramePlanes {
    uint32_t width;  ///< of the luma
    uint32_t height;
    const uint8_t* data[3];
    size_t stride[3];  ///< bytes from one row to the next
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_FRAME_PLANES_H_

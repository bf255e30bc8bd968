#ifndef ZEL_SRC_ALGO_VIDEO_PLANES_H_
#define ZEL_SRC_ALGO_VIDEO_PLANES_H_

#include <cstddef>
#include <cstdint>

namespace ZELAlgo {

/// One I420 frame in memory: luma, Cb and Cr, their rows any distance apart. Even sizes, but for a frame
/// without gaps.
struct Planes {
    uint32_t width;  ///< of the luma
    uint32_t height;
    const uint8_t* data[3];
    size_t stride[3];  ///< bytes from one row to the next
};

/// The planes of a frame without gaps, also of an odd size: then its chroma counts as if the size were
/// rounded down, in bytes of luma as well, which is intended. All null if `data` is.
inline Planes planesOf(const uint8_t* data, uint32_t width, uint32_t height) {
    const size_t chroma = static_cast<size_t>(width / 2) * (height / 2);
    const bool empty = data == nullptr;
    return {.width = width,
            .height = height,
            .data = {data, empty ? nullptr : data + 4 * chroma, empty ? nullptr : data + 5 * chroma},
            .stride = {width, width / 2, width / 2}};
}

/// From row to row of the luma as all but the freeze detector count: an odd width makes it one byte short,
/// which is intended.
inline size_t evenStride(const Planes& frame) {
    return frame.stride[0] - frame.width % 2;
}

/// Calls `visit(first byte, bytes)` for the first `rows` rows of `width` bytes that lie `stride` bytes apart:
/// once if they touch, else for each.
template <typename Visit>
void forEachRun(const uint8_t* plane, size_t stride, size_t width, size_t rows, const Visit& visit) {
    if (stride == width) {
        visit(plane, width * rows);
        return;
    }
    for (size_t y = 0; y < rows; ++y) {
        visit(plane + y * stride, width);
    }
}

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_VIDEO_PLANES_H_

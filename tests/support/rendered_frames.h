#ifndef ZEL_TESTS_SUPPORT_RENDERED_FRAMES_H_
#define ZEL_TESTS_SUPPORT_RENDERED_FRAMES_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace support {

/// One I420 frame without gaps.
struct RenderedFrame {
    uint32_t width;
    uint32_t height;
    std::vector<uint8_t> bytes;
};

/// The first `count` frames of an FFmpeg filter graph, "movie=clip.mp4" for a file. Throws
/// std::runtime_error if there is no such graph. Link rendered_frames.cc.
std::vector<RenderedFrame> renderFrames(const std::string& graph, size_t count);

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_RENDERED_FRAMES_H_

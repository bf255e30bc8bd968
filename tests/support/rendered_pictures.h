#ifndef ZEL_TESTS_SUPPORT_RENDERED_PICTURES_H_
#define ZEL_TESTS_SUPPORT_RENDERED_PICTURES_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace support {

/// One I420 picture without gaps.
struct RenderedPicture {
    uint32_t width;
    uint32_t height;
    std::vector<uint8_t> bytes;
};

/// The first `count` pictures of an FFmpeg filter graph, "movie=clip.mp4" for a file. Throws
/// std::runtime_error if there is no such graph. Link rendered_pictures.cc.
std::vector<RenderedPicture> renderPictures(const std::string& graph, size_t count);

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_RENDERED_PICTURES_H_

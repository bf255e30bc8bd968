#include "support/rendered_pictures.h"

#include "support/filter_source.h"

extern "C" {
#include <libavutil/imgutils.h>
}

namespace support {
namespace {

RenderedPicture packed(const AVFrame& frame) {
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const int size = av_image_get_buffer_size(format, frame.width, frame.height, 1);
    RenderedPicture picture{static_cast<uint32_t>(frame.width), static_cast<uint32_t>(frame.height),
                            std::vector<uint8_t>(static_cast<size_t>(size))};
    av_image_copy_to_buffer(picture.bytes.data(), size, frame.data, frame.linesize, format, frame.width,
                            frame.height, 1);
    return picture;
}

}  // namespace

std::vector<RenderedPicture> renderPictures(const std::string& graph, size_t count) {
    FilterSource source(graph + ",format=yuv420p", "buffersink");
    std::vector<RenderedPicture> pictures;
    while (pictures.size() < count && source.advance()) {
        pictures.push_back(packed(source.frame()));
    }
    return pictures;
}

}  // namespace support

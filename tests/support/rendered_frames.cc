#include "support/rendered_frames.h"

#include "support/filter_source.h"

extern "C" {
#include <libavutil/imgutils.h>
}

namespace support {
namespace {

RenderedFrame packed(const AVFrame& frame) {
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const int size = av_image_get_buffer_size(format, frame.width, frame.height, 1);
    RenderedFrame copy{static_cast<uint32_t>(frame.width), static_cast<uint32_t>(frame.height),
                       std::vector<uint8_t>(static_cast<size_t>(size))};
    av_image_copy_to_buffer(copy.bytes.data(), size, frame.data, frame.linesize, format, frame.width,
                            frame.height, 1);
    return copy;
}

}  // namespace

std::vector<RenderedFrame> renderFrames(const std::string& graph, size_t count) {
    FilterSource source(graph + ",format=yuv420p", "buffersink");
    std::vector<RenderedFrame> frames;
    while (frames.size() < count && source.advance()) {
        frames.push_back(packed(source.frame()));
    }
    return frames;
}

}  // namespace support

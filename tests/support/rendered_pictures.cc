#include "support/rendered_pictures.h"

#include <memory>
#include <stdexcept>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavutil/frame.h>
#include <libavutil/imgutils.h>
#include <libavutil/log.h>
}

namespace support {
namespace {

struct GraphDestroyer {
    void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
};

struct FrameDestroyer {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};

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
    av_log_set_level(AV_LOG_ERROR);
    const std::string description = graph + ",format=yuv420p,buffersink@sink";
    const std::unique_ptr<AVFilterGraph, GraphDestroyer> filters(avfilter_graph_alloc());
    AVFilterInOut* inputs = nullptr;
    AVFilterInOut* outputs = nullptr;
    const bool parsed = avfilter_graph_parse2(filters.get(), description.c_str(), &inputs, &outputs) >= 0;
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    if (!parsed || avfilter_graph_config(filters.get(), nullptr) < 0) {
        throw std::runtime_error("cannot render " + graph);
    }
    AVFilterContext* const sink = avfilter_graph_get_filter(filters.get(), "buffersink@sink");

    std::vector<RenderedPicture> pictures;
    const std::unique_ptr<AVFrame, FrameDestroyer> frame(av_frame_alloc());
    while (pictures.size() < count && av_buffersink_get_frame(sink, frame.get()) >= 0) {
        pictures.push_back(packed(*frame));
        av_frame_unref(frame.get());
    }
    return pictures;
}

}  // namespace support

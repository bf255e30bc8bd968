#include "filter_chain.h"

#include <stdexcept>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/frame.h>
#include <libavutil/imgutils.h>
}

namespace bench {

void FrameDestroyer::operator()(AVFrame* frame) const {
    av_frame_free(&frame);
}

Frame makeFrame(const support::RenderedPicture& picture) {
    Frame frame(av_frame_alloc());
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = static_cast<int>(picture.width);
    frame->height = static_cast<int>(picture.height);
    av_frame_get_buffer(frame.get(), 0);
    uint8_t* planes[4];
    int strides[4];
    av_image_fill_arrays(planes, strides, picture.bytes.data(), AV_PIX_FMT_YUV420P, frame->width,
                         frame->height, 1);
    av_image_copy(frame->data, frame->linesize, const_cast<const uint8_t**>(planes), strides,
                  AV_PIX_FMT_YUV420P, frame->width, frame->height);
    return frame;
}

ZELAlgo::ZELVideoPlanes planesOf(const AVFrame& frame) {
    ZELAlgo::ZELVideoPlanes planes{.width = static_cast<uint32_t>(frame.width),
                                   .height = static_cast<uint32_t>(frame.height),
                                   .data = {},
                                   .stride = {}};
    for (size_t plane = 0; plane < 3; ++plane) {
        planes.data[plane] = frame.data[plane];
        planes.stride[plane] = static_cast<size_t>(frame.linesize[plane]);
    }
    return planes;
}

void FilterChain::GraphDestroyer::operator()(AVFilterGraph* graph) const {
    avfilter_graph_free(&graph);
}

FilterChain::FilterChain(const std::string& filters, uint32_t width, uint32_t height)
    : graph_(avfilter_graph_alloc()), passing_(av_frame_alloc()) {
    graph_->nb_threads = 1;
    const std::string description = "buffer@source=video_size=" + std::to_string(width) + "x" +
                                    std::to_string(height) + ":pix_fmt=yuv420p:time_base=1/25," + filters +
                                    ",buffersink@sink";
    AVFilterInOut* inputs = nullptr;
    AVFilterInOut* outputs = nullptr;
    const bool parsed = avfilter_graph_parse2(graph_.get(), description.c_str(), &inputs, &outputs) >= 0;
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    if (!parsed || avfilter_graph_config(graph_.get(), nullptr) < 0) {
        throw std::runtime_error("no such filters: " + filters);
    }
    source_ = avfilter_graph_get_filter(graph_.get(), "buffer@source");
    sink_ = avfilter_graph_get_filter(graph_.get(), "buffersink@sink");
}

void FilterChain::run(AVFrame& frame) {
    frame.pts = next_time_++;
    if (av_buffersrc_write_frame(source_, &frame) < 0) {  // takes a reference, copies nothing
        throw std::runtime_error("frame refused");
    }
    while (av_buffersink_get_frame(sink_, passing_.get()) >= 0) {
        av_frame_unref(passing_.get());
    }
}

}  // namespace bench

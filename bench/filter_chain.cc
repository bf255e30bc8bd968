#include "filter_chain.h"

#include <array>
#include <stdexcept>
#include <utility>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/frame.h>
#include <libavutil/imgutils.h>
}

namespace bench {
namespace {

/// The filter that hands such frames to a chain.
std::string sourceOf(const AVFrame& frame, AVRational time_base) {
    const std::string time =
        "time_base=" + std::to_string(time_base.num) + "/" + std::to_string(time_base.den);
    const std::string format = std::to_string(frame.format);
    if (frame.nb_samples > 0) {
        std::array<char, 128> layout{};
        av_channel_layout_describe(&frame.ch_layout, layout.data(), layout.size());
        return "abuffer@source=" + time + ":sample_fmt=" + format +
               ":sample_rate=" + std::to_string(frame.sample_rate) + ":channel_layout=" + layout.data();
    }
    return "buffer@source=" + time + ":pix_fmt=" + format + ":video_size=" + std::to_string(frame.width) +
           "x" + std::to_string(frame.height);
}

}  // namespace

void FrameDestroyer::operator()(AVFrame* frame) const {
    av_frame_free(&frame);
}

Frame makeFrame(const support::RenderedFrame& rendered) {
    Frame frame(av_frame_alloc());
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = static_cast<int>(rendered.width);
    frame->height = static_cast<int>(rendered.height);
    av_frame_get_buffer(frame.get(), 0);
    uint8_t* planes[4];
    int strides[4];
    av_image_fill_arrays(planes, strides, rendered.bytes.data(), AV_PIX_FMT_YUV420P, frame->width,
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

FilterChain::FilterChain(const std::string& filters, const AVFrame& first, AVRational time_base)
    : graph_(avfilter_graph_alloc()), passed_(av_frame_alloc()), next_(av_frame_alloc()) {
    graph_->nb_threads = 1;
    const std::string sink = first.nb_samples > 0 ? "abuffersink@sink" : "buffersink@sink";
    const std::string source = sourceOf(first, time_base);
    AVFilterInOut* inputs = nullptr;
    AVFilterInOut* outputs = nullptr;
    const std::string description = source + "," + filters + "," + sink;
    const bool parsed = avfilter_graph_parse2(graph_.get(), description.c_str(), &inputs, &outputs) >= 0;
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    if (!parsed || avfilter_graph_config(graph_.get(), nullptr) < 0) {
        throw std::runtime_error("no such filters: " + filters);
    }
    source_ = avfilter_graph_get_filter(graph_.get(), source.substr(0, source.find('=')).c_str());
    sink_ = avfilter_graph_get_filter(graph_.get(), sink.c_str());
}

const AVFrame* FilterChain::pass(AVFrame& frame) {
    if (av_buffersrc_write_frame(source_, &frame) < 0) {  // takes a reference, copies nothing
        throw std::runtime_error("frame refused");
    }
    bool came_out = false;
    while (av_buffersink_get_frame(sink_, next_.get()) >= 0) {
        std::swap(passed_, next_);
        av_frame_unref(next_.get());
        came_out = true;
    }
    return came_out ? passed_.get() : nullptr;
}

}  // namespace bench

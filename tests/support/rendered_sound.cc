#include "support/rendered_sound.h"

#include <memory>
#include <stdexcept>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavutil/frame.h>
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

}  // namespace

std::vector<int16_t> renderSound(const std::string& source, int sample_rate, double seconds) {
    av_log_set_level(AV_LOG_ERROR);
    const std::string description = source + ",aresample=" + std::to_string(sample_rate) +
                                    ",aformat=sample_fmts=s16:channel_layouts=mono,abuffersink@sink";
    const std::unique_ptr<AVFilterGraph, GraphDestroyer> graph(avfilter_graph_alloc());
    AVFilterInOut* inputs = nullptr;
    AVFilterInOut* outputs = nullptr;
    const bool parsed = avfilter_graph_parse2(graph.get(), description.c_str(), &inputs, &outputs) >= 0;
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    if (!parsed || avfilter_graph_config(graph.get(), nullptr) < 0) {
        throw std::runtime_error("cannot render " + source);
    }
    AVFilterContext* const sink = avfilter_graph_get_filter(graph.get(), "abuffersink@sink");

    const auto wanted = static_cast<size_t>(seconds * sample_rate);
    std::vector<int16_t> samples;
    const std::unique_ptr<AVFrame, FrameDestroyer> frame(av_frame_alloc());
    while (samples.size() < wanted && av_buffersink_get_frame(sink, frame.get()) >= 0) {
        const auto* const data = reinterpret_cast<const int16_t*>(frame->data[0]);
        samples.insert(samples.end(), data, data + frame->nb_samples);
        av_frame_unref(frame.get());
    }
    samples.resize(wanted);
    return samples;
}

}  // namespace support

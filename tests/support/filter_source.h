#ifndef ZEL_TESTS_SUPPORT_FILTER_SOURCE_H_
#define ZEL_TESTS_SUPPORT_FILTER_SOURCE_H_

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavutil/frame.h>
#include <libavutil/log.h>
}

namespace support {

/// Frames that FFmpeg's filters make out of nothing, or out of a file that they read.
class FilterSource {
  public:
    /// `sink` is "buffersink" for frames, "abuffersink" for sound. Throws std::runtime_error if there are
    /// no such filters.
    FilterSource(const std::string& filters, const std::string& sink) {
        av_log_set_level(std::min(av_log_get_level(), AV_LOG_ERROR));
        const std::string end = sink + "@end";
        AVFilterInOut* inputs = nullptr;
        AVFilterInOut* outputs = nullptr;
        const bool parsed =
            avfilter_graph_parse2(graph_.get(), (filters + "," + end).c_str(), &inputs, &outputs) >= 0;
        avfilter_inout_free(&inputs);
        avfilter_inout_free(&outputs);
        if (!parsed || avfilter_graph_config(graph_.get(), nullptr) < 0) {
            throw std::runtime_error("cannot render " + filters);
        }
        sink_ = avfilter_graph_get_filter(graph_.get(), end.c_str());
    }

    /// Goes on to the next frame; false when there is none.
    bool advance() {
        av_frame_unref(frame_.get());
        return av_buffersink_get_frame(sink_, frame_.get()) >= 0;
    }

    AVFrame& frame() { return *frame_; }
    AVRational timeBase() const { return av_buffersink_get_time_base(sink_); }

  private:
    struct Free {
        void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
        void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    };

    const std::unique_ptr<AVFilterGraph, Free> graph_{avfilter_graph_alloc()};
    const std::unique_ptr<AVFrame, Free> frame_{av_frame_alloc()};
    AVFilterContext* sink_ = nullptr;
};

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_FILTER_SOURCE_H_

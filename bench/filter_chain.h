#ifndef ZEL_BENCH_FILTER_CHAIN_H_
#define ZEL_BENCH_FILTER_CHAIN_H_

#include <zel/algo/algo_types.h>

#include <memory>
#include <string>

#include "support/rendered_frames.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/rational.h>
}

struct AVFilterContext;
struct AVFilterGraph;

namespace bench {

struct FrameDestroyer {
    void operator()(AVFrame* frame) const;
};
using Frame = std::unique_ptr<AVFrame, FrameDestroyer>;

/// A frame as FFmpeg's filters take it, in memory of its own.
Frame makeFrame(const support::RenderedFrame& rendered);

/// The same frame as our detectors take it.
ZELAlgo::ZELVideoPlanes planesOf(const AVFrame& frame);

/// FFmpeg's filters in one thread, fed frame by frame, of frames or of sound.
class FilterChain {
  public:
    /// For frames like `first`, whose timestamps count in `time_base`. Throws std::runtime_error if there is
    /// no such chain.
    FilterChain(const std::string& filters, const AVFrame& first, AVRational time_base);

    /// Sends a frame through all filters and gives the last one that came out, with what the filters wrote
    /// into its metadata; null if they keep it back. Valid until the next call.
    const AVFrame* pass(AVFrame& frame);

  private:
    struct GraphDestroyer {
        void operator()(AVFilterGraph* graph) const;
    };

    std::unique_ptr<AVFilterGraph, GraphDestroyer> graph_;
    AVFilterContext* source_ = nullptr;
    AVFilterContext* sink_ = nullptr;
    Frame passed_;
    Frame next_;
};

}  // namespace bench

#endif  // ZEL_BENCH_FILTER_CHAIN_H_

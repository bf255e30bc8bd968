#ifndef ZEL_BENCH_FILTER_CHAIN_H_
#define ZEL_BENCH_FILTER_CHAIN_H_

#include <zel/algo/algo_types.h>

#include <memory>
#include <string>

#include "support/rendered_pictures.h"

struct AVFilterContext;
struct AVFilterGraph;
struct AVFrame;

namespace bench {

struct FrameDestroyer {
    void operator()(AVFrame* frame) const;
};
using Frame = std::unique_ptr<AVFrame, FrameDestroyer>;

/// A picture as FFmpeg's filters take it, in memory of its own.
Frame makeFrame(const support::RenderedPicture& picture);

/// The same picture as our detectors take it.
ZELAlgo::ZELVideoPlanes planesOf(const AVFrame& frame);

/// FFmpeg's filters in one thread, fed picture by picture. Throws std::runtime_error if there is no such
/// chain.
class FilterChain {
  public:
    FilterChain(const std::string& filters, uint32_t width, uint32_t height);

    /// Sends a frame through all filters, as the next in time.
    void run(AVFrame& frame);

  private:
    struct GraphDestroyer {
        void operator()(AVFilterGraph* graph) const;
    };

    std::unique_ptr<AVFilterGraph, GraphDestroyer> graph_;
    AVFilterContext* source_ = nullptr;
    AVFilterContext* sink_ = nullptr;
    Frame passing_;
    int64_t next_time_ = 0;
};

}  // namespace bench

#endif  // ZEL_BENCH_FILTER_CHAIN_H_

#ifndef ZEL_TOOLS_REPORT_THUMBNAIL_H_
#define ZEL_TOOLS_REPORT_THUMBNAIL_H_

#include <zel/algo/algo_types.h>

#include <memory>
#include <string>

struct AVFrame;
struct SwsContext;

namespace zel_monitor {

struct SmallFrameRelease {
    void operator()(AVFrame* frame) const;
};
/// A frame that was scaled down, as FFmpeg holds one.
using SmallFrame = std::unique_ptr<AVFrame, SmallFrameRelease>;

/// Makes small frames for the page.
class Thumbnailer {
  public:
    /// A copy of the frame scaled down; cheap enough to keep for a run that may come to nothing. Null if it
    /// cannot be made.
    SmallFrame shrink(const ZELAlgo::ZELVideoPlanes& planes);

  private:
    struct ScalerRelease {
        void operator()(SwsContext* scaler) const;
    };
    std::unique_ptr<SwsContext, ScalerRelease> scaler_;
};

/// A frame that shrink() made as a JPEG in a "data:" address; empty if it cannot be made.
std::string jpegAddress(const AVFrame& small);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_THUMBNAIL_H_

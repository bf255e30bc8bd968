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
    /// `longest_side` in pixels of what is made; nothing is enlarged.
    explicit Thumbnailer(int longest_side = 160) : longest_side_(longest_side) {}

    /// A copy of the frame scaled down; cheap enough to keep for a run that may come to nothing. Null if it
    /// cannot be made.
    SmallFrame shrink(const ZELAlgo::ZELVideoPlanes& planes);

  private:
    struct ScalerRelease {
        void operator()(SwsContext* scaler) const;
    };
    int longest_side_;
    std::unique_ptr<SwsContext, ScalerRelease> scaler_;
};

/// A frame that shrink() made as the bytes of a JPEG; empty if it cannot be made.
std::string jpegOf(const AVFrame& small);

/// The same in a "data:" address; empty if it cannot be made.
std::string jpegAddress(const AVFrame& small);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_THUMBNAIL_H_

#ifndef ZEL_TOOLS_REPORT_THUMBNAIL_H_
#define ZEL_TOOLS_REPORT_THUMBNAIL_H_

#include <string>

#include "input/ffmpeg_handles.h"
#include "input/media_item.h"

namespace zel_monitor {

/// Makes small pictures for the page.
class Thumbnailer {
  public:
    /// `picture` scaled down; cheap enough to keep for a run that may come to nothing.
    FrameHandle shrink(const Picture& picture);

  private:
    ScalerHandle scaler_;
};

/// A picture that shrink() made as a JPEG in a "data:" address; empty if it cannot be made.
std::string jpegAddress(const AVFrame& small);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_THUMBNAIL_H_

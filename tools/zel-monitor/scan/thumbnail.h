#ifndef ZEL_TOOLS_SCAN_THUMBNAIL_H_
#define ZEL_TOOLS_SCAN_THUMBNAIL_H_

#include <string>

#include "ffmpeg_handles.h"
#include "media_item.h"

namespace zel_monitor::scan {

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

}  // namespace zel_monitor::scan

#endif  // ZEL_TOOLS_SCAN_THUMBNAIL_H_

#ifndef ZEL_TOOLS_DECLARED_SIZE_H_
#define ZEL_TOOLS_DECLARED_SIZE_H_

#include "ffmpeg_handles.h"

namespace zel_monitor {

/// Whether the header of a file speaks of more bytes than there are, which libavformat lets pass. Looks at
/// containers that libavformat does not hold to their word otherwise: WAV and AVI. Leaves the file near its
/// beginning.
bool isShorterThanItsHeader(const AVFormatContext& format);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_DECLARED_SIZE_H_

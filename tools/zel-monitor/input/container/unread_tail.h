#ifndef ZEL_TOOLS_INPUT_CONTAINER_UNREAD_TAIL_H_
#define ZEL_TOOLS_INPUT_CONTAINER_UNREAD_TAIL_H_

#include <cstdint>

#include "input/ffmpeg_handles.h"

namespace zel_monitor {

/// Whether a transport stream holds more frames, or more sound, after `place`, where the last packet of
/// that type begins that libavformat gave. It gives none of a stream whose coding changes, or only rubbish,
/// but says nothing. False for inputs in which it cannot be looked up. Leaves the input elsewhere.
bool hasUnreadTail(const AVFormatContext& format, AVMediaType type, int64_t place);

/// Whether a transport or program stream has more of `stream` after `place`, of which nothing could be
/// decoded although libavformat may have given it: enough to be no mere end. Leaves the input elsewhere.
bool goesOnUndecoded(const AVFormatContext& format, const AVStream& stream, int64_t place);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_CONTAINER_UNREAD_TAIL_H_

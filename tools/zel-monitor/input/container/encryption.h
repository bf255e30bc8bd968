#ifndef ZEL_TOOLS_INPUT_CONTAINER_ENCRYPTION_H_
#define ZEL_TOOLS_INPUT_CONTAINER_ENCRYPTION_H_

#include "input/ffmpeg_handles.h"

namespace zel_monitor {

/// Whether libavformat knows that nothing of the stream can be decoded without a key: protected MP4 sample
/// entries, Matroska with content encryption, protected ASF.
bool isEncrypted(const AVFormatContext& format, const AVStream& stream);

/// Whether libavformat knows that this packet is encrypted (common encryption in MP4).
bool isEncrypted(const AVPacket& packet);

/// Whether a stream that gave nothing, or only rubbish, is encrypted by what libavformat does not look at:
/// the index of an MP4, or the scrambling bits in the first megabytes of a transport stream. False for inputs
/// in which it cannot be looked up. Leaves the input elsewhere.
bool provesEncrypted(const AVFormatContext& format, const AVStream& stream);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_CONTAINER_ENCRYPTION_H_

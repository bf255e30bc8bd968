#ifndef ZEL_TOOLS_INPUT_STREAM_FACTS_H_
#define ZEL_TOOLS_INPUT_STREAM_FACTS_H_

#include <optional>

#include "cli/media_facts.h"
#include "input/ffmpeg_handles.h"

namespace zel_monitor {

/// The timestamp, in seconds, at which the input says that it starts.
std::optional<double> statedStart(const AVFormatContext& format);

/// What the streams of a format are like to whoever looks for damage.
struct StreamNature {
    bool begins_anywhere;  ///< its first frames may need some that were never in it
    bool has_timestamps;   ///< of single frames, which tell where some are missing
    bool is_uneven;        ///< frames that repeat the one before may be left out of the video
};
StreamNature natureOf(const AVFormatContext& format);

/// Frames per second; 0 if the stream does not say.
double frameRateOf(const AVStream& stream);

/// Of a stream and the decoder that was opened for it.
VideoFacts videoFacts(const AVStream& stream, const AVCodecContext& decoder);
AudioFacts audioFacts(const AVCodecContext& decoder);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_STREAM_FACTS_H_

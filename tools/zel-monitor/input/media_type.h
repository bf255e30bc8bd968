#ifndef ZEL_TOOLS_INPUT_MEDIA_TYPE_H_
#define ZEL_TOOLS_INPUT_MEDIA_TYPE_H_

#include "input/ffmpeg_handles.h"
#include "input/per_track.h"

namespace zel_monitor {

/// What a stream of the track's type is to FFmpeg.
constexpr AVMediaType mediaTypeOf(StreamTrack track) {
    return track == StreamTrack::kVideo ? AVMEDIA_TYPE_VIDEO : AVMEDIA_TYPE_AUDIO;
}

inline FfmpegError noDecoderFor(StreamTrack track) {
    return {AVERROR_DECODER_NOT_FOUND, track == StreamTrack::kVideo ? "no decoder for the video stream"
                                                                    : "no decoder for the audio stream"};
}

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_MEDIA_TYPE_H_

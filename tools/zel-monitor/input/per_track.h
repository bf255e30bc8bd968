#ifndef ZEL_TOOLS_INPUT_PER_TRACK_H_
#define ZEL_TOOLS_INPUT_PER_TRACK_H_

#include <zel/events/stream_clock.h>

#include <array>
#include <cstddef>

namespace zel_monitor {

using ZEL::StreamTrack;

/// Video comes first wherever an order is needed.
inline constexpr std::array kTracks{StreamTrack::kVideo, StreamTrack::kAudio};

constexpr StreamTrack siblingOf(StreamTrack track) {
    return track == StreamTrack::kVideo ? StreamTrack::kAudio : StreamTrack::kVideo;
}

/// One of a kind for each track.
template <typename T>
struct PerTrack {
    T video;
    T audio;

    T& operator[](StreamTrack track) { return track == StreamTrack::kVideo ? video : audio; }
    const T& operator[](StreamTrack track) const { return track == StreamTrack::kVideo ? video : audio; }
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_PER_TRACK_H_

#ifndef ZEL_TOOLS_INPUT_TRACK_H_
#define ZEL_TOOLS_INPUT_TRACK_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

#include "input/ffmpeg_handles.h"
#include "input/media_item.h"
#include "input/succession.h"

namespace zel_monitor {

/// All pictures, or all sound, of an input: the stream they are taken from, its decoder, and what it gave
/// that nobody has taken yet.
struct Track {
    AVMediaType type;
    size_t most_ahead;  ///< how many items wait for the other track
    bool wanted = false;
    const AVStream* stream = nullptr;  ///< null: there is none, or it is not wanted
    Succession succession = {};
    std::deque<PacketHandle> backlog = {};  ///< of the stream, to be decoded before what is read next
    CodecHandle codec = {};
    std::deque<MediaItem> ready = {};
    double next_time = 0;       ///< where a frame without a timestamp is placed: the end of the one before it
    int64_t furthest = 0;       ///< where the last packet of any stream of the type begins
    uint64_t frames = 0;        ///< decoded from the chosen stream
    bool corrupt_last = false;  ///< the demuxer could not fill the packet that it gave last

    std::optional<double> given_to = {};  ///< time of the item that was handed on last

    explicit operator bool() const { return stream != nullptr; }
    /// Whether what is ready begins far before what was handed on; pictures out of order are no jump.
    bool jumpsBack() const;
};

/// Takes up the best stream of the track's type, if there is one, but none of a programme to which the stream
/// with the index `related` does not belong; -1: any. Throws FfmpegError if it cannot be decoded.
void openBestStream(Track& track, AVFormatContext& format, int related);

/// Whether two streams, by their indices, are of one programme, or either is of none.
bool belongTogether(AVFormatContext& format, int a, int b);

/// Goes on with another stream. Throws FfmpegError, and changes nothing, if it cannot be decoded.
void changeStream(Track& track, AVStream& stream);

/// Whether the stream is said to be one picture, such as the cover of a song, and not the first of many.
bool isStill(const AVStream& stream);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_TRACK_H_

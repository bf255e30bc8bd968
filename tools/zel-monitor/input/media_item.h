#ifndef ZEL_TOOLS_INPUT_MEDIA_ITEM_H_
#define ZEL_TOOLS_INPUT_MEDIA_ITEM_H_

#include <zel/algo/algo_types.h>

#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

#include "input/complaint.h"

struct AVBufferRef;
struct AVFrame;

namespace zel_monitor {

struct BufferRelease {
    void operator()(AVBufferRef* buffer) const;
};
/// One reference to a reference-counted block of bytes; may be released on any thread.
using BufferHandle = std::unique_ptr<AVBufferRef, BufferRelease>;

struct FrameRelease {
    void operator()(AVFrame* frame) const;
};
/// One reference to a frame's content; may be released on any thread.
using FrameReference = std::unique_ptr<AVFrame, FrameRelease>;

/// What is known of an item beside its content.
struct ItemNotes {
    int64_t place = -1;  ///< where its packet lies in the input; negative: not known
    std::vector<ItemComplaint> complaints = {};
};

/// One decoded frame as I420.
struct VideoFrame {
    double time;                     ///< seconds since the start of the stream
    double duration;                 ///< seconds; 0 if the stream does not say
    ZELAlgo::ZELVideoPlanes planes;  ///< an odd last column or row is left out
    FrameReference frame;            ///< keeps the planes alive
    ItemNotes notes = {};
};

/// One decoded audio frame: `samples` times `channels` interleaved 16-bit samples.
struct AudioFrame {
    double time;  ///< seconds since the start of the stream
    int sample_rate;
    int channels;
    int samples;  ///< per channel
    const int16_t* data;
    BufferHandle buffer;  ///< keeps `data` alive
    ItemNotes notes = {};
};

using MediaItem = std::variant<VideoFrame, AudioFrame>;

/// How long a frame is taken to last whose stream does not say.
inline constexpr double kFallbackFrameSeconds = 1.0 / 25;

inline double durationOf(const VideoFrame& frame) {
    return frame.duration > 0 ? frame.duration : kFallbackFrameSeconds;
}
inline double durationOf(const AudioFrame& sound) {
    return static_cast<double>(sound.samples) / sound.sample_rate;
}
inline double durationOf(const MediaItem& item) {
    return std::visit([](const auto& content) { return durationOf(content); }, item);
}

inline const ItemNotes& notesOf(const MediaItem& item) {
    return std::visit([](const auto& content) -> const ItemNotes& { return content.notes; }, item);
}

inline ZEL::StreamTrack trackOf(const MediaItem& item) {
    return std::holds_alternative<VideoFrame>(item) ? ZEL::StreamTrack::kVideo : ZEL::StreamTrack::kAudio;
}

inline double timeOf(const MediaItem& item) {
    return std::visit([](const auto& content) { return content.time; }, item);
}

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_MEDIA_ITEM_H_

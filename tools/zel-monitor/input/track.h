#ifndef ZEL_TOOLS_INPUT_TRACK_H_
#define ZEL_TOOLS_INPUT_TRACK_H_

#include <cstdint>
#include <optional>

#include "input/ffmpeg_handles.h"
#include "input/frame_converter.h"
#include "input/media_item.h"
#include "input/per_track.h"

namespace zel_monitor {

/// Where the time of an input begins: at a timestamp that it states, or else at the first one that a decoded
/// frame has.
class StreamOrigin {
  public:
    explicit StreamOrigin(std::optional<double> stated_s) : origin_s_(stated_s) {}
    double since(double stamp_s) { return stamp_s - (origin_s_ ? *origin_s_ : origin_s_.emplace(stamp_s)); }

  private:
    std::optional<double> origin_s_;
};

/// Hears what becomes of a track's packets.
class TrackListener {
  public:
    TrackListener() = default;
    TrackListener(const TrackListener&) = delete;
    TrackListener& operator=(const TrackListener&) = delete;
    virtual ~TrackListener() = default;

    virtual void onItem(StreamTrack track, MediaItem item) = 0;
    /// A packet was refused, or a frame is damaged or cannot be converted.
    virtual void onDamage(const FfmpegError& damage) = 0;
    /// The stream at hand is over and its decoder empty.
    virtual void onStreamEnd(StreamTrack track, bool gave_anything) = 0;
    /// A track would go on with a stream that cannot be decoded; nothing of it will be.
    virtual void onStreamRefused(const FfmpegError& reason) = 0;
};

/// All video, or all audio, of an input: the decoder of the stream at hand, and the times of what it gives,
/// in seconds since the origin as the timestamps say, but for their wraparound.
class Track {
  public:
    /// Begins with `stream`. What is referred to outlives this object. Throws FfmpegError if the stream
    /// cannot be decoded.
    /// `threads`: of each decoder; 0: as many as there are processors.
    Track(StreamTrack track, const AVStream& stream, int threads, StreamOrigin& origin,
          TrackListener& listener);

    /// Decodes a packet of `stream`; if that is not the one at hand, goes on with it.
    void decode(const AVPacket& packet, const AVStream& stream);
    /// No more packets come.
    void finish();

    const AVCodecContext& decoder() const { return *codec_; }

  private:
    void feed(const AVPacket* packet);
    void take(const AVFrame& frame);
    double videoDuration(const AVFrame& frame) const;
    double place(const AVFrame& frame, double duration_s);

    StreamTrack track_;
    const AVStream* stream_;
    int threads_;
    StreamOrigin& origin_;
    TrackListener& listener_;
    CodecHandle codec_;  // null after a stream was refused
    FrameHandle frame_{orOutOfMemory(av_frame_alloc())};
    VideoFrameConverter frames_;
    AudioFrameConverter sounds_;
    double next_time_s_ = 0;      // where a frame without a timestamp is placed: the end of the one before it
    bool gave_anything_ = false;  // the stream at hand
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_TRACK_H_

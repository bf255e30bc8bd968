#ifndef ZEL_TOOLS_INPUT_TRACK_H_
#define ZEL_TOOLS_INPUT_TRACK_H_

#include <cstdint>
#include <optional>
#include <vector>

#include "input/ffmpeg_handles.h"
#include "input/frame_converter.h"
#include "input/key_frames.h"
#include "input/media_item.h"
#include "input/packet_ledger.h"
#include "input/per_track.h"

namespace zel_monitor {

/// Where the time of an input begins: at a timestamp that it states, or else at the first one that a decoded
/// frame has.
class StreamOrigin {
  public:
    explicit StreamOrigin(std::optional<double> stated_s) : origin_s_(stated_s) {}
    bool isKnown() const { return origin_s_.has_value(); }
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
    /// A packet was refused, or a frame cannot be converted.
    virtual void onRefusal(const FfmpegError& reason) = 0;
    /// The stream at hand is over and its decoder empty.
    virtual void onStreamEnd(StreamTrack track, bool gave_anything) = 0;
    /// A track would go on with a stream that cannot be decoded; nothing of it will be.
    virtual void onStreamRefused(const FfmpegError& reason) = 0;
};

/// All video, or all audio, of an input: the decoder of the stream at hand, and the times of what it gives,
/// in seconds since the origin as the timestamps say, but for their wraparound.
class Track {
  public:
    /// Begins with `stream` of an input in `format`, with so many threads, or with 0 as many as there are
    /// processors; of video, if that is wanted, decodes key frames only. What is referred to outlives this
    /// object. Throws FfmpegError if the stream cannot be decoded.
    Track(StreamTrack track, const AVFormatContext& format, const AVStream& stream, int threads,
          bool key_frames_only, StreamOrigin& origin, TrackListener& listener);
    Track(const Track&) = delete;
    Track& operator=(const Track&) = delete;

    /// Decodes a packet of `stream`; if that is not the one at hand, goes on with it. `complaints` are about
    /// the packet.
    void decode(const AVPacket& packet, const AVStream& stream,
                const std::vector<ComplaintReason>& complaints);
    /// No more packets come.
    void finish();

    /// At the end: what is wrong with what should have come after the last item, seen from its end.
    std::vector<ItemComplaint> rest() { return ledger_.finish(); }
    /// At the end: how many packets, the last ones, gave nothing.
    int64_t unanswered() const { return ledger_.unanswered(); }
    /// Whether what comes out from here on may be different the next time: the threads of a decoder make
    /// different things of the same damage.
    bool isUnsteady() { return has_threads_ && ledger_.isDisturbed(); }
    const AVCodecContext& decoder() const { return *codec_; }

  private:
    void open();
    void decodeKeyFrame(KeyFrames::Ready ready);
    void send(const AVPacket& packet, const std::vector<ComplaintReason>& complaints);
    void feed(const AVPacket* packet);
    void take(const AVFrame& frame);
    void give(const AVFrame& frame, MediaItem item);
    void refused(const FfmpegError& reason);
    double videoDuration(const AVFrame& frame) const;
    std::optional<double> meaningOf(int64_t stamp);
    double place(const AVFrame& frame, double duration_s);

    StreamTrack track_;
    const AVStream* stream_;
    int threads_;
    StreamOrigin& origin_;
    TrackListener& listener_;
    PacketLedger ledger_;
    CodecHandle codec_;         // null after a stream was refused; complains to the ledger
    bool has_threads_ = false;  // a decoder of this track
    std::optional<KeyFrames> key_frames_;
    FrameHandle frame_{orOutOfMemory(av_frame_alloc())};
    VideoFrameConverter frames_;
    AudioFrameConverter sounds_;
    double next_time_s_ = 0;      // where a frame without a timestamp is placed: the end of the one before it
    bool gave_anything_ = false;  // the stream at hand
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_TRACK_H_

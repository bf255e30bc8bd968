#ifndef ZEL_TOOLS_INPUT_DEMUXER_H_
#define ZEL_TOOLS_INPUT_DEMUXER_H_

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "input/complaint.h"
#include "input/ffmpeg_handles.h"
#include "input/per_track.h"
#include "input/stream_switch.h"

namespace zel_monitor {

/// The packets of one video and one audio stream of an input: those that suit best, and where streams come
/// and go those that take over from them.
class Demuxer {
  public:
    /// Chooses the streams of the tracks that are wanted. `format` outlives this object. Throws FfmpegError
    /// if there is no stream, or none that can be decoded.
    Demuxer(AVFormatContext& format, PerTrack<bool> wanted);

    /// A packet and the track that it belongs to. Its stream may be another one than that of the packet
    /// before.
    struct Packet {
        StreamTrack track;
        PacketHandle packet;
        bool is_encrypted;                        ///< cannot be decoded without a key
        std::vector<ComplaintReason> complaints;  ///< about it, or what lies between the one before and it
    };
    /// The next packet, of a hungry track as soon as there is one; packets that turned out to be wanted late
    /// wait until their track is. None at the end of the input.
    std::optional<Packet> next(PerTrack<bool> hungry);

    /// Null if the track has none.
    const AVStream* streamOf(StreamTrack track) const { return lanes_[track].stream; }
    const AVStream& streamOf(const AVPacket& packet) const { return *format_.streams[packet.stream_index]; }
    /// What is wrong with a stream of the track that is listed, but cannot be chosen.
    const std::optional<std::string>& unusable(StreamTrack track) const { return lanes_[track].unusable; }
    /// Whether there are streams of which not even the kind can be told, where such a thing does not happen
    /// to whole inputs.
    bool listsUnknown() const;
    /// The track's stream, or if none was chosen those that might have been if libavformat had made them out.
    std::vector<const AVStream*> candidates(StreamTrack track) const;
    /// Whether a stream may be about to take over. It is known for one track a little before the other.
    bool isUndecided(StreamTrack track) const { return lanes_[track].stream_switch.isUndecided(); }
    uint64_t bytesRead() const;

    /// At the end: what was wrong after the last packet.
    const std::vector<ComplaintReason>& lastComplaints() const { return complaints_; }
    /// At the end: what ended the reading, AVERROR_EOF or FFmpeg's code for what went wrong.
    int endReason() const;
    /// At the end: whether the last packet of either stream could not be filled.
    bool endsCorrupt() const { return lanes_.video.corrupt_last || lanes_.audio.corrupt_last; }
    /// Whether a stream that was not chosen had its say before the chosen one began.
    bool missedAny(StreamTrack track) const { return lanes_[track].stream_switch.missedAny(); }
    /// Where the last packet of any stream of the track's type begins.
    int64_t furthest(StreamTrack track) const { return lanes_[track].furthest; }

  private:
    struct Lane {
        bool wanted;
        AVStream* stream = nullptr;
        std::optional<std::string> unusable = {};
        StreamSwitch stream_switch = {};
        std::deque<PacketHandle> waiting = {};
        int64_t furthest = 0;
        bool corrupt_last = false;
    };

    void choose(StreamTrack track);
    std::optional<std::string> whyUnusable(StreamTrack track, int related) const;
    std::optional<StreamTrack> trackOf(const AVStream& stream) const;
    std::optional<Packet> read();
    std::optional<Packet> waiting(StreamTrack track);
    Packet handOut(StreamTrack track, PacketHandle packet);
    bool concerns(StreamTrack track, const AVStream& stream) const;
    void follow(StreamTrack track, bool at_end);

    AVFormatContext& format_;
    PerTrack<Lane> lanes_;
    bool streams_change_;
    std::vector<ComplaintReason> complaints_;  // since the last packet of a track
    uint64_t packet_bytes_ = 0;
    std::optional<int> end_reason_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_DEMUXER_H_

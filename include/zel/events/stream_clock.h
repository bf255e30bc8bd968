#ifndef ZEL_EVENTS_STREAM_CLOCK_H_
#define ZEL_EVENTS_STREAM_CLOCK_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>

namespace ZEL {

enum class StreamTrack : uint8_t { kVideo, kAudio };

/// Makes stream time out of the timestamps of a stream's two tracks, which may jump. The time of a track
/// never runs backwards.
///
/// - *Discontinuity forward*: a gap, the stream goes on at the later timestamp.
/// - *Discontinuity backward*, as where streams were joined: the stream goes on where it was. Both tracks
///   jump there, one a little before the other; the new part begins for both where the longer one's old part
///   ends.
/// - *Wrong timestamps* of single frames: they are placed as if nothing had happened. The first frame's is
///   wrong if the second one's lies before it.
/// - *Wraparound*: see unwrapped(); a wrap that was not undone counts as a discontinuity backward.
///
/// To tell these apart frames whose timestamps jump are held until a later one tells, at most kMostVideoHeld
/// or kMostAudioHeld of them. Frames of a track are placed in the order taken, so the caller keeps those that
/// wait in a queue of its own. Times that a clock gave are left as they are by another clock.
///
/// One thread at a time.
class StreamClock {
  public:
    /// Frames out of order by up to this are no discontinuity: interleaving is only so exact.
    static constexpr double kReorderS = 0.5;
    /// A track that comes later than expected by up to this has no gap.
    static constexpr double kLeastJumpS = 0.05;
    /// Up to this lies between the timestamps at which the two tracks begin one part.
    static constexpr double kMostApartS = 5.0;
    /// A player need not wait for the end of a gap that is longer.
    static constexpr double kLongestWaitS = 10.0;
    static constexpr size_t kMostVideoHeld = 4;
    /// One packet of a transport stream holds several frames of audio, under one timestamp.
    static constexpr size_t kMostAudioHeld = 32;

    /// Called for the oldest frame of `track` that has no place yet: it begins at `start_s` of the stream.
    /// Must not call the clock.
    using Place = std::function<void(StreamTrack track, double start_s)>;

    StreamClock();

    /// Takes the next frame of `track`, with the timestamp `stamp_s` and `length_s` long, both in seconds,
    /// and places all whose places are certain. A timestamp that is not finite stands for none: the frame
    /// follows the one before it. A length that is negative or not finite counts as 0.
    void take(StreamTrack track, double stamp_s, double length_s, const Place& place);

    /// Places what is held of `track`, as the timestamps say: for who can wait no longer for a frame that
    /// tells.
    void settle(StreamTrack track, const Place& place) { acceptJump(of(track), place); }

    /// The stream is over: places what is still held, video first.
    void finish(const Place& place);

    /// Timestamps of few bits begin again at zero every `period_s`: `stamp_s` in the turn in which it is
    /// nearest to `expected_s`. With a period of 0 they never wrap, and `stamp_s` is left as it is.
    static double unwrapped(double stamp_s, double expected_s, double period_s);

  private:
    struct Held {
        double stamp_s;
        double length_s;
    };
    struct Track {
        StreamTrack name;
        size_t most_held;
        std::deque<Held> held = {};
        bool any = false;                      ///< whether a frame was placed
        double last_s = 0.0;                   ///< start of the frame that was placed last
        double expected_s = 0.0;               ///< and its end
        size_t part = 0;                       ///< which of the clock's parts it is in
        std::optional<double> back_at_s = {};  ///< where it was when its timestamps jumped back last
        std::optional<double> back_to_s = {};  ///< timestamp of the first frame held, if that jumps back
    };

    Track& of(StreamTrack track) { return tracks_[static_cast<size_t>(track)]; }
    const Track& siblingOf(const Track& track) const;
    double& shiftOf(const Track& track) { return part_shift_s_[track.part]; }
    double shiftOf(const Track& track) const { return part_shift_s_[track.part]; }
    bool jumpsBack(const Track& track, double stamp_s) const;
    bool jumpsAhead(const Track& track, double stamp_s) const;
    void resolve(Track& track, double next_stamp_s, const Place& place);
    void acceptJump(Track& track, const Place& place);
    void beginPart(Track& track, double stamp_s);
    void releaseAtStamps(Track& track, const Place& place);
    void releaseInARow(Track& track, const Place& place);
    static void release(Track& track, double start_s, const Place& place);

    std::array<Track, 2> tracks_;
    // Between two discontinuities backward lies a part, in which stream time is the timestamps plus this. A
    // track is in one part at a time, so there are no more of them than tracks.
    std::array<double, 2> part_shift_s_{};
};

}  // namespace ZEL

#endif  // ZEL_EVENTS_STREAM_CLOCK_H_

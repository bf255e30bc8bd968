#ifndef ZEL_TOOLS_INPUT_INTERLEAVER_H_
#define ZEL_TOOLS_INPUT_INTERLEAVER_H_

#include <cstddef>
#include <deque>
#include <optional>

#include "input/media_item.h"
#include "input/per_track.h"

namespace zel_monitor {

/// Brings what two tracks give into the order of their timestamps, as far as the input interleaves them: a
/// track that has much ready no longer waits for the other one.
class Interleaver {
  public:
    /// Without this nobody waits for the track.
    void expect(StreamTrack track) { lanes_[track].expected = true; }
    /// For live streams, where a track that stays away must not hold up the other.
    void waitLess() { lanes_.audio.most_ahead = kMostAudioAheadLive; }
    /// Whether another stream may be taking over in the track; the other track waits longer for it then.
    void setUndecided(StreamTrack track, bool undecided) { lanes_[track].undecided = undecided; }
    void put(StreamTrack track, MediaItem item);
    /// Nothing more comes.
    void end() { ended_ = true; }

    PerTrack<bool> empty() const { return {lanes_.video.ready.empty(), lanes_.audio.ready.empty()}; }

    /// The item that is due next; none if more must be put to know.
    std::optional<MediaItem> next();

  private:
    static constexpr size_t kMostVideoAhead = 4;  // decoded frames are large
    static constexpr size_t kMostAudioAhead = 200;
    static constexpr size_t kMostAudioAheadLive = 40;

    struct Lane {
        size_t most_ahead;  // how many items wait for the other track
        bool expected = false;
        bool undecided = false;
        std::deque<MediaItem> ready = {};
        std::optional<double> given_s = {};  // time of the item that was given last
        size_t part = 0;                     // how often the times had jumped back before it

        /// In which part the first item that is ready lies; frames out of order are no jump.
        size_t nextPart() const;
    };

    bool mustWait(StreamTrack track) const;
    std::optional<StreamTrack> due() const;

    PerTrack<Lane> lanes_{.video = {.most_ahead = kMostVideoAhead}, .audio = {.most_ahead = kMostAudioAhead}};
    bool ended_ = false;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_INTERLEAVER_H_

#include "input/interleaver.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace zel_monitor {
namespace {

constexpr size_t kUndecidedPatience = 4;  // that many times more is waited for

}  // namespace

size_t Interleaver::Lane::nextPart() const {
    const bool jumps_back = given_s && timeOf(ready.front()) + ZEL::StreamClock::kReorderS < *given_s;
    return jumps_back ? part + 1 : part;
}

void Interleaver::put(StreamTrack track, MediaItem item) {
    lanes_[track].ready.push_back(std::move(item));
}

/// Whether what `track` has ready may be due only after something of its sibling that is still to come.
bool Interleaver::mustWait(StreamTrack track) const {
    const Lane& own = lanes_[track];
    const Lane& sibling = lanes_[siblingOf(track)];
    const size_t patience = sibling.undecided ? kUndecidedPatience : 1;
    return !ended_ && sibling.expected && own.ready.size() <= patience * own.most_ahead;
}

std::optional<StreamTrack> Interleaver::due() const {
    for (const StreamTrack track : kTracks) {
        if (lanes_[siblingOf(track)].ready.empty()) {
            const bool is_due = !lanes_[track].ready.empty() && !mustWait(track);
            return is_due ? std::optional(track) : std::nullopt;
        }
    }
    // Where streams were joined the times jump back in one track a little before the other.
    const auto order = [](const Lane& lane) {
        return std::tuple(lane.nextPart(), timeOf(lane.ready.front()));
    };
    return order(lanes_.audio) < order(lanes_.video) ? StreamTrack::kAudio : StreamTrack::kVideo;
}

std::optional<MediaItem> Interleaver::next() {
    const auto track = due();
    if (!track) {
        return std::nullopt;
    }
    Lane& lane = lanes_[*track];
    const Lane& sibling = lanes_[siblingOf(*track)];
    // A track that jumps back without its sibling is soon waited for no longer, and jumped alone.
    lane.part = sibling.ready.empty() ? std::min(lane.nextPart(), sibling.part) : lane.nextPart();
    MediaItem item = std::move(lane.ready.front());
    lane.ready.pop_front();
    lane.given_s = timeOf(item);
    return item;
}

}  // namespace zel_monitor

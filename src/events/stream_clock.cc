#include <zel/events/stream_clock.h>

#include <algorithm>
#include <cmath>

namespace ZEL {

StreamClock::StreamClock()
    : tracks_{Track{.name = StreamTrack::kVideo, .most_held = kMostVideoHeld},
              Track{.name = StreamTrack::kAudio, .most_held = kMostAudioHeld}} {}

void StreamClock::take(StreamTrack track, double stamp_s, double length_s, const Place& place) {
    Track& own = of(track);
    if (!std::isfinite(stamp_s)) {
        stamp_s = own.held.empty() ? own.expected_s - shiftOf(own)
                                   : own.held.back().stamp_s + own.held.back().length_s;
    }
    if (!own.held.empty()) {
        resolve(own, stamp_s, place);
    }
    own.held.push_back({stamp_s, std::isfinite(length_s) ? std::max(length_s, 0.0) : 0.0});
    if (own.held.size() > 1 || !own.any) {
        return;
    }
    if (jumpsBack(own, stamp_s)) {
        own.back_to_s = stamp_s;
    } else if (!jumpsAhead(own, stamp_s)) {
        releaseAtStamps(own, place);
    }
}

void StreamClock::finish(const Place& place) {
    for (Track& track : tracks_) {
        acceptJump(track, place);
    }
}

double StreamClock::unwrapped(double stamp_s, double expected_s, double period_s) {
    return period_s > 0.0 ? stamp_s + std::round((expected_s - stamp_s) / period_s) * period_s : stamp_s;
}

const StreamClock::Track& StreamClock::siblingOf(const Track& track) const {
    return tracks_[track.name == StreamTrack::kVideo ? 1 : 0];
}

bool StreamClock::jumpsBack(const Track& track, double stamp_s) const {
    return stamp_s + shiftOf(track) < track.last_s;
}

bool StreamClock::jumpsAhead(const Track& track, double stamp_s) const {
    return stamp_s + shiftOf(track) - track.expected_s > kLeastJumpS;
}

/// Decides on what is held if the timestamp that follows tells enough. If that one goes on from before the
/// jump, the held timestamps were wrong.
void StreamClock::resolve(Track& track, double next_stamp_s, const Place& place) {
    if (!track.any) {
        Held& first = track.held.front();
        if (first.stamp_s > next_stamp_s) {
            first.stamp_s = next_stamp_s - first.length_s;
        }
        releaseAtStamps(track, place);
        return;
    }
    double unmoved_s = track.expected_s;  // where the track would be if the held timestamps were wrong
    for (const Held& held : track.held) {
        unmoved_s += held.length_s;
    }
    const Held& last = track.held.back();
    const double moved_s = last.stamp_s + last.length_s;
    const bool returns = jumpsBack(track, track.held.front().stamp_s) || next_stamp_s < last.stamp_s;
    if (returns && std::abs(next_stamp_s + shiftOf(track) - unmoved_s) < std::abs(next_stamp_s - moved_s)) {
        releaseInARow(track, place);
    } else if (track.held.size() == track.most_held) {
        acceptJump(track, place);
    }
}

void StreamClock::acceptJump(Track& track, const Place& place) {
    if (!track.held.empty() && track.any && jumpsBack(track, track.held.front().stamp_s)) {
        beginPart(track, track.held.front().stamp_s);
    }
    releaseAtStamps(track, place);
}

/// The timestamps of `track` go on with `stamp_s` after a jump back. Where streams were joined both tracks
/// jump: the second one comes into the part that the first one began, and may move its beginning.
void StreamClock::beginPart(Track& track, double stamp_s) {
    const Track& sibling = siblingOf(track);
    const auto is_near = [stamp_s](double other_s) { return std::abs(stamp_s - other_s) < kMostApartS; };
    const double shift_s = track.expected_s - stamp_s;
    if (sibling.back_to_s && is_near(*sibling.back_to_s)) {
        track.part = 1 - sibling.part;
        shiftOf(track) = std::max(shift_s, sibling.expected_s - *sibling.back_to_s);
    } else if (sibling.back_at_s && sibling.last_s - *sibling.back_at_s < kMostApartS &&
               shiftOf(sibling) > shiftOf(track) && is_near(sibling.last_s - shiftOf(sibling))) {
        track.part = sibling.part;
        shiftOf(track) = std::max(shift_s, shiftOf(track));
    } else {
        track.part = 1 - sibling.part;
        shiftOf(track) = shift_s;
    }
    track.back_at_s = track.expected_s;
}

void StreamClock::releaseAtStamps(Track& track, const Place& place) {
    while (!track.held.empty()) {
        release(track, track.held.front().stamp_s + shiftOf(track), place);
    }
}

void StreamClock::releaseInARow(Track& track, const Place& place) {
    while (!track.held.empty()) {
        release(track, track.expected_s, place);
    }
}

/// Places the oldest frame held.
void StreamClock::release(Track& track, double start_s, const Place& place) {
    const Held oldest = track.held.front();
    track.held.pop_front();
    track.back_to_s.reset();
    track.last_s = track.any ? std::max(start_s, track.last_s) : start_s;
    track.expected_s = track.last_s + oldest.length_s;
    track.any = true;
    place(track.name, track.last_s);
}

}  // namespace ZEL

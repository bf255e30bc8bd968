#include "input/stream_switch.h"

#include <zel/events/stream_clock.h>

#include <algorithm>

namespace zel_monitor {
namespace {

constexpr double kCertainS = 5.0;  // muxers lay down a track's sound in pieces of a second or two
constexpr double kEnoughS = 0.5;   // at the end, where nothing more can tell
constexpr double kLeastMissedS = 1.0;
constexpr size_t kTellingPieces = 4;  // in a row, which no muxer lays down of one track in a short clip
constexpr size_t kMostKept = 500;

}  // namespace

void StreamSwitch::Period::add(std::optional<double> time_s) {
    if (time_s) {
        from_s = from_s.value_or(*time_s);
        to_s = time_s;
    }
}

void StreamSwitch::goesOn(const AVPacket& packet, std::optional<double> time_s) {
    chosen_.add(time_s);
    if (packet.pos < 0) {  // cut out of a larger piece that had a place
        return;
    }
    begin_ = begin_.value_or(packet.pos);
    for (auto& [index, other] : others_) {
        if (!other.kept.empty() && other.kept.front()->pos < packet.pos) {
            other.beside = true;
            other.kept.clear();
        }
    }
}

void StreamSwitch::runs(const AVPacket& packet, std::optional<double> time_s) {
    Other& other = others_[packet.stream_index];
    if (other.beside || (packet.pos < 0 && other.kept.empty())) {
        return;
    }
    if (packet.pos >= 0 && (!begin_ || packet.pos < *begin_)) {
        if (!other.settled) {
            other.before.add(time_s);
        }
        return;
    }
    if (other.before.from_s) {  // it began earlier and still runs
        other.before = {};
        other.beside = true;
        return;
    }
    if (other.kept.empty()) {
        other.kept_period = {};
        other.pieces = 0;
    }
    other.pieces += packet.pos >= 0 ? size_t{1} : size_t{0};
    other.kept_period.add(time_s);
    other.kept.emplace_back(orOutOfMemory(av_packet_clone(&packet)));
}

bool StreamSwitch::isUndecided() const {
    return std::any_of(others_.begin(), others_.end(),
                       [](const auto& entry) { return !entry.second.kept.empty(); });
}

double StreamSwitch::timeAlone(const Other& other, bool at_end) const {
    const Period& period = other.kept_period;
    if (!period.from_s || !chosen_.to_s) {
        return 0.0;
    }
    // Whether the clock began again, with other contents; what runs beside the chosen one is laid down early.
    const bool tells_much = at_end && other.pieces >= kTellingPieces;
    const double early_s = tells_much ? ZEL::StreamClock::kReorderS : ZEL::StreamClock::kMostApartS;
    const bool began_again = *period.from_s < *chosen_.to_s - early_s;
    return began_again ? period.length() : *period.to_s - *chosen_.to_s;
}

std::optional<int> StreamSwitch::successor(bool at_end) const {
    for (const auto& [index, other] : others_) {
        if (!other.kept.empty() &&
            (timeAlone(other, at_end) >= (at_end ? kEnoughS : kCertainS) || other.kept.size() >= kMostKept)) {
            return index;
        }
    }
    return std::nullopt;
}

std::deque<PacketHandle> StreamSwitch::choose(int successor, int former) {
    missed_ = missedAny();
    Other& chosen = others_.at(successor);
    std::deque<PacketHandle> kept = std::move(chosen.kept);
    chosen_ = chosen.kept_period;
    others_.erase(successor);
    begin_ = kept.front()->pos;
    others_[former] = {};
    for (auto& [index, other] : others_) {
        other.before = {};
        other.settled = true;
        other.beside = !other.kept.empty();  // then it began together with the successor
        other.kept.clear();
    }
    return kept;
}

bool StreamSwitch::missedAny() const {
    return missed_ || std::any_of(others_.begin(), others_.end(), [this](const auto& entry) {
               const Period& before = entry.second.before;
               return before.length() >= kLeastMissedS &&
                      (!chosen_.from_s || *before.to_s < *chosen_.from_s + kEnoughS);
           });
}

}  // namespace zel_monitor

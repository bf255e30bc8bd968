#include "succession.h"

#include <algorithm>
#include <utility>

namespace zel_monitor {
namespace {

constexpr double kLongestPauseS = 1.0;  // of a track that goes on; muxers interleave more closely
constexpr size_t kMostKept = 500;

}  // namespace

void Succession::goesOn(const AVPacket& packet) {
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

void Succession::runs(const AVPacket& packet, std::optional<double> time_s) {
    Other& other = others_[packet.stream_index];
    if (other.beside || (packet.pos < 0 && other.kept.empty())) {
        return;
    }
    if (packet.pos >= 0 && (!begin_ || packet.pos < *begin_)) {
        other.before = !other.settled;
        return;
    }
    if (std::exchange(other.before, false)) {  // it began earlier and still runs
        other.beside = true;
        return;
    }
    if (other.kept.empty()) {
        other.from_s = time_s;
    }
    other.to_s = time_s;
    other.kept.emplace_back(orOutOfMemory(av_packet_clone(&packet)));
}

bool Succession::isUndecided() const {
    return std::any_of(others_.begin(), others_.end(),
                       [](const auto& entry) { return !entry.second.kept.empty(); });
}

std::optional<int> Succession::successor(bool at_end) const {
    for (const auto& [index, other] : others_) {
        const bool is_long = other.from_s && other.to_s && *other.to_s - *other.from_s >= kLongestPauseS;
        if (!other.kept.empty() && (at_end || is_long || other.kept.size() >= kMostKept)) {
            return index;
        }
    }
    return std::nullopt;
}

std::deque<PacketHandle> Succession::choose(int successor, int former) {
    std::deque<PacketHandle> kept = std::move(others_.at(successor).kept);
    others_.erase(successor);
    begin_ = kept.front()->pos;
    others_[former] = {};
    for (auto& [index, other] : others_) {
        other.settled = !other.before;
        other.beside = !other.kept.empty();  // then it began together with the successor
        other.kept.clear();
    }
    return kept;
}

bool Succession::missedAny() const {
    return std::any_of(others_.begin(), others_.end(), [](const auto& entry) { return entry.second.before; });
}

}  // namespace zel_monitor

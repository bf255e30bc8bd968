#include "input/key_frames.h"

#include <algorithm>
#include <cmath>

namespace zel_monitor {
namespace {

constexpr double kLeastGapS = 1.0;  // as the shortest stall unasked; slow streams have shorter ones all over
constexpr double kFallbackRate = 25.0;  // of streams that say neither

int64_t ticksOf(double seconds, AVRational time_base) {
    return std::llround(seconds / av_q2d(time_base));
}

}  // namespace

KeyFrames::Ready KeyFrames::take(const AVPacket& packet, AVRational time_base,
                                 const std::vector<ComplaintReason>& complaints, double frame_rate) {
    const bool is_key = (packet.flags & AV_PKT_FLAG_KEY) != 0;
    Ready ready;
    if (is_key) {
        setDuration(&packet);
        ready = std::exchange(held_, {});
        held_.packet.reset(orOutOfMemory(av_packet_clone(&packet)));
        shown_.clear();
        unstamped_ = 0;
        time_base_ = time_base;
    }
    if (!held_.packet) {  // the stream begins in the middle of something
        return ready;
    }
    held_.complaints.insert(held_.complaints.end(), complaints.begin(), complaints.end());
    const int64_t length = packet.duration > 0
                               ? packet.duration
                               : ticksOf(1.0 / (frame_rate > 0.0 ? frame_rate : kFallbackRate), time_base);
    if (packet.pts != AV_NOPTS_VALUE) {
        shown_.emplace(packet.pts, packet.pts + length);
    } else {
        unstamped_ += length;
    }
    return ready;
}

KeyFrames::Ready KeyFrames::finish() {
    setDuration(nullptr);
    return std::exchange(held_, {});
}

/// Lets the key frame last as long as there are frames without a gap, and if there is none, until the next.
void KeyFrames::setDuration(const AVPacket* next) {
    if (!held_.packet) {
        return;
    }
    AVPacket& key = *held_.packet;
    if (key.pts == AV_NOPTS_VALUE) {
        key.duration = unstamped_;
        return;
    }
    if (next != nullptr && next->pts != AV_NOPTS_VALUE && next->pts > key.pts) {
        shown_.emplace(next->pts, next->pts);
    }
    const int64_t least_gap = ticksOf(kLeastGapS, time_base_);
    int64_t end = key.pts;
    for (const auto& [from, to] : shown_) {
        if (from < key.pts) {  // leading frames, shown before it
            continue;
        }
        if (from > end + least_gap && next != nullptr) {  // what is shown last tells where the stream ends
            break;
        }
        end = std::max({end, from, to});
    }
    key.duration = end - key.pts;
}

}  // namespace zel_monitor

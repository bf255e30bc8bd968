#include "input/key_frames.h"

#include <cstdint>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace zel_monitor;
using testing::ElementsAre;
using testing::Pair;

struct Sent {
    int64_t pts;
    bool is_key = false;
    int64_t duration = 40;
};

/// Timestamp and duration of each key frame, in milliseconds as `sent`.
std::vector<std::pair<int64_t, int64_t>> keyFramesOf(const std::vector<Sent>& sent,
                                                     size_t* complaints = nullptr) {
    constexpr AVRational kMilliseconds{1, 1000};
    KeyFrames key_frames;
    std::vector<std::pair<int64_t, int64_t>> found;
    const auto take = [&](const KeyFrames::Ready& ready) {
        if (ready.packet) {
            found.emplace_back(ready.packet->pts, ready.packet->duration);
            if (complaints != nullptr) {
                *complaints += ready.complaints.size();
            }
        }
    };
    for (const Sent& one : sent) {
        const PacketHandle packet(av_packet_alloc());
        packet->pts = one.pts;
        packet->duration = one.duration;
        packet->flags = one.is_key ? AV_PKT_FLAG_KEY : 0;
        take(key_frames.take(*packet, kMilliseconds, {ComplaintReason::kBrokenPacket}, 25.0));
    }
    take(key_frames.finish());
    return found;
}

TEST(KeyFrames, LastUntilTheNextOrUntilFramesAreMissing) {
    EXPECT_THAT(keyFramesOf({{0, true}, {120}, {40}, {80}, {160, true}, {200}}),
                ElementsAre(Pair(0, 160), Pair(160, 80)));
    EXPECT_THAT(keyFramesOf({{0, true}, {40}, {3000, true}}), ElementsAre(Pair(0, 80), Pair(3000, 40)));
    EXPECT_THAT(keyFramesOf({{0, true}, {40}, {3000}, {3040}, {3080, true}}),
                ElementsAre(Pair(0, 80), Pair(3080, 40)));
    EXPECT_THAT(keyFramesOf({{0, true}, {900}, {1800, true}, {4000}}),
                ElementsAre(Pair(0, 1800), Pair(1800, 2240)));
    // Frames that are shown before it came after it; timestamps may jump back.
    EXPECT_THAT(keyFramesOf({{1000, true}, {920}, {960}, {1040}, {1080, true}, {0, true}, {40}}),
                ElementsAre(Pair(1000, 80), Pair(1080, 40), Pair(0, 80)));
}

TEST(KeyFrames, NeedNoTimestampsAndMissNoComplaint) {
    size_t complaints = 0;
    EXPECT_THAT(
        keyFramesOf(
            {{AV_NOPTS_VALUE}, {AV_NOPTS_VALUE, true, 0}, {AV_NOPTS_VALUE, false, 0}, {AV_NOPTS_VALUE, true}},
            &complaints),
        ElementsAre(Pair(AV_NOPTS_VALUE, 80), Pair(AV_NOPTS_VALUE, 40)));
    EXPECT_EQ(complaints, 3U);  // all but what came before the first key frame
}

}  // namespace

#include "scan/damage_events.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using zel_monitor::Complaint;
using zel_monitor::ComplaintReason;
using zel_monitor::damageEvents;

Complaint complaint(double start_s, double end_s, ComplaintReason reason = ComplaintReason::kDecodingError) {
    return {.reason = reason,
            .track = ZEL::StreamTrack::kVideo,
            .span = {start_s, end_s},
            .count = 1,
            .share = 0.05,
            .slice_share = 0.3};
}

TEST(DamageEvents, JoinComplaintsByTheRule) {
    const std::vector<Complaint> complaints{complaint(0.0, 60.0, ComplaintReason::kSmallGaps),
                                            complaint(1.0, 3.0), complaint(2.0, 2.5), complaint(3.9, 4.0),
                                            complaint(9.0, 9.0)};
    const auto events = damageEvents(complaints, {.min_s = 0.0, .gap_s = 1.0});
    ASSERT_EQ(3U, events.size());
    EXPECT_DOUBLE_EQ(60.0, events[0].span.length()) << "what is all over the stream swallows nothing";
    EXPECT_DOUBLE_EQ(0.05, events[0].share);
    EXPECT_DOUBLE_EQ(1.0, events[1].span.start_s);
    EXPECT_DOUBLE_EQ(4.0, events[1].span.end_s);
    EXPECT_NEAR(0.7, events[1].share, 1e-9);
    EXPECT_DOUBLE_EQ(0.3, events[1].evidence->value);
    EXPECT_DOUBLE_EQ(0.02, events[1].evidence->limit);
    EXPECT_DOUBLE_EQ(9.0, events[2].span.start_s);
    EXPECT_EQ(2U, damageEvents(complaints, {.min_s = 0.5, .gap_s = 1.0}).size());
    EXPECT_TRUE(damageEvents({}, {}).empty());
}

TEST(DamageEvents, AreWhatSomebodyNotices) {
    Complaint little = complaint(1.0, 1.04, ComplaintReason::kConcealed);
    little.slice_share = 0.004;
    EXPECT_TRUE(damageEvents({little}, {}).empty());
    little.share = 0.06;
    ASSERT_EQ(1U, damageEvents({little}, {}).size());
    EXPECT_DOUBLE_EQ(0.05, damageEvents({little}, {})[0].evidence->limit);

    Complaint packet = complaint(1.0, 1.04, ComplaintReason::kBrokenPacket);
    EXPECT_TRUE(damageEvents({packet}, {}).empty());
    packet.count = 2;
    packet.slice_share = 0.0;
    ASSERT_EQ(1U, damageEvents({packet}, {}).size());
    EXPECT_FALSE(damageEvents({packet}, {})[0].evidence) << "nobody knows how much";
    packet = complaint(1.0, 1.04, ComplaintReason::kBrokenPacket);
    packet.track = ZEL::StreamTrack::kAudio;
    EXPECT_EQ(1U, damageEvents({packet}, {}).size());

    EXPECT_TRUE(damageEvents({complaint(9.0, 9.0, ComplaintReason::kRefused)}, {}).empty()) << "at the end";
    EXPECT_EQ(1U, damageEvents({complaint(8.0, 8.04, ComplaintReason::kRefused)}, {}).size());
}

}  // namespace

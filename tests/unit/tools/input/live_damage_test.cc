#include "input/live_damage.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "input/stream_complaints.h"
#include "scan/damage_events.h"
#include "support/events.h"
#include "support/random.h"

namespace {

using support::isEvent;
using testing::ElementsAre;
using testing::IsEmpty;
using zel_monitor::ComplaintReason;
using zel_monitor::ItemComplaint;
using zel_monitor::LiveDamage;
using zel_monitor::MediaItem;

constexpr double kFrameS = 0.04;
constexpr ZEL::EventRule kRule{.min_s = 0.0, .gap_s = 1.0};

MediaItem frame(int number, std::vector<ItemComplaint> complaints = {}) {
    return zel_monitor::VideoFrame{.time = number * kFrameS,
                                   .duration = kFrameS,
                                   .planes = {},
                                   .frame = nullptr,
                                   .notes = {.complaints = std::move(complaints)}};
}

const ItemComplaint kBroken{ComplaintReason::kDecodingError, 0.0, kFrameS, 0.5};
const ItemComplaint kRefused{ComplaintReason::kRefused, 0.0, 0.0, 1.0};

TEST(LiveDamage, TellsWhatAScanTellsAndAtOnce) {
    support::Random random(3);
    for (int round = 0; round < 20; ++round) {
        support::EventRecorder heard;
        LiveDamage live(kRule, heard);
        zel_monitor::StreamComplaints all;
        for (int i = 0; i < 2000; ++i) {
            const bool is_hit = random.next() % 30 == 0;
            const MediaItem item = is_hit ? frame(i, {kBroken, kRefused}) : frame(i);
            all.add(item);
            live.saw(item);
            EXPECT_TRUE(!is_hit || heard.open[indexOf(ZEL::EventKind::kDamage)]) << i;
        }
        live.end();
        auto told = heard.events;
        told.insert(told.end(), heard.thinned.begin(), heard.thinned.end());
        std::sort(told.begin(), told.end(),
                  [](const auto& a, const auto& b) { return a.span.start_s < b.span.start_s; });
        const auto scanned = damageEvents(all.list(), kRule);
        ASSERT_EQ(scanned.size(), told.size());
        for (size_t i = 0; i < told.size(); ++i) {
            EXPECT_NEAR(scanned[i].span.start_s, told[i].span.start_s, kFrameS);
            EXPECT_NEAR(scanned[i].span.end_s, told[i].span.end_s, 1e-9);
        }
    }
}

TEST(LiveDamage, IsOneEventHoweverLongAndOverOnceItsGapIs) {
    support::EventRecorder heard;
    LiveDamage live(kRule, heard);
    constexpr int kFrames = 100'000;  // which takes for ever if all of them are kept
    for (int i = 25; i < kFrames; ++i) {
        live.saw(frame(i, {kBroken}));
    }
    ASSERT_TRUE(live.evidence());
    EXPECT_NEAR(0.5, live.evidence()->value, 0.05);
    live.saw(frame(kFrames + 24));
    EXPECT_THAT(heard.events, IsEmpty()) << "the gap is not over yet";
    live.saw(frame(kFrames + 26));
    live.saw(frame(kFrames + 27, {kBroken}));
    live.end();
    const double end_s = kFrames * kFrameS;
    EXPECT_THAT(heard.events,
                ElementsAre(isEvent(ZEL::EventKind::kDamage, 1.0, end_s),
                            isEvent(ZEL::EventKind::kDamage, end_s + 1.08, end_s + 1.12, true)));
}

TEST(LiveDamage, HeedsTheMinimumAndWhatNobodyNotices) {
    support::EventRecorder heard;
    LiveDamage live({.min_s = 0.5, .gap_s = 1.0}, heard);
    const ItemComplaint unnoticed{ComplaintReason::kConcealed, 0.0, kFrameS, 0.01};
    for (int i = 0; i < 200; ++i) {
        live.saw(frame(i, {i == 100 ? kBroken : unnoticed}));
    }
    live.end();
    EXPECT_THAT(heard.raised, IsEmpty());
}

}  // namespace

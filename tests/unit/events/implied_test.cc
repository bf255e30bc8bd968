#include "events/implied.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using ZEL::EventKind;
using ZEL::Implied;
using ZEL::Sight;
using ZEL::Sighting;
using ZEL::TimeSpan;

auto isSighting(EventKind kind, double start_s, double end_s, Sight sight) {
    using testing::AllOf;
    using testing::DoubleEq;
    using testing::Field;
    return AllOf(Field(&Sighting::kind, kind), Field(&Sighting::sight, sight),
                 Field(&Sighting::span, AllOf(Field(&TimeSpan::start_s, DoubleEq(start_s)),
                                              Field(&TimeSpan::end_s, DoubleEq(end_s)))));
}

void tellBlackAndGreen(Implied& implied, TimeSpan span, bool black) {
    implied.see({EventKind::kGreen, span, Sight::kAbsent});
    implied.see({EventKind::kBlack, span, ZEL::sightOf(black)});
}

TEST(Implied, WhatIsSettledLateIsHiddenWhereTheFaultWas) {
    Implied implied;
    for (int i = 0; i < 6; ++i) {
        tellBlackAndGreen(implied, {i * 1.0, i + 1.0}, i == 2 || i == 3);
        EXPECT_EQ(implied.takeSettled().size(), 2U);
    }
    implied.see({EventKind::kFreeze, {0.0, 3.5}, Sight::kPresent, {}, true});
    implied.see({EventKind::kFreeze, {3.5, 6.0}, Sight::kAbsent});
    const auto settled = implied.takeSettled();
    ASSERT_THAT(settled, ElementsAre(isSighting(EventKind::kFreeze, 0.0, 2.0, Sight::kPresent),
                                     isSighting(EventKind::kFreeze, 2.0, 3.5, Sight::kUnknown),
                                     isSighting(EventKind::kFreeze, 3.5, 4.0, Sight::kUnknown),
                                     isSighting(EventKind::kFreeze, 4.0, 6.0, Sight::kAbsent)));
    EXPECT_TRUE(settled[0].apart);
    EXPECT_FALSE(settled[1].apart);
}

TEST(Implied, SightingWaitsForWhatMayHideItAndKeepsItsOrder) {
    Implied implied;
    implied.see({EventKind::kAntiphase, {0.0, 1.0}, Sight::kAbsent});
    EXPECT_EQ(implied.takeSettled().size(), 1U);
    implied.see({EventKind::kHighVoice, {0.0, 0.25}, Sight::kPresent});
    implied.see({EventKind::kMute, {0.0, 1.0}, Sight::kAbsent});
    implied.see({EventKind::kNoVoice, {0.0, 1.0}, Sight::kAbsent});
    implied.see({EventKind::kHighVoice, {0.25, 0.5}, Sight::kPresent});
    EXPECT_THAT(implied.takeSettled(),
                ElementsAre(isSighting(EventKind::kMute, 0.0, 1.0, Sight::kAbsent),
                            isSighting(EventKind::kNoVoice, 0.0, 1.0, Sight::kAbsent)));
    implied.see({EventKind::kClipping, {0.0, 0.25}, Sight::kAbsent});
    implied.see({EventKind::kClipping, {0.25, 0.5}, Sight::kPresent});
    EXPECT_THAT(implied.takeSettled(),
                ElementsAre(isSighting(EventKind::kClipping, 0.0, 0.25, Sight::kAbsent),
                            isSighting(EventKind::kClipping, 0.25, 0.5, Sight::kPresent),
                            isSighting(EventKind::kHighVoice, 0.0, 0.25, Sight::kPresent),
                            isSighting(EventKind::kHighVoice, 0.25, 0.5, Sight::kUnknown)));
    implied.see({EventKind::kHighVoice, {0.5, 0.75}, Sight::kPresent});
    EXPECT_THAT(implied.takeSettled(), IsEmpty());
    EXPECT_THAT(implied.takeRest(),
                ElementsAre(isSighting(EventKind::kHighVoice, 0.5, 0.75, Sight::kPresent)));
}

TEST(Implied, GapHidesAFreezeButNotWhatIsBlackAroundIt) {
    Implied implied;
    tellBlackAndGreen(implied, {0.0, 1.0}, false);
    implied.cover(EventKind::kStall, {1.0, 5.0});
    tellBlackAndGreen(implied, {5.0, 6.0}, false);
    implied.takeSettled();
    implied.see({EventKind::kFreeze, {0.0, 6.0}, Sight::kPresent});
    EXPECT_THAT(implied.takeSettled(),
                ElementsAre(isSighting(EventKind::kFreeze, 0.0, 1.0, Sight::kPresent),
                            isSighting(EventKind::kFreeze, 1.0, 5.0, Sight::kUnknown),
                            isSighting(EventKind::kFreeze, 5.0, 6.0, Sight::kPresent)));
}

TEST(Implied, DamageHidesWhatItLeavesOfTheFramesButNotWhatIsBlack) {
    Implied implied;
    implied.cover(EventKind::kDamage, {0.0, 1.5});
    implied.cover(EventKind::kDamage, {1.0, 2.0});
    tellBlackAndGreen(implied, {0.0, 3.0}, true);
    implied.see({EventKind::kBlock, {0.0, 3.0}, Sight::kPresent});
    EXPECT_THAT(implied.takeSettled(), ElementsAre(isSighting(EventKind::kBlack, 0.0, 3.0, Sight::kPresent),
                                                   isSighting(EventKind::kGreen, 0.0, 2.0, Sight::kUnknown),
                                                   isSighting(EventKind::kGreen, 2.0, 3.0, Sight::kAbsent),
                                                   isSighting(EventKind::kBlock, 0.0, 3.0, Sight::kUnknown)));
}

TEST(Implied, NothingWaitsForeverForWhatDoesNotCome) {
    Implied implied;
    size_t taken = 0;
    for (int i = 0; i < 5000; ++i) {
        implied.see({EventKind::kLowVoice, {i * 1.0, i + 1.0}, Sight::kPresent});
        implied.cover(EventKind::kStall, {i * 1.0, i + 0.5});
        taken += implied.takeSettled().size();
    }
    EXPECT_EQ(taken, 5000 - Implied::kMostWaiting);
    EXPECT_EQ(implied.takeRest().size(), Implied::kMostWaiting);
}

}  // namespace

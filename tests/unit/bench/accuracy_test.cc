#include <algorithm>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "selftest/child_process.h"
#include "selftest/corpus.h"
#include "selftest/results.h"
#include "selftest/rivals.h"
#include "selftest/scoring.h"

namespace {

using namespace zel_monitor::selftest;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::HasSubstr;

auto isSpan(double start, double end) {
    return testing::AllOf(testing::Field(&ZEL::TimeSpan::start_s, DoubleNear(start, 1e-9)),
                          testing::Field(&ZEL::TimeSpan::end_s, DoubleNear(end, 1e-9)));
}

TEST(SelftestScoring, OverlapOfOneHalfIsAHit) {
    const Score score = scoreOf({{4.0, 8.0}, {20.0, 24.0}}, {{6.0, 8.0}, {20.5, 25.0}, {30.0, 31.0}});
    EXPECT_EQ(score.hits, 2U);
    EXPECT_EQ(score.misses, 0U);
    EXPECT_EQ(score.false_alarms, 1U);
    EXPECT_DOUBLE_EQ(*score.precision(), 2.0 / 3.0);
    EXPECT_DOUBLE_EQ(*score.onsetDelay(), 1.25);
    EXPECT_DOUBLE_EQ(*score.lengthError(), 1.25);
}

TEST(SelftestScoring, LessIsAMissAndAFalseAlarm) {
    const Score score = scoreOf({{4.0, 8.0}}, {{6.1, 8.0}});
    EXPECT_EQ(score.hits, 0U);
    EXPECT_EQ(score.misses, 1U);
    EXPECT_EQ(score.false_alarms, 1U);
    EXPECT_FALSE(score.onsetDelay());
    EXPECT_FALSE(scoreOf({}, {}).precision());
    EXPECT_FALSE(scoreOf({}, {}).recall());
}

TEST(SelftestRivals, TheirOutputIsRead) {
    EXPECT_THAT(parseBlack("[blackdetect @ 0x1] black_start:4 black_end:8.04 black_duration:4.04\n"
                           "[blackdetect @ 0x1] black_start:10 black_end:12 black_duration:2\n"),
                ElementsAre(isSpan(4.0, 8.04), isSpan(10.0, 12.0)));
    EXPECT_THAT(parseStartEnd("lavfi.freezedetect.freeze_start: 4\nlavfi.freezedetect.freeze_duration: 2\n"
                              "lavfi.freezedetect.freeze_end: 6\nlavfi.freezedetect.freeze_start: 9\n",
                              "freeze", 12.0),
                ElementsAre(isSpan(4.0, 6.0), isSpan(9.0, 12.0)));
    EXPECT_THAT(
        parseStartEnd("silence_start: -0.01\nsilence_end: 2.5 | silence_duration: 2.51\n", "silence", 9.0),
        ElementsAre(isSpan(-0.01, 2.5)));
}

TEST(SelftestRivals, BlockinessBecomesEventsByItsThreshold) {
    EXPECT_EQ(parseBlockiness("pts_time:0\nlavfi.block=1.5\npts_time:0.04\nlavfi.block=2.5\n"), 2.5);
    EXPECT_FALSE(parseBlockiness("nothing"));
    const std::vector<Blockiness> values{{0.0, 1.0}, {0.5, 3.0}, {1.0, 3.0}, {1.5, 1.0}, {2.0, 1.0}};
    EXPECT_THAT(blockEvents(values, 2.0), ElementsAre(isSpan(0.5, 1.5)));
    EXPECT_THAT(blockEvents(values, 4.0), testing::IsEmpty());
}

TEST(SelftestResults, ThresholdThatServesTheRivalBestIsTaken) {
    const auto blocky = std::find_if(corpus().begin(), corpus().end(), [](const Case& c) {
        return c.kind == ZEL::EventKind::kBlock && !c.truth.empty();
    });
    ASSERT_NE(blocky, corpus().end());
    std::vector<Result> results(1);
    results[0].tested = &*blocky;
    for (int i = 0; i < 24; ++i) {
        results[0].blockiness.push_back({i * 0.5, i >= 8 && i < 16 ? 2.0 : 1.0});
    }
    const auto threshold = scoreBlockiness(results);
    EXPECT_EQ(threshold, 2.0);
    ASSERT_TRUE(results[0].rival);
    EXPECT_EQ(results[0].rival->hits, 1U);
    EXPECT_THAT(resultText(results, threshold), HasSubstr("found"));
}

TEST(SelftestCorpus, CasesAreNamedOnceAndEveryKindIsShownWithAndWithoutFault) {
    std::set<std::string> names;
    for (const Case& one : corpus()) {
        EXPECT_TRUE(names.insert(one.name).second) << one.name;
    }
    for (const auto& info : ZEL::eventKinds()) {
        if (info.source == ZEL::EventSource::kTimestamps) {
            continue;
        }
        const auto has = [&](bool fault) {
            return std::any_of(corpus().begin(), corpus().end(), [&](const Case& c) {
                return c.kind == info.kind && c.truth.empty() != fault;
            });
        };
        EXPECT_TRUE(has(true) && has(false)) << info.name;
    }
}

TEST(SelftestChildProcess, GivesTheOutputOrSaysWhyNot) {
    EXPECT_EQ(outputOf({"sh", "-c", "echo out; echo err >&2"}), "out\nerr\n");
    EXPECT_THROW(outputOf({"sh", "-c", "exit 3"}), std::runtime_error);
    EXPECT_THROW(outputOf({"no-such-program-anywhere"}), std::runtime_error);
}

}  // namespace

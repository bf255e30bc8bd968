#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bench/accuracy/child_process.h"
#include "bench/accuracy/corpus.h"
#include "bench/accuracy/real_clips.h"
#include "bench/accuracy/real_results.h"
#include "bench/accuracy/results.h"
#include "bench/accuracy/rivals.h"
#include "bench/accuracy/scoring.h"
#include "support/filter_source.h"

namespace {

using namespace bench::accuracy;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

auto isSpan(double start, double end, double within = 1e-9) {
    return testing::AllOf(testing::Field(&ZEL::TimeSpan::start_s, DoubleNear(start, within)),
                          testing::Field(&ZEL::TimeSpan::end_s, DoubleNear(end, within)));
}

TEST(AccuracyScoring, OverlapOfOneHalfIsAHit) {
    const Score score = scoreOf({{4.0, 8.0}, {20.0, 24.0}}, {{6.0, 8.0}, {20.5, 25.0}, {30.0, 31.0}});
    EXPECT_EQ(score.hits, 2U);
    EXPECT_EQ(score.misses, 0U);
    EXPECT_EQ(score.false_alarms, 1U);
    EXPECT_DOUBLE_EQ(*score.precision(), 2.0 / 3.0);
    EXPECT_DOUBLE_EQ(*score.onsetDelay(), 1.25);
    EXPECT_DOUBLE_EQ(*score.lengthError(), 1.25);
    EXPECT_DOUBLE_EQ(score.accuracy(), 2.0 / 3.0);
}

TEST(AccuracyScoring, LessIsAMissAndAFalseAlarmUnlessSomethingElseIsTrulyThere) {
    const std::vector<ZEL::TimeSpan> found{{6.1, 8.0}};
    const Score score = scoreOf({{4.0, 8.0}}, found);
    EXPECT_EQ(score.hits, 0U);
    EXPECT_EQ(score.misses, 1U);
    EXPECT_EQ(score.false_alarms, 1U);
    EXPECT_FALSE(score.onsetDelay());
    EXPECT_EQ(scoreOf({}, found, {{6.0, 7.2}}).false_alarms, 0U);
    EXPECT_EQ(scoreOf({}, found, {{6.0, 6.9}}).false_alarms, 1U);
    EXPECT_FALSE(scoreOf({}, {}).precision());
    EXPECT_FALSE(scoreOf({}, {}).recall());
}

TEST(AccuracyScoring, OfAFaultThatComesAndGoesAnyPartIsEnoughButNotTheWholeClip) {
    const Score parts = scoreWithin({{3.0, 7.0}}, {{3.1, 3.3}, {5.0, 5.5}, {6.5, 9.0}});
    EXPECT_EQ(parts.hits, 1U);
    EXPECT_EQ(parts.false_alarms, 1U);
    const Score all = scoreWithin({{3.0, 7.0}}, {{0.0, 9.0}});
    EXPECT_EQ(all.misses, 1U);
    EXPECT_EQ(all.false_alarms, 1U);
}

std::vector<Findings> findings(const std::string& graph, std::string_view kind, bool all_settings = false) {
    const Rival* const rival = rivalOf(kind);
    const bool sound = rival->source == ZEL::EventSource::kAudio;
    support::FilterSource source(graph, sound ? "abuffersink" : "buffersink");
    const FrameStream frames{source.timeBase(), [&] { return source.advance() ? &source.frame() : nullptr; }};
    return findWithRivals(frames, {rival}, all_settings);
}

TEST(AccuracyRivals, TheirFindingsAreReadFromTheFrames) {
    const std::string moving = "testsrc2=s=64x48:r=25:d=6,scroll=h=0.02,setpts=PTS+5/TB";
    const std::string black =
        moving + ",drawbox=t=fill:c=black:enable='between(t,6,6.3)+between(t,7,7.99)+gte(t,10)'";
    EXPECT_THAT(findings(black, "black")[0].by_setting, ElementsAre(ElementsAre(isSpan(2, 3), isSpan(5, 6))));
    EXPECT_THAT(findings(black, "black", true)[0].by_setting, SizeIs(rivalOf("black")->settings.size()));
    EXPECT_THAT(findings("testsrc2=s=64x48:r=25:d=2,scroll=h=0.02,loop=75:1:24,setpts=N/25/TB", "freeze")[0]
                    .by_setting,
                ElementsAre(ElementsAre(isSpan(0.96, 4.0, 0.041))));
    const std::string tone = "aevalsrc='if(between(t,1,2.99),0,sin(2000*t))'";
    EXPECT_THAT(findings(tone + ":s=48000:d=4", "mute")[0].by_setting,
                ElementsAre(ElementsAre(isSpan(1, 2.99, 0.01))));
    EXPECT_THAT(findings("sine=d=4,pan=stereo|c0=c0|c1=0*c0", "dead-channel", true)[0].by_setting,
                testing::Each(ElementsAre(isSpan(0.0, 4.0, 0.1))));
    EXPECT_THAT(findings("sine=d=4,pan=stereo|c0=c0|c1=-1*c0", "antiphase", true)[0].by_setting,
                testing::Each(ElementsAre(isSpan(0.0, 4.0, 0.1))));
    EXPECT_EQ(rivalOf("no-voice"), nullptr);
}

TEST(AccuracyRivals, BlockinessIsMeasuredAnewEachHalfSecond) {
    const auto values = findings(
                            "color=gray:s=320x240:r=25:d=2,noise=alls=20:allf=t,"
                            "split[a][b];[b]scale=40:30,scale=320:240:flags=neighbor[c];"
                            "[a][c]overlay=enable='between(t,0.5,1.49)',format=yuv420p",
                            "block")[0]
                            .blockiness;
    ASSERT_THAT(values, SizeIs(4));
    EXPECT_DOUBLE_EQ(values[1].start_s, 0.5);
    const double threshold = (values[0].value + values[1].value) / 2.0;
    EXPECT_GT(threshold, values[0].value);
    EXPECT_THAT(blockEvents(values, threshold), ElementsAre(isSpan(0.5, 1.5)));
    EXPECT_THAT(blockEvents({{0.0, 1.0}, {0.5, 3.0}}, 4.0), IsEmpty());
}

TEST(AccuracyRivals, FramesWhoseSizeDamageHasChangedAreLeftOut) {
    const auto values =
        findings("testsrc2=s=64x48:r=25:d=1,scale=w='if(lt(n,10),64,16640)':h=16:eval=frame", "block");
    EXPECT_THAT(values[0].blockiness, SizeIs(1));  // ten frames
}

TEST(AccuracyResults, ThresholdThatServesTheRivalBestIsTaken) {
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

TEST(AccuracyCorpus, ClipsAreNamedOnceAndEveryKindIsShownWithAndWithoutFault) {
    std::set<std::string> names;
    for (const Case& one : corpus()) {
        EXPECT_TRUE(names.insert(one.clip.name).second) << one.clip.name;
    }
    for (const Clip& clip : textureClips()) {
        EXPECT_TRUE(names.insert(clip.name).second) << clip.name;
    }
    for (const auto& info : ZEL::eventKinds()) {
        if (info.source != ZEL::EventSource::kVideo && info.source != ZEL::EventSource::kAudio) {
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

/// A folder as bench/real_clips leaves it, without the clips themselves.
class AccuracyRealClips : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "zel-accuracy-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }
    void write(const std::string& clips) { std::ofstream(folder_ + "/clips.json") << clips; }

    std::string folder_;
};

TEST_F(AccuracyRealClips, ListOfClipsIsReadByHalvesOrRefused) {
    EXPECT_THROW(readMaterial(folder_, Half::kAll), std::runtime_error);
    write("[{}]");
    EXPECT_THROW(readMaterial(folder_, Half::kAll), std::runtime_error);
    write(R"([{"half": "tune", "file": "tune/film.mp4", "type": "video", "from": [10, 20],
               "holds": {"black": [[1, 2], [12, 13]]}},
              {"half": "kept", "file": "kept/talk.wav", "type": "speech", "from": [0], "holds": {}}])");
    EXPECT_THAT(readMaterial(folder_, Half::kAll), SizeIs(2));
    const auto tune = readMaterial(folder_, Half::kTune);
    ASSERT_THAT(tune, SizeIs(1));
    EXPECT_EQ(tune[0].file, folder_ + "/tune/film.mp4");

    // What is truly there keeps its place when a part of the clip is taken.
    const std::vector<RealCase> cases = realCases(tune);
    EXPECT_THAT(cases[0].held({"black", "freeze"}), ElementsAre(isSpan(1, 2), isSpan(12, 13)));
    const auto faulty =
        std::find_if(cases.begin(), cases.end(), [](const RealCase& c) { return c.variant == "black"; });
    ASSERT_NE(faulty, cases.end());
    EXPECT_THAT(faulty->held({"black"}), ElementsAre(isSpan(-9, -8), isSpan(2, 3)));
    std::set<std::string> names;
    for (const RealCase& one : cases) {
        EXPECT_TRUE(names.insert(one.name()).second) << one.name();
    }
}

TEST_F(AccuracyRealClips, AlarmsOnGoodClipsAreCountedPerHourAndFindsPerFault) {
    write(
        R"([{"half": "kept", "file": "kept/film.mp4", "type": "video", "from": [0], "holds": {"black": [[0, 1]]}}])");
    const auto material = readMaterial(folder_, Half::kKept);
    const std::vector<RealCase> cases = realCases(material);
    std::vector<RealResult> results;
    for (const RealCase& one : cases) {
        RealResult result{&one, {{}, 600.0, true, false, ""}, {}};
        if (one.variant == "as-it-is") {
            result.ours.events = {{ZEL::EventKind::kBlack, {0.1, 0.9}}, {ZEL::EventKind::kBlack, {5.0, 6.0}}};
            result.rivals = {{rivalOf("black"), std::vector<std::vector<ZEL::TimeSpan>>(9), {}}};
            result.rivals[0].by_setting[0] = {{7.0, 8.0}};
        } else if (one.variant == "green") {
            result.ours.events = {{ZEL::EventKind::kGreen, {3.0, 6.0}},
                                  {ZEL::EventKind::kFreeze, {3.0, 6.0}}};
        }
        results.push_back(std::move(result));
    }
    const std::string text = realResultText(results);
    EXPECT_THAT(text, HasSubstr("| black | 0 of 3 | 0.00 | 3.0 | - | - | 3.0 | - | - | 0.0 |"));
    EXPECT_THAT(text, HasSubstr("| green | frames of zeros | 1 of 1 | 0 | 1 | - | - | - | - |"));
    EXPECT_THAT(text, HasSubstr("- film.as-it-is: black 5.00-6.00\n"));
}

TEST(AccuracyChildProcess, FailureIsToldWithWhatTheProgramSaid) {
    EXPECT_NO_THROW(runProgram({"sh", "-c", "echo out"}));
    EXPECT_THROW(runProgram({"no-such-program-anywhere"}), std::runtime_error);
    try {
        runProgram({"sh", "-c", "echo why >&2; exit 3"});
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "sh failed: why\n");
    }
}

}  // namespace

#include <zel/algo/algo_facade.h>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "support/log_capture.h"
#include "support/random.h"
#include "support/sound.h"

namespace {

using ZELAlgo::AlgoFacade;
using ZELAlgo::kAudioComplete;
using ZELAlgo::kAudioFilling;
using ZELAlgo::kAudioNoResult;
using ZELAlgo::ZELAlgoConfig;
using ZELAlgo::ZELAudioResult;

constexpr uint32_t kRate = 48'000;
constexpr uint32_t kChunk = kRate / 100;

ZELAudioResult detect(AlgoFacade& facade, const std::vector<int16_t>& samples) {
    ZELAudioResult result{};
    EXPECT_TRUE(
        facade.detectAudio({kRate, static_cast<uint32_t>(samples.size()), 1, samples.data()}, result));
    return result;
}

/// Mute, low voice, high voice, no voice.
std::array<uint32_t, 4> flags(const ZELAudioResult& result) {
    return {result.is_mute, result.is_low_voicelevel, result.is_high_voicelevel, result.is_novoice_longtime};
}

constexpr double kKnownPeriod = 2.5;  // seconds

/// The second period of 2.5 s, after one that settles the noise floor: half quiet, half loud. Its level is
/// 1500, its voiced level 3000, and all loud chunks but the first are voiced.
ZELAudioResult detectKnownPeriod(AlgoFacade& facade) {
    support::Random random(1);
    ZELAudioResult result{};
    for (int chunk = 0; chunk < 500; ++chunk) {
        result = detect(facade, support::hiss(random, chunk < 375 ? 1 : 3000, kChunk));
        EXPECT_EQ(result.status, chunk == 249 || chunk == 499 ? kAudioComplete : kAudioFilling);
    }
    return result;
}

TEST(AlgoFacadeAudio, WritesNothingButTheStatusWhileThePeriodFills) {
    AlgoFacade facade;
    const std::vector<int16_t> samples(960, 100);
    ZELAudioResult result{9, 0.5F, 9, 9, 9, 9, 9, 9};
    ASSERT_TRUE(facade.detectAudio({kRate, 960, 1, samples.data()}, result));
    EXPECT_EQ(result.status, kAudioFilling);
    EXPECT_EQ(result.audio_level, 9U);
    EXPECT_EQ(result.is_novoice_longtime, 9U);
}

TEST(AlgoFacadeAudio, GivesTheWholeResultWithTheLastFrameOfThePeriod) {
    AlgoFacade facade(ZELAlgoConfig{.longtime_period_s = kKnownPeriod});
    const ZELAudioResult result = detectKnownPeriod(facade);
    EXPECT_EQ(result.status, kAudioComplete);
    EXPECT_EQ(result.audio_level, 1500U);
    EXPECT_EQ(result.voice_level_longtime, 3000U);
    EXPECT_EQ(result.voice_scale_longtime, 124.0F / 250.0F);
    EXPECT_EQ(flags(result), (std::array{0U, 0U, 0U, 0U}));
}

TEST(AlgoFacadeAudio, CountsAThresholdThatIsExactlyMet) {
    const ZELAlgoConfig met{.mute_level = 1500.0F,
                            .low_voice_level = 3000.0F,
                            .high_voice_level = 3000.0F,
                            .novoice_scale = 124.0F / 250.0F,
                            .longtime_period_s = kKnownPeriod};
    AlgoFacade facade(met);
    ZELAudioResult result = detectKnownPeriod(facade);
    EXPECT_EQ(flags(result), (std::array{1U, 1U, 1U, 1U}));

    ZELAlgoConfig missed = met;
    missed.mute_level = std::nextafter(met.mute_level, 0.0F);
    missed.low_voice_level = std::nextafter(met.low_voice_level, 0.0F);
    missed.high_voice_level = std::nextafter(met.high_voice_level, 1e6F);
    missed.novoice_scale = std::nextafter(met.novoice_scale, 0.0F);
    AlgoFacade other(missed);
    result = detectKnownPeriod(other);
    EXPECT_EQ(flags(result), (std::array{0U, 0U, 0U, 0U}));
}

TEST(AlgoFacadeAudio, CallsSilenceMuteLowAndWithoutVoice) {
    AlgoFacade facade(ZELAlgoConfig{.longtime_period_s = 0.02});
    const std::vector<int16_t> silence(kChunk, 0);
    EXPECT_EQ(detect(facade, silence).status, kAudioFilling);
    const ZELAudioResult result = detect(facade, silence);
    EXPECT_EQ(result.status, kAudioComplete);
    EXPECT_EQ(result.audio_level, 0U);
    EXPECT_EQ(result.voice_level_longtime, 0U);
    EXPECT_EQ(result.voice_scale_longtime, 0.0F);
    EXPECT_EQ(flags(result), (std::array{1U, 1U, 0U, 1U}));
}

TEST(AlgoFacadeAudio, TakesThresholdsPerResultButThePeriodOnlyOnce) {
    AlgoFacade facade(ZELAlgoConfig{.longtime_period_s = 0.02});
    const std::vector<int16_t> samples(kChunk, 100);
    EXPECT_EQ(detect(facade, samples).status, kAudioFilling);
    EXPECT_EQ(detect(facade, samples).is_mute, 0U);
    facade.setConfig(ZELAlgoConfig{.mute_level = 200.0F, .longtime_period_s = 0.01});
    EXPECT_EQ(detect(facade, samples).status, kAudioFilling);
    EXPECT_EQ(detect(facade, samples).is_mute, 1U);
}

TEST(AlgoFacadeAudio, TruncatesThePeriodAndBearsAnyValue) {
    const std::vector<int16_t> samples(kChunk, 100);
    const auto firstStatus = [&samples](double period_s) {
        AlgoFacade facade(ZELAlgoConfig{.longtime_period_s = period_s});
        return detect(facade, samples).status;
    };
    EXPECT_EQ(firstStatus(0.0199), kAudioComplete);  // one chunk
    EXPECT_EQ(firstStatus(0.02), kAudioFilling);
    EXPECT_EQ(firstStatus(-1.0), kAudioComplete);
    EXPECT_EQ(firstStatus(std::numeric_limits<double>::quiet_NaN()), kAudioComplete);
    EXPECT_EQ(firstStatus(1e300), kAudioFilling);
}

TEST(AlgoFacadeAudio, KeepsTheSampleRateOfTheFirstFrame) {
    AlgoFacade facade(ZELAlgoConfig{.longtime_period_s = 0.02});
    const std::vector<int16_t> samples(kChunk, 100);
    detect(facade, samples);
    ZELAudioResult result{};
    ASSERT_TRUE(facade.detectAudio({8000, 80, 1, samples.data()}, result));
    EXPECT_EQ(result.status, kAudioFilling);
    ASSERT_TRUE(facade.detectAudio({8000, 400, 1, samples.data()}, result));
    EXPECT_EQ(result.status, kAudioComplete);
}

TEST(AlgoFacadeAudio, TriesAgainAfterACreationThatFailed) {
    const support::LogCapture log;
    AlgoFacade facade;
    const std::vector<int16_t> samples(kChunk, 100);
    ZELAudioResult result{9, 0.5F, 9, 9, 9, 9, 9, 9};
    EXPECT_FALSE(facade.detectAudio({0, kChunk, 1, samples.data()}, result));
    EXPECT_FALSE(facade.detectAudio({0, kChunk, 1, samples.data()}, result));
    EXPECT_EQ(result.status, 9U);
    EXPECT_EQ(log.count("vad handle create failed\n"), 2U);
    EXPECT_EQ(detect(facade, samples).status, kAudioFilling);
}

TEST(AlgoFacadeAudio, GivesNoResultForNullData) {
    AlgoFacade facade;
    ZELAudioResult result{9, 0.5F, 9, 9, 9, 9, 9, 9};
    EXPECT_TRUE(facade.detectAudio({kRate, kChunk, 1, nullptr}, result));
    EXPECT_EQ(result.status, kAudioNoResult);
    EXPECT_EQ(result.audio_level, 9U);
}

}  // namespace

#include "algo/audio_meter.h"

#include <zel/algo/algo_facade.h>

#include <algorithm>
#include <array>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "support/random.h"
#include "support/sound.h"

namespace {

using Samples = std::vector<int16_t>;
using ZELAlgo::AudioMeter;
using ZELAlgo::AudioPeriods;
using ZELAlgo::MeasuredChunk;
using ZELAlgo::ZELAlgoConfig;
using ZELAlgo::ZELAudioResult;

struct Period {
    double start_s;
    double end_s;
    ZELAudioResult result;
};

/// A meter with the periods of one length.
class Road {
  public:
    Road(double period_s, uint32_t rate)
        : rate_(rate), meter_(rate), periods_(ZELAlgoConfig{.longtime_period_s = period_s}, rate) {}

    void feed(const int16_t* samples, size_t count, double time_s) {
        meter_.measure(samples, count, chunks_);
        periods_.add(chunks_, count, time_s, [this](double start_s, double end_s, const auto& result) {
            found.push_back({start_s, end_s, result});
        });
    }
    /// All of it, in frames of `frame` samples from 5 s on.
    void feed(const Samples& samples, size_t frame) {
        for (size_t at = 0; at < samples.size(); at += frame) {
            feed(samples.data() + at, std::min(frame, samples.size() - at),
                 5.0 + static_cast<double>(at) / rate_);
        }
    }
    void skipTo(double time_s) { periods_.skipTo(time_s); }

    std::vector<Period> found;

  private:
    uint32_t rate_;
    AudioMeter meter_;
    AudioPeriods periods_;
    std::vector<MeasuredChunk> chunks_;
};

auto valuesOf(const ZELAudioResult& r) {
    return std::tie(r.status, r.voice_scale_longtime, r.voice_level_longtime, r.audio_level, r.is_mute,
                    r.is_low_voicelevel, r.is_high_voicelevel, r.is_novoice_longtime);
}

TEST(AudioMeter, PeriodsLieEndToEndAtEverySampleRate) {
    for (const uint32_t rate : {8000U, 11025U, 22050U, 44100U}) {
        Road road(0.1, rate);
        road.feed(Samples(20'000, 3000), 1000);
        double end_s = 5.0;
        for (const Period& period : road.found) {
            EXPECT_NEAR(period.start_s, end_s, 1e-9) << rate;
            EXPECT_NEAR(period.end_s - period.start_s, 0.1, 0.001) << rate;
            end_s = period.end_s;
        }
        EXPECT_GE(road.found.size(), 4U) << rate;
    }
}

TEST(AudioMeter, PeriodsAreThoseOfAFacadeThatIsFedTheirChunks) {
    support::Random random(5);
    for (const uint32_t rate : {100U, 8000U, 44'100U, 96'100U}) {
        const size_t chunk = rate / 100;
        Samples sound;
        for (int piece = 0; piece < 45; ++piece) {  // silence, quiet and loud, each for a while
            const int16_t level = std::array<int16_t, 5>{0, 1, 400, 25'000, 3000}[random.below(5)];
            const Samples hiss = support::hiss(random, level, chunk * (1 + random.below(20)));
            sound.insert(sound.end(), hiss.begin(), hiss.end());
        }
        for (const double period_s : {0.1, 1.0}) {
            ZELAlgo::AlgoFacade facade(ZELAlgoConfig{.longtime_period_s = period_s});
            std::vector<ZELAudioResult> want;
            for (size_t at = 0; at < sound.size(); at += chunk) {
                ZELAudioResult result{};
                facade.detectAudio({rate, static_cast<uint32_t>(chunk), 1, sound.data() + at}, result);
                if (result.status == ZELAlgo::kAudioComplete) {
                    want.push_back(result);
                }
            }
            ASSERT_FALSE(want.empty());
            for (const size_t frame : {chunk, size_t{1}, size_t{1024}, sound.size()}) {
                Road road(period_s, rate);
                road.feed(sound, frame);
                ASSERT_EQ(road.found.size(), want.size()) << rate << ' ' << frame;
                for (size_t i = 0; i < want.size(); ++i) {
                    ASSERT_EQ(valuesOf(road.found[i].result), valuesOf(want[i])) << rate << ' ' << frame;
                }
            }
        }
    }
}

TEST(AudioMeter, PeriodThatSoundIsMissingInBeginsBehindTheGap) {
    Road road(0.1, 8000);
    const Samples samples(800, 100);
    road.skipTo(3.0);  // nothing began yet
    road.feed(samples.data(), 400, 5.0);
    road.skipTo(7.0);
    road.feed(samples.data(), 800, 7.0);
    road.feed(samples.data(), 400, 7.1);
    ASSERT_EQ(road.found.size(), 2U);
    EXPECT_DOUBLE_EQ(road.found[0].start_s, 7.0);
    EXPECT_DOUBLE_EQ(road.found[0].end_s, 7.05);
    EXPECT_DOUBLE_EQ(road.found[1].start_s, 7.05);
    EXPECT_DOUBLE_EQ(road.found[1].end_s, 7.15);
}

TEST(AudioMeter, HearsNothingBeyondItsSampleRates) {
    const Samples samples(100'000, 100);
    for (const uint32_t rate : {1U, 99U, AudioMeter::kMostHz + 1, 4'294'967'295U}) {
        Road road(0.0, rate);
        road.feed(samples, 30'000);
        EXPECT_TRUE(road.found.empty()) << rate;
    }
    Road fastest(0.0, AudioMeter::kMostHz);
    fastest.feed(samples, 30'000);
    EXPECT_EQ(fastest.found.size(), 100'000U / 23'999);
}

}  // namespace

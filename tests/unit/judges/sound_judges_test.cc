#include "judges/sound_judges.h"

#include <cmath>
#include <functional>
#include <numbers>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "judges/speech_judge.h"
#include "support/random.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using ZELJudges::Stretch;

constexpr uint32_t kRate = 8000;

struct Told {
    std::vector<Stretch> clipping, dead_channel, antiphase;
};

void join(std::vector<Stretch>& all, std::span<const Stretch> some) {
    for (const Stretch& stretch : some) {
        if (stretch.present && !all.empty() && stretch.start_s - all.back().end_s < 0.01) {
            all.back().end_s = stretch.end_s;
        } else if (stretch.present) {
            all.push_back(stretch);
        }
    }
}

auto lasts(double start_s, double end_s) {
    return testing::AllOf(testing::Field(&Stretch::start_s, testing::DoubleNear(start_s, 0.26)),
                          testing::Field(&Stretch::end_s, testing::DoubleNear(end_s, 0.26)));
}

using Sample = std::function<double(size_t i, size_t channel)>;

Told judge(size_t channels, double seconds, const Sample& sample) {
    ZELJudges::SoundMeter meter;
    ZELJudges::SoundJudges judges;
    Told told;
    const auto take = [&told](const ZELJudges::SoundJudges::Settled& settled) {
        join(told.clipping, settled.clipping);
        join(told.dead_channel, settled.dead_channel);
        join(told.antiphase, settled.antiphase);
    };
    constexpr size_t kFrame = 333;
    const auto frames = static_cast<size_t>(seconds * kRate);
    for (size_t first = 0; first < frames; first += kFrame) {
        std::vector<int16_t> samples;
        for (size_t i = first; i < std::min(first + kFrame, frames); ++i) {
            for (size_t channel = 0; channel < channels; ++channel) {
                samples.push_back(static_cast<int16_t>(std::lround(32767.0 * sample(i, channel))));
            }
        }
        std::vector<ZELJudges::SoundPiece> pieces;
        meter.measure({samples.data(), samples.size() / channels, channels, kRate}, pieces);
        take(judges.feed(pieces, channels, kRate, static_cast<double>(first) / kRate));
    }
    take(judges.finish());
    return told;
}

double tone(size_t i, double level) {
    return level * std::sin(2.0 * std::numbers::pi * 440.0 * static_cast<double>(i) / kRate);
}

TEST(ClippingJudge, CountsRunsAtFullScaleOfTheWorstChannel) {
    const auto share = [](size_t run, size_t runs_per_second, double level) {
        return judge(2, 4.0,
                     [=](size_t i, size_t channel) {
                         const size_t at = i % (kRate / runs_per_second);
                         return channel == 1 && i >= kRate && i < 3 * kRate && at < run ? level
                                                                                        : tone(i, 0.5);
                     })
            .clipping;
    };
    EXPECT_THAT(share(3, 20, 1.0), ElementsAre(lasts(1.0, 3.0))) << "0.0075";
    EXPECT_THAT(share(3, 20, -1.0), ElementsAre(lasts(1.0, 3.0)));
    EXPECT_THAT(share(3, 10, 1.0), IsEmpty()) << "0.00375";
    EXPECT_THAT(share(2, 200, 1.0), IsEmpty()) << "peaks";
    EXPECT_THAT(share(6, 20, 0.99), IsEmpty()) << "limited";
}

TEST(DeadChannel, TellsOneOfThePairThatIsSilent) {
    const auto dead = [](size_t channels, size_t channel_of, double gain) {
        return judge(channels, 2.0,
                     [=](size_t i, size_t channel) {
                         return tone(i, 0.2) * (channel == channel_of ? gain : 1.0);
                     })
            .dead_channel;
    };
    EXPECT_THAT(dead(2, 1, 0.0), ElementsAre(lasts(0.0, 2.0)));
    EXPECT_THAT(dead(6, 0, 0.005), ElementsAre(lasts(0.0, 2.0))) << "46 dB below";
    EXPECT_THAT(dead(2, 1, 0.02), IsEmpty()) << "34 dB below";
    EXPECT_THAT(dead(6, 2, 0.0), IsEmpty()) << "a centre";
    EXPECT_THAT(dead(1, 0, 0.0), IsEmpty()) << "mono";
}

TEST(PairJudge, ShortPausesAreLikeWhatIsAroundThem) {
    const auto paused = [](double pause_s, double after) {
        const auto end = static_cast<size_t>((1.0 + pause_s) * kRate);
        return judge(2, 2.0 + pause_s,
                     [=](size_t i, size_t channel) {
                         const double gain = i < kRate ? 0.0 : after;
                         return i >= kRate && i < end ? 0.0 : tone(i, 0.2) * (channel == 1 ? gain : 1.0);
                     })
            .dead_channel;
    };
    EXPECT_THAT(paused(1.5, 0.0), ElementsAre(lasts(0.0, 3.5)));
    EXPECT_THAT(paused(3.0, 0.0), ElementsAre(lasts(0.0, 1.0), lasts(4.0, 5.0)));
    EXPECT_THAT(paused(1.5, 1.0), ElementsAre(lasts(0.0, 1.0))) << "alive after it";
}

TEST(Antiphase, TellsWhatAMonoDownmixLoses) {
    const auto pair = [](double gain, double other) {
        support::Random random(2);
        return judge(2, 2.0,
                     [=](size_t i, size_t channel) mutable {
                         const double hiss = (random.byte() - 127.5) / 255.0 * other;
                         return channel == 0 ? tone(i, 0.2) : tone(i, 0.2 * gain) + hiss;
                     })
            .antiphase;
    };
    EXPECT_THAT(pair(-1.0, 0.0), ElementsAre(lasts(0.0, 2.0)));
    EXPECT_THAT(pair(-0.3, 0.0), ElementsAre(lasts(0.0, 2.0))) << "of another level";
    EXPECT_THAT(pair(1.0, 0.0), IsEmpty());
    EXPECT_THAT(pair(-1.0, 0.5), IsEmpty()) << "half of it";
    EXPECT_THAT(pair(-1e-3, 0.0), IsEmpty()) << "too quiet to tell";
}

struct SpeechTold {
    std::vector<Stretch> none, low, high;
};

/// Periods of so many chunks of 10 ms, the first of them voiced.
SpeechTold speak(int periods, int voiced, int pause, float level, float pause_level) {
    ZELJudges::SpeechJudge speech(500.0F, 20000.0F);
    SpeechTold told;
    const auto take = [&told](const ZELJudges::SpeechJudge::Settled& settled) {
        join(told.none, settled.no_voice);
        join(told.low, settled.low_voice);
        join(told.high, settled.high_voice);
    };
    for (int i = 0; i < periods * (voiced + pause); ++i) {
        const bool is_voiced = i % (voiced + pause) < voiced;
        take(speech.feed({i * 0.01, (i + 1) * 0.01, is_voiced, is_voiced ? level : pause_level}));
    }
    take(speech.finish());
    return told;
}

TEST(SpeechJudge, DrumsAreNoSpeech) {
    EXPECT_THAT(speak(12, 8, 17, 5000.0F, 10.0F).none, ElementsAre(lasts(0.0, 3.0)));
    EXPECT_THAT(speak(12, 12, 0, 5000.0F, 10.0F).none, IsEmpty());
    EXPECT_THAT(speak(2, 50, 100, 5000.0F, 10.0F).none, ElementsAre(lasts(0.5, 1.5), lasts(2.0, 3.0)));
}

TEST(SpeechJudge, LevelIsThatOfTheVoicedPartAndHoldsOnThroughPauses) {
    EXPECT_THAT(speak(4, 30, 70, 1000.0F, 10.0F).low, IsEmpty()) << "its mean is 307";
    EXPECT_THAT(speak(4, 30, 70, 300.0F, 9000.0F).low, ElementsAre(lasts(0.0, 4.0))) << "noise in the pauses";
    EXPECT_THAT(speak(4, 30, 70, 25000.0F, 10.0F).high, ElementsAre(lasts(0.0, 4.0)));
    EXPECT_THAT(speak(1, 30, 400, 300.0F, 10.0F).low, ElementsAre(lasts(0.0, 2.3))) << "not for ever";
    EXPECT_THAT(speak(20, 8, 17, 300.0F, 10.0F).low, IsEmpty()) << "drums have none";
}

}  // namespace

#include "algo/audio/audio_handle.h"

#include <algorithm>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "support/allocations.h"
#include "support/log_capture.h"
#include "support/random.h"
#include "support/sound.h"

namespace {

using Samples = std::vector<int16_t>;
using ZELAlgo::AudioAlgoCreate;
using ZELAlgo::AudioAlgoDestroy;
using ZELAlgo::AudioAlgoExecute;
using ZELAlgo::AudioAlgoHandle_t;
using ZELAlgo::SampleRing;
using ZELAlgo::ZELAudioResult;

class AudioHandle : public testing::Test {
  protected:
    void create(uint32_t sample_rate, uint32_t period_chunks = 1000) {
        handle_.reset(AudioAlgoCreate({}, sample_rate));
        ASSERT_NE(handle_, nullptr);
        handle_->period_chunks = period_chunks;
    }

    int32_t feed(const Samples& samples) {
        return AudioAlgoExecute(handle_.get(), samples.data(), static_cast<uint32_t>(samples.size()),
                                result_);
    }

    int32_t feedHiss(int16_t level, size_t count) { return feed(support::hiss(random_, level, count)); }

    int32_t feedChunks(int16_t level, size_t chunks) {
        int32_t code = 1;
        for (size_t i = 0; i < chunks; ++i) {
            code = feedHiss(level, handle_->meter.chunk());
        }
        return code;
    }

    /// A handle that has found the floor of quiet noise and is at the start of a period.
    void createSettled(uint32_t period_chunks, uint32_t sample_rate = 48'000) {
        create(sample_rate, 250);
        ASSERT_EQ(feedChunks(1, 250), 0);
        handle_->period_chunks = period_chunks;
        result_ = {};
    }

    struct Destroyer {
        void operator()(AudioAlgoHandle_t* handle) const { AudioAlgoDestroy(handle); }
    };

    support::Random random_{1};
    std::unique_ptr<AudioAlgoHandle_t, Destroyer> handle_;
    ZELAudioResult result_{};
};

TEST_F(AudioHandle, RefusesASampleRateOfZeroWithALogLine) {
    const support::LogCapture log;
    EXPECT_EQ(AudioAlgoCreate({}, 0), nullptr);
    EXPECT_EQ(log.messages(), std::vector<std::string>{"vad handle create failed\n"});
    EXPECT_EQ(AudioAlgoDestroy(nullptr), 0);
}

TEST_F(AudioHandle, ClosesAPeriodWithTheFrameThatCompletesItsLastChunk) {
    for (const uint32_t sample_rate : {16'000U, 44'100U, 48'000U}) {
        for (const size_t frame : {1024U, 960U, 441U, 1U}) {
            create(sample_rate, 20);
            const size_t period = 20 * (sample_rate / 100);
            size_t fed = 0;
            while (fed + frame < period) {
                ASSERT_EQ(feedHiss(700, frame), 1) << sample_rate << ' ' << frame << ' ' << fed;
                fed += frame;
            }
            EXPECT_EQ(feedHiss(700, frame), 0) << sample_rate << ' ' << frame;
            EXPECT_EQ(result_.audio_level, 700U);
            EXPECT_EQ(feedHiss(700, 1), 1);
        }
    }
}

TEST_F(AudioHandle, CountsAThousandChunksUnlessToldOtherwise) {
    create(48'000);
    for (int chunk = 1; chunk < 1000; ++chunk) {
        ASSERT_EQ(feedHiss(5, 480), 1) << chunk;
    }
    EXPECT_EQ(feedHiss(5, 480), 0);
}

TEST_F(AudioHandle, TakesAnySoundForVoiceUntilItHasHeardTwoSeconds) {
    // The history is empty at first, and so is the floor that the first spectrum sets.
    create(48'000, 200);
    EXPECT_EQ(feedChunks(50, 200), 0);
    EXPECT_EQ(result_.voice_scale_longtime, 199.0F / 200.0F);
    EXPECT_EQ(feedChunks(50, 200), 0);
    EXPECT_LT(result_.voice_scale_longtime, 0.02F);
}

TEST_F(AudioHandle, MeasuresShareAndLevelOfTheVoicedChunks) {
    createSettled(10);
    feedChunks(1, 5);
    EXPECT_EQ(feedChunks(3000, 5), 0);
    // The spectrum lags a chunk behind: the first loud one still sounds quiet.
    EXPECT_EQ(result_.voice_scale_longtime, 0.4F);
    EXPECT_EQ(result_.voice_level_longtime, 3000U);
    EXPECT_EQ(result_.audio_level, (5U * 1 + 5U * 3000) / 10);

    // The next period starts from nothing.
    EXPECT_EQ(feedChunks(3000, 10), 0);
    EXPECT_EQ(result_.voice_scale_longtime, 1.0F);
    EXPECT_EQ(result_.audio_level, 3000U);
}

TEST_F(AudioHandle, CountsSilentChunksForTheLevelButNotForTheShare) {
    createSettled(10);
    feedChunks(0, 2);
    feedChunks(1, 4);
    EXPECT_EQ(feedChunks(3000, 4), 0);
    EXPECT_EQ(result_.voice_scale_longtime, 3.0F / 8.0F);
    EXPECT_EQ(result_.audio_level, (4U * 1 + 4U * 3000) / 10);
}

TEST_F(AudioHandle, KeepsTheCallersVoiceLevelWhenNothingWasVoiced) {
    createSettled(5);
    result_.voice_level_longtime = 77;
    result_.voice_scale_longtime = 0.5F;
    EXPECT_EQ(feedChunks(1, 5), 0);
    EXPECT_EQ(result_.voice_level_longtime, 77U);
    EXPECT_EQ(result_.voice_scale_longtime, 0.0F);
    EXPECT_EQ(result_.audio_level, 1U);
}

TEST_F(AudioHandle, TakesOneSilentChunkPerFrameAndDropsFramesOnceTheRingIsFull) {
    create(48'000, 200);
    const Samples silence(1001, 0);
    for (uint64_t frame = 1; frame < 200; ++frame) {
        ASSERT_EQ(feed(silence), 1);
        ASSERT_EQ(handle_->sums.chunks, frame);
        if (frame <= 45) {
            ASSERT_EQ(handle_->ring.available(), frame * 521);
        } else {  // only every third frame or so finds room
            ASSERT_GT(handle_->ring.available(), SampleRing::kCapacity - 1001 - 480);
        }
    }
    EXPECT_EQ(feed(silence), 0);
    EXPECT_EQ(result_.audio_level, 0U);
    EXPECT_EQ(result_.voice_scale_longtime, 0.0F);
}

TEST_F(AudioHandle, ForgetsSilenceThatFillsTheRingToTheLastPlace) {
    create(48'000);
    for (int frame = 0; frame < 48; ++frame) {
        feed(Samples(960, 0));
    }
    EXPECT_EQ(handle_->ring.freeSpace(), 960U);
    feed(Samples(960, 0));
    EXPECT_EQ(handle_->ring.available(), 0U);
    EXPECT_EQ(handle_->sums.chunks, 48U);
}

TEST_F(AudioHandle, LetsSoundBehindSilenceWaitForItsTurn) {
    create(48'000);
    feed(Samples(3 * 480, 0));
    for (uint64_t silent_chunks = 2; silent_chunks <= 3; ++silent_chunks) {
        feedHiss(100, 480);
        EXPECT_EQ(handle_->sums.chunks, silent_chunks);
        EXPECT_EQ(handle_->sums.level, 0U);
    }
    feedHiss(100, 480);
    EXPECT_EQ(handle_->sums.chunks, 6U);
    EXPECT_EQ(handle_->sums.level, 300U);
}

TEST_F(AudioHandle, DropsAFrameThatDoesNotFitAsAWhole) {
    create(48'000);
    feedHiss(100, 479);
    EXPECT_EQ(feedHiss(100, SampleRing::kCapacity), 1);
    EXPECT_EQ(handle_->ring.available(), 479U);
    EXPECT_EQ(handle_->sums.chunks, 0U);
}

TEST_F(AudioHandle, SaysSoWhenThereAreNoSamples) {
    create(48'000);
    EXPECT_EQ(AudioAlgoExecute(handle_.get(), nullptr, 480, result_), -1);
}

TEST_F(AudioHandle, AddsUpLongChunksInSinglePrecisionInTheOrderOfTheSamples) {
    // From 2^26 on floats are 8 apart: 2100 times 32768 passes that without an error, a 3 on top is lost.
    constexpr size_t kChunk = 3840;
    Samples loud_first(kChunk, 3);
    std::fill_n(loud_first.begin(), 2100, INT16_MIN);
    create(384'000, 1);
    EXPECT_EQ(feed(loud_first), 0);
    EXPECT_EQ(result_.audio_level, 2100U * 32768 / kChunk);

    const Samples quiet_first(loud_first.rbegin(), loud_first.rend());
    EXPECT_EQ(feed(quiet_first), 0);
    EXPECT_EQ(result_.audio_level, (2100U * 32768 + 1740 * 3) / kChunk);
}

TEST_F(AudioHandle, ListensToTheOldestThirdOfItsHistory) {
    // At 192 kHz a chunk fills the history twice: its newest 960 samples stay, of which 320 are heard.
    const auto hears = [this](size_t from, size_t to) {
        createSettled(1000, 192'000);
        Samples chunk = support::hiss(random_, 1, 1920);
        const Samples loud = support::hiss(random_, 10'000, to - from);
        std::copy(loud.begin(), loud.end(), chunk.begin() + static_cast<std::ptrdiff_t>(from));
        feed(chunk);
        return handle_->sums.voiced == 1;
    };
    EXPECT_FALSE(hears(0, 961));  // the window starts with a zero
    EXPECT_TRUE(hears(960, 1280));
    EXPECT_FALSE(hears(1280, 1920));
}

TEST_F(AudioHandle, SurvivesEverySampleRateAndFrameLength) {
    for (const size_t frame : {1U, 441U, 960U, 23'999U, 24'000U, 65'536U}) {
        const Samples samples = support::hiss(random_, INT16_MAX, frame);
        const size_t frames = std::clamp<size_t>(50'000 / frame, 2, 60);
        for (const uint32_t sample_rate :
             {1U, 99U, 100U, 399U, 400U, 3999U, 7999U, 8000U, 11'025U, 95'999U, 96'001U, 192'000U, 2'399'999U,
              2'400'000U, 3'848'001U, 4'294'967'295U}) {
            create(sample_rate, 50);
            for (size_t i = 0; i < frames; ++i) {
                const int32_t code = feed(samples);
                ASSERT_TRUE(code == 0 || code == 1) << sample_rate << ' ' << frame;
                ASSERT_LE(result_.audio_level, 32'768U) << sample_rate << ' ' << frame;
            }
        }
    }
}

TEST_F(AudioHandle, AsksForNoMemoryWhileItRuns) {
    create(48'000, 10);
    const Samples samples = support::hiss(random_, 1000, 1024);
    const size_t before = support::allocationCount();
    for (int i = 0; i < 100; ++i) {
        feed(samples);
    }
    EXPECT_EQ(support::allocationCount(), before);
}

TEST_F(AudioHandle, IsNotCreatedWithoutMemory) {
    const support::LogCapture log;       // keeps the line out of the test's output
    for (const size_t nth : {0U, 1U}) {  // the handle itself, its voice detector
        const support::FailingNew fail(nth);
        EXPECT_EQ(AudioAlgoCreate({}, 48'000), nullptr) << nth;
        EXPECT_TRUE(fail.happened());
    }
}

TEST_F(AudioHandle, CountsOneEmptyChunkPerFrameBelowAHundredHertz) {
    create(99, 3);
    EXPECT_EQ(feedHiss(1000, 10), 1);
    EXPECT_EQ(feedHiss(1000, 10), 1);
    EXPECT_EQ(feedHiss(1000, 10), 0);
    EXPECT_EQ(result_.audio_level, 0U);
}

}  // namespace

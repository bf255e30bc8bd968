#include "algo/audio/vad.h"

#include <cmath>
#include <memory>

#include <gtest/gtest.h>

namespace {

using ZELAlgo::kPowerBins;
using ZELAlgo::VadCreate;
using ZELAlgo::VadDestroyer;
using ZELAlgo::VadHandle_t;
using ZELAlgo::VadProcess;

class Vad : public testing::Test {
  protected:
    void create(uint32_t sample_rate) { vad_.reset(VadCreate(sample_rate)); }

    /// One chunk with the same power in every bin.
    float process(float power) {
        VadHandle_t::Bins powers;
        powers.fill(power);
        return VadProcess(*vad_, powers.data());
    }

    void processTimes(int times, float power) {
        for (int i = 0; i < times; ++i) {
            process(power);
        }
    }

    std::unique_ptr<VadHandle_t, VadDestroyer> vad_{VadCreate(48000)};
};

TEST_F(Vad, PlacesTheSpeechBandForTheSampleRate) {
    const auto expectBand = [this](uint32_t sample_rate, uint32_t low, uint32_t high) {
        create(sample_rate);
        EXPECT_EQ(vad_->band_lo, low) << sample_rate;
        EXPECT_EQ(vad_->band_hi, high) << sample_rate;
    };
    expectBand(48000, 4, 80);
    expectBand(44100, 4, 87);
    expectBand(16000, 12, 240);
    expectBand(8000, 24, 481);
    expectBand(7999, 24, kPowerBins);  // from here down cut at the last bin
    expectBand(1, kPowerBins, kPowerBins);
}

TEST_F(Vad, AveragesPresenceOverExactlyTheBandsBins) {
    for (size_t k = 0; k < kPowerBins; ++k) {
        create(48000);
        vad_->presence[k] = 1.0F;
        EXPECT_EQ(process(1.0F), k >= 4 && k < 80 ? 1.0F / 76.0F : 0.0F) << k;
    }
}

TEST_F(Vad, IsNotANumberWithoutABand) {
    for (const uint32_t sample_rate : {1U, 399U, 3'848'001U, 4'294'967'295U}) {
        create(sample_rate);
        process(1.0F);
        EXPECT_TRUE(std::isnan(process(1.0F))) << sample_rate;
    }
}

TEST_F(Vad, RefusesASampleRateOfZero) {
    EXPECT_EQ(VadCreate(0), nullptr);
}

TEST_F(Vad, StartsFromTheFirstSpectrumWithADoubledFloor) {
    EXPECT_EQ(process(50.0F), 0.0F);
    EXPECT_EQ(vad_->smooth[9], 50.0F);
    EXPECT_EQ(vad_->minimum[9], 100.0F);
    EXPECT_EQ(vad_->minimum_tmp[9], 100.0F);
    EXPECT_EQ(vad_->noise[9], 50.0F);
    EXPECT_EQ(vad_->frame_count, 0U);
}

TEST_F(Vad, HearsAJumpPastThirtyTimesTheFloorAtOnce) {
    processTimes(3, 100.0F);
    EXPECT_NEAR(process(1e6F), 0.8F, 1e-6F);
    EXPECT_NEAR(process(1e6F), 0.96F, 1e-6F);
    EXPECT_FLOAT_EQ(vad_->alpha[9], 0.998F);
}

TEST_F(Vad, TakesThirtyTimesTheFloorItselfForNoise) {
    // 0.2 * 14600 + 0.8 * 100 is 30 times the floor of 100: above it only by the next float but a few.
    processTimes(2, 100.0F);
    EXPECT_EQ(process(14'600.0F), 0.0F);
    create(48000);
    processTimes(2, 100.0F);
    EXPECT_NEAR(process(14'601.0F), 0.8F, 1e-6F);
}

TEST_F(Vad, ForgetsAJumpWhenTheSoundStaysSteady) {
    processTimes(3, 1.0F);
    EXPECT_GT(process(1e6F), 0.5F);
    processTimes(300, 1e6F);
    EXPECT_LT(process(1e6F), 1e-6F);
    EXPECT_NEAR(vad_->minimum[9], 1e6F, 1.0F);
}

TEST_F(Vad, LetsTheFloorRiseOnlyAtEveryHundredthUpdate) {
    process(1.0F);
    processTimes(99, 1000.0F);
    EXPECT_EQ(vad_->frame_count, 99U);
    EXPECT_EQ(vad_->minimum[9], 2.0F);
    EXPECT_EQ(vad_->minimum_tmp[9], 2.0F);
    process(1000.0F);  // the hundredth: the old period's minimum, then a new period
    EXPECT_EQ(vad_->minimum[9], 2.0F);
    EXPECT_NEAR(vad_->minimum_tmp[9], 1000.0F, 0.01F);
    processTimes(99, 1000.0F);
    EXPECT_EQ(vad_->minimum[9], 2.0F);
    process(1000.0F);
    EXPECT_NEAR(vad_->minimum[9], 1000.0F, 0.01F);

    process(10.0F);  // down at once, before the hundredth
    EXPECT_NEAR(vad_->minimum[9], 802.0F, 0.01F);
}

TEST_F(Vad, KeepsTheNoiseEstimateCurrent) {
    processTimes(2, 100.0F);
    process(200.0F);  // alpha is 0.95: no speech
    EXPECT_FLOAT_EQ(vad_->noise[9], 105.0F);
    EXPECT_FLOAT_EQ(vad_->ratio[9], static_cast<float>(120.0 / (100.0 + 0.0001)));
}

}  // namespace

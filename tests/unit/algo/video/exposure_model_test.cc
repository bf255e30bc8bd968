#include "algo/video/exposure_model.h"

#include <zel/algo/algo_types.h>

#include <vector>

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

#include <gtest/gtest.h>

#include "algo/video/exposure_frame.h"
#include "algo/video/planes.h"
#include "support/random.h"

namespace {

using ZELAlgo::classifyExposure;
using ZELAlgo::ExposureFeatures;
using ZELAlgo::exposureFeatures;
using ZELAlgo::Histogram;

TEST(ExposureFeatures, AreSharesMeanAndThirdMoment) {
    Histogram histogram{};
    histogram[60] = 3;
    histogram[61] = 1;
    histogram[199] = 2;
    histogram[200] = 2;
    const ExposureFeatures features = exposureFeatures(histogram, 8);
    EXPECT_EQ(features.bright, 0.25F);
    EXPECT_EQ(features.dark, 0.375F);
    EXPECT_EQ(features.mean, 129) << "1039 / 8";
    // -328509 x 3/8 = -123190.8; -314432 / 8 = -39304; 343000 / 4 = 85750; 357911 / 4 = 89477.75. Each sum is
    // truncated toward zero.
    EXPECT_EQ(features.skewness, -123190 - 39304 + 85750 + 89477 - 1 + 1);
}

TEST(ExposureFeatures, WrapWhereThirtyTwoBitsEnd) {
    Histogram histogram{};
    histogram[255] = 8'500'000;  // 255 times that is 20032704 beyond the largest 32-bit number
    EXPECT_EQ(exposureFeatures(histogram, 8'500'000).mean, (2'167'500'000LL - 4'294'967'296LL) / 8'500'000);
}

TEST(ExposureModel, NormalIsWhereBothOuterModelsVanish) {
    // Uniform frames: without spread the mean alone decides, with limits worked out from the models'
    // biases.
    const auto uniform = [](int32_t mean) {
        return classifyExposure({.bright = mean >= 200 ? 1.0F : 0.0F,
                                 .dark = mean <= 60 ? 1.0F : 0.0F,
                                 .mean = mean,
                                 .skewness = 0});
    };
    // z1 = -18.808 M vanishes once 18.808 M - 1701.85 exceeds about 104 (the float curve's end): from M = 97
    // on.
    EXPECT_EQ(uniform(20), ZELAlgo::kExposureUnder);
    EXPECT_EQ(uniform(95), ZELAlgo::kExposureUnder);
    EXPECT_EQ(uniform(96), ZELAlgo::kExposureUnder);
    EXPECT_EQ(uniform(97), ZELAlgo::kExposureNormal);
    EXPECT_EQ(uniform(128), ZELAlgo::kExposureNormal);
    // z3 = 33.35 M comes back once it is within about 104 of 6213.6: from M = 184 on.
    EXPECT_EQ(uniform(183), ZELAlgo::kExposureNormal);
    EXPECT_EQ(uniform(184), ZELAlgo::kExposureOver);
    EXPECT_EQ(uniform(240), ZELAlgo::kExposureOver);
}

#if defined(__SSE__)
TEST(ExposureModel, SaysTheSameInAHostThatFlushesSmallNumbersToZero) {
    constexpr unsigned kDenormalsAreZero = 0x0040;
    const unsigned mode = _mm_getcsr();
    _mm_setcsr(mode | _MM_FLUSH_ZERO_ON | kDenormalsAreZero);
    const uint32_t type = classifyExposure({.bright = 0, .dark = 0, .mean = 96, .skewness = 0});
    _mm_setcsr(mode);
    EXPECT_EQ(type, ZELAlgo::kExposureUnder);
}
#endif

TEST(ExposureModel, UnderAndOverAreToldApartByTheSecondModel) {
    // A strong third moment keeps the dark model alive at any mean; z2 = 21.14 M decides at 2218.6, M = 105.
    EXPECT_EQ(classifyExposure({.bright = 0, .dark = 0, .mean = 100, .skewness = -300000}),
              ZELAlgo::kExposureUnder);
    EXPECT_EQ(classifyExposure({.bright = 0, .dark = 0, .mean = 120, .skewness = -300000}),
              ZELAlgo::kExposureOver);
}

TEST(ExposureModel, SaysTheSameFromASummaryWhereverThatIsClear) {
    support::Random random(11);
    int clear = 0;
    constexpr int kFrames = 4000;
    for (int i = 0; i < kFrames; ++i) {
        // Means around both limits, of any width.
        const uint32_t middle = (i % 2 == 0 ? 85 : 175) + random.below(25);
        const uint32_t span = 1 + random.below(80);
        std::vector<uint8_t> bytes(2 * 400);
        for (uint8_t& byte : bytes) {
            byte = static_cast<uint8_t>(middle - span / 2 + random.below(span));
        }
        const auto summary = ZELAlgo::summaryOfEvenBytesScalar(bytes.data(), 400);
        const auto histogram = ZELAlgo::histogramOfEvenBytesScalar(bytes.data(), 400);
        if (const auto type = ZELAlgo::classifyClearExposure(summary, 400)) {
            ++clear;
            ASSERT_EQ(*type, classifyExposure(exposureFeatures(histogram, 400))) << i;
        }
    }
    EXPECT_GT(clear, kFrames / 2);
    EXPECT_LT(clear, kFrames);
}

TEST(ExposureFrame, WritesNothingThatItWasNotAskedFor) {
    uint32_t screen = 77;
    uint32_t exposure = 77;
    ZELAlgo::ExposureFrame_t* const state =
        ZELAlgo::ExposureCreate({.enable_black_screen = false, .enable_exposure = false});
    const uint8_t black[6] = {16, 16, 16, 16, 128, 128};
    EXPECT_EQ(ExposureExecute(state, ZELAlgo::planesOf(black, 2, 2), screen, exposure), 0);
    EXPECT_EQ(screen, 77U);
    EXPECT_EQ(exposure, 77U);
    ExposureDestroy(state);
}

}  // namespace

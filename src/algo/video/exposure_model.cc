#include "algo/video/exposure_model.h"

#include <cmath>
#include <numeric>

#include "base/truncate.h"

namespace ZELAlgo {
namespace {

constexpr size_t kDarkLevels = 61;
constexpr size_t kFirstBrightLevel = 200;

constexpr float kDarkBias = 1701.84716796875F;
constexpr float kOverBias = -2218.60888671875F;
constexpr float kBrightBias = -6213.6103515625F;

template <typename Iterator>
float share(Iterator first, Iterator last, uint32_t samples) {
    return static_cast<float>(std::accumulate(first, last, 0U)) / static_cast<float>(samples);
}

// The exponent is a float, the curve a double.
double logistic(double height, double score, float bias) {
    const float exponent = -static_cast<float>(score) - bias;
    return height / (std::exp(static_cast<double>(exponent)) + 1.0);
}

}  // namespace

ExposureFeatures exposureFeatures(const Histogram& histogram, uint32_t samples) {
    uint32_t sum = 0;  // wraps for pictures beyond 33 million pixels, and the mean with it
    for (uint32_t level = 0; level < histogram.size(); ++level) {
        sum += level * histogram[level];
    }
    const int32_t mean = static_cast<int32_t>(sum) / static_cast<int32_t>(samples);

    int32_t skewness = 0;
    for (int32_t level = 0; level < static_cast<int32_t>(histogram.size()); ++level) {
        const double distance = level - mean;
        const double cube = distance * distance * distance;  // a whole number, so exact
        const double count = histogram[static_cast<size_t>(level)];
        skewness = ZEL::truncateToInt32(skewness + cube * count / samples);
    }
    return {.bright = share(histogram.begin() + kFirstBrightLevel, histogram.end(), samples),
            .dark = share(histogram.begin(), histogram.begin() + kDarkLevels, samples),
            .mean = mean,
            .skewness = skewness};
}

ExposureType classifyExposure(const ExposureFeatures& features) {
    const double bright = features.bright;
    const double dark = features.dark;
    const double mean = features.mean;
    const double skewness = features.skewness;

    // A well exposed picture is one for which the first and the last model underflow to exactly zero.
    const auto under = static_cast<float>(logistic(
        1.0, skewness * -0.00317050171 - (dark * 0.240803877 + mean * 18.8082557 + bright * 0.14893716),
        kDarkBias));
    if (under == 0.0F) {
        const auto over = static_cast<float>(logistic(
            2.0, mean * 33.3495193 + dark * 0.0253559315 + bright * 0.703219051 - skewness * 0.00546597139,
            kBrightBias));
        if (over == 0.0F) {
            return kNormalExposure;
        }
    }
    const double over_not_under = logistic(
        1.0, dark * 0.0604087494 + mean * 21.1358568 + bright * 0.229863823 - skewness * 0.000404649814,
        kOverBias);
    return static_cast<float>(over_not_under + 1.0) < 2.0F ? kUnderExposed : kOverExposed;
}

}  // namespace ZELAlgo

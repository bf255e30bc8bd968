#include "algo/video/exposure_model.h"

#include <zel/algo/algo_types.h>

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

/// Whether `value`, of at least zero, stays above zero when it is rounded to single precision: half of the
/// smallest float is rounded down. Asked so, since a processor that the host told to flush small numbers to
/// zero would lose them in the rounding.
bool isAboveZeroInSingle(double value) {
    return !(value <= 0x1p-150);
}

/// What the three models say. A well exposed frame is one for which the first and the last underflow to
/// zero.
struct Answers {
    bool may_be_under;
    bool may_be_over;
    bool over_rather_than_under;

    friend bool operator==(const Answers&, const Answers&) = default;
};

Answers askModels(const ExposureFeatures& features) {
    const double bright = features.bright;
    const double dark = features.dark;
    const double mean = features.mean;
    const double skewness = features.skewness;
    const double under = logistic(
        1.0, skewness * -0.00317050171 - (dark * 0.240803877 + mean * 18.8082557 + bright * 0.14893716),
        kDarkBias);
    const double over = logistic(
        2.0, mean * 33.3495193 + dark * 0.0253559315 + bright * 0.703219051 - skewness * 0.00546597139,
        kBrightBias);
    const double over_not_under = logistic(
        1.0, dark * 0.0604087494 + mean * 21.1358568 + bright * 0.229863823 - skewness * 0.000404649814,
        kOverBias);
    return {.may_be_under = isAboveZeroInSingle(under),
            .may_be_over = isAboveZeroInSingle(over),
            .over_rather_than_under = static_cast<float>(over_not_under + 1.0) >= 2.0F};
}

uint32_t typeOf(const Answers& answers) {
    if (!answers.may_be_under && !answers.may_be_over) {
        return kExposureNormal;
    }
    return answers.over_rather_than_under ? kExposureOver : kExposureUnder;
}

}  // namespace

ExposureFeatures exposureFeatures(const Histogram& histogram, uint32_t samples) {
    uint32_t sum = 0;  // wraps for frames beyond 33 million pixels, and the mean with it
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

uint32_t classifyExposure(const ExposureFeatures& features) {
    return typeOf(askModels(features));
}

std::optional<uint32_t> classifyClearExposure(const LumaSummary& summary, uint32_t samples) {
    const int64_t count = samples;
    const auto sum = static_cast<uint32_t>(summary.first + 128 * count);  // wraps as it does in the features
    const int32_t mean = static_cast<int32_t>(sum) / static_cast<int32_t>(samples);
    const int64_t shift = 128 - mean;
    const int64_t cubes = summary.third + 3 * shift * summary.second + 3 * shift * shift * summary.first +
                          shift * shift * shift * count;
    // Truncated after each of 256 levels, the third moment is off by less than 256. Every model rises or
    // falls with it, so what holds at both ends of a wider range holds for it.
    constexpr double kDoubt = 300;
    const double moment = static_cast<double>(cubes) / samples;
    ExposureFeatures features = {
        .bright = static_cast<float>(samples - summary.below_200) / static_cast<float>(samples),
        .dark = static_cast<float>(summary.below_61) / static_cast<float>(samples),
        .mean = mean,
        .skewness = ZEL::truncateToInt32(moment - kDoubt)};
    const Answers low = askModels(features);
    features.skewness = ZEL::truncateToInt32(moment + kDoubt);
    if (askModels(features) != low) {
        return std::nullopt;
    }
    return typeOf(low);
}

}  // namespace ZELAlgo

#include "algo/video/luma_kernels.h"

#include <cstdlib>

namespace ZELAlgo {

LumaSummary& LumaSummary::operator+=(const LumaSummary& other) {
    zero += other.zero;
    below_30 += other.below_30;
    below_61 += other.below_61;
    below_200 += other.below_200;
    first += other.first;
    second += other.second;
    third += other.third;
    return *this;
}

Histogram histogramOfEvenBytesScalar(const uint8_t* data, size_t count) {
    Histogram histogram{};
    for (size_t i = 0; i < count; ++i) {
        ++histogram[data[2 * i]];
    }
    return histogram;
}

LumaSummary summaryOfEvenBytesScalar(const uint8_t* data, size_t count) {
    LumaSummary summary;
    for (size_t i = 0; i < count; ++i) {
        const int64_t sample = data[2 * i];
        summary.zero += sample == 0 ? 1U : 0U;
        summary.below_30 += sample < 30 ? 1U : 0U;
        summary.below_61 += sample < 61 ? 1U : 0U;
        summary.below_200 += sample < 200 ? 1U : 0U;
        const int64_t distance = sample - 128;
        summary.first += distance;
        summary.second += distance * distance;
        summary.third += distance * distance * distance;
    }
    return summary;
}

uint32_t zerosOfEveryFourthByteScalar(const uint8_t* data, size_t count) {
    uint32_t zeros = 0;
    for (size_t i = 0; i < count; ++i) {
        zeros += data[4 * i] == 0 ? 1U : 0U;
    }
    return zeros;
}

void replaceAndCompareScalar(const uint8_t* current, size_t stride, size_t rows, std::span<const size_t> cuts,
                             uint8_t* previous, uint32_t* sums) {
    for (size_t y = 0; y < rows; ++y, current += stride, previous += cuts.back()) {
        for (size_t i = 0; i + 1 < cuts.size(); ++i) {
            for (size_t x = cuts[i]; x < cuts[i + 1]; ++x) {
                sums[i] += static_cast<uint32_t>(std::abs(current[x] - previous[x]));
                previous[x] = current[x];
            }
        }
    }
}

}  // namespace ZELAlgo

#include "algo/video/luma_kernels.h"

#include <cstdlib>

namespace ZELAlgo {

Histogram histogramOfEvenBytesScalar(const uint8_t* data, size_t count) {
    Histogram histogram{};
    for (size_t i = 0; i < count; ++i) {
        ++histogram[data[2 * i]];
    }
    return histogram;
}

uint32_t zerosOfEveryFourthByteScalar(const uint8_t* data, size_t count) {
    uint32_t zeros = 0;
    for (size_t i = 0; i < count; ++i) {
        zeros += data[4 * i] == 0 ? 1U : 0U;
    }
    return zeros;
}

uint32_t sumAbsDiffScalar(const uint8_t* a, const uint8_t* b, size_t count) {
    uint32_t sum = 0;
    for (size_t i = 0; i < count; ++i) {
        sum += static_cast<uint32_t>(std::abs(a[i] - b[i]));
    }
    return sum;
}

}  // namespace ZELAlgo

#include "algo/video/smoothing_kernels.h"

#include <algorithm>
#include <cmath>

namespace ZELAlgo {
namespace {

// Index of the pixel at `x`, from -2 to width + 1, with the ends reflected about the end pixels. Rows too
// short to be reflected stop at their far end.
size_t reflected(ptrdiff_t x, ptrdiff_t width) {
    const ptrdiff_t inside = x < 0 ? -x : x >= width ? 2 * (width - 1) - x : x;
    return static_cast<size_t>(std::clamp<ptrdiff_t>(inside, 0, width - 1));
}

}  // namespace

GaussianKernel gaussianKernel() {
    GaussianKernel kernel;
    double sum = 0.0;
    for (size_t i = 0; i < kernel.size(); ++i) {
        const double distance = static_cast<double>(i) - 2.0;
        kernel[i] = std::exp(-(distance * distance) / (2.0 * 1.0 * 1.0));
        sum += kernel[i];
    }
    for (double& weight : kernel) {
        weight /= sum;
    }
    return kernel;
}

uint8_t weightedSum(const GaussianKernel& kernel, const std::array<uint8_t, 5>& pixels) {
    double sum = 0.0;
    for (size_t j = 0; j < kernel.size(); ++j) {
        sum += kernel[j] * pixels[j];
    }
    return static_cast<uint8_t>(sum);
}

uint8_t smoothedOnce(const GaussianKernel& kernel, const uint8_t* row, size_t width, size_t x) {
    std::array<uint8_t, 5> pixels;
    for (size_t j = 0; j < pixels.size(); ++j) {
        pixels[j] = row[reflected(static_cast<ptrdiff_t>(x + j) - 2, static_cast<ptrdiff_t>(width))];
    }
    return weightedSum(kernel, pixels);
}

void smoothScalar(const GaussianKernel& kernel, const uint8_t* source, size_t stride, size_t width,
                  size_t height, uint8_t* smooth) {
    for (size_t y = 0; y < height; ++y) {
        for (size_t x = 0; x < width; ++x) {
            smooth[y * width + x] = smoothedOnce(kernel, source + y * stride, width, x);
        }
    }
    // The second pass runs along the rows as well, which is intended, column by column over the frame as
    // one linear array: near the ends of a row it reads its neighbours' pixels, and it reads what it has
    // written.
    for (size_t x = 0; x < width; ++x) {
        for (size_t y = 2; y + 2 < height; ++y) {
            uint8_t* const at = smooth + y * width + x;
            *at = weightedSum(kernel, {*(at - 2), *(at - 1), at[0], at[1], at[2]});
        }
    }
}

}  // namespace ZELAlgo

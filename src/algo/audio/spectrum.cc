#include "algo/audio/spectrum.h"

#include <kiss_fftr.h>

namespace ZELAlgo {

void Spectrum::FftDestroyer::operator()(kiss_fftr_state* fft) const {
    kiss_fftr_free(fft);
}

Spectrum::Spectrum() : fft_(kiss_fftr_alloc(static_cast<int>(kFftSize), 0, nullptr, nullptr)) {}

void Spectrum::analyse(const int16_t* history, float* power) {
    // Past its span the window is zero, and so is `weighted_`, always. A product there could also be -0, but
    // the sign of a zero is gone once the transform is squared.
    const auto& window = analysisWindow();
    for (size_t i = 0; i < kWindowSpan; ++i) {
        weighted_[i] = static_cast<float>(history[i]) * window[i];
    }
    std::array<kiss_fft_cpx, kPowerBins> transformed;
    kiss_fftr(fft_.get(), weighted_.data(), transformed.data());
    for (size_t k = 0; k < kPowerBins; ++k) {
        const kiss_fft_cpx& bin = transformed[k];
        power[k] = bin.r * bin.r + bin.i * bin.i;
    }
}

}  // namespace ZELAlgo

#include "algo/audio/spectrum.h"

#include <kiss_fftr.h>

#include "algo/audio/audio_kernels.h"

namespace ZELAlgo {

static_assert(sizeof(kiss_fft_cpx) == 2 * sizeof(float), "the library is built for single precision");

void Spectrum::FftDestroyer::operator()(kiss_fftr_state* fft) const {
    kiss_fftr_free(fft);
}

Spectrum::Spectrum() : fft_(kiss_fftr_alloc(static_cast<int>(kFftSize), 0, nullptr, nullptr)) {}

void Spectrum::analyse(const int16_t* history, float* power) {
    // Past its span the window is zero, and so is `weighted_`, always. A product there could also be -0, but
    // the sign of a zero is gone once the transform is squared.
    applyWindow(history, analysisWindow().data(), kWindowSpan, weighted_.data());
    kiss_fftr(fft_.get(), weighted_.data(), reinterpret_cast<kiss_fft_cpx*>(transformed_.data()));
    pairPowers(transformed_.data(), kPowerBins, power);
}

}  // namespace ZELAlgo

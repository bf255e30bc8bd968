#ifndef ZEL_SRC_ALGO_AUDIO_SPECTRUM_H_
#define ZEL_SRC_ALGO_AUDIO_SPECTRUM_H_

#include <array>
#include <cstdint>
#include <memory>

#include "algo/audio/analysis_window.h"
#include "algo/audio/vad.h"

struct kiss_fftr_state;

namespace ZELAlgo {

/// Windowed real transform of the sample history. Works in fixed buffers.
class Spectrum {
  public:
    Spectrum();

    /// False if there was no memory for the transform; nothing else may be called then.
    bool ready() const { return fft_ != nullptr; }

    /// Writes the kPowerBins powers of kFftSize samples, oldest first.
    void analyse(const int16_t* history, float* power);

  private:
    struct FftDestroyer {
        void operator()(kiss_fftr_state* fft) const;
    };

    std::unique_ptr<kiss_fftr_state, FftDestroyer> fft_;
    std::array<float, kFftSize> weighted_{};
};

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_AUDIO_SPECTRUM_H_

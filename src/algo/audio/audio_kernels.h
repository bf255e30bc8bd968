#ifndef ZEL_SRC_ALGO_AUDIO_AUDIO_KERNELS_H_
#define ZEL_SRC_ALGO_AUDIO_AUDIO_KERNELS_H_

#include <cstddef>
#include <cstdint>

namespace ZELAlgo {

struct VadHandle_t;

// The loops of the audio road, each twice: the plain one, ending in Scalar, says what is computed; the other
// gives the same bits with the widest instructions of the processor, or is the plain one if those are
// switched off.

/// Sum of the absolute values of at most 65536 samples.
uint32_t magnitudeSum(const int16_t* samples, size_t count);
uint32_t magnitudeSumScalar(const int16_t* samples, size_t count);

/// weighted[i] = samples[i] * window[i].
void applyWindow(const int16_t* samples, const float* window, size_t count, float* weighted);
void applyWindowScalar(const int16_t* samples, const float* window, size_t count, float* weighted);

/// power[k] = re^2 + im^2 of the k-th pair in `pairs`.
void pairPowers(const float* pairs, size_t count, float* power);
void pairPowersScalar(const float* pairs, size_t count, float* power);

/// One update of every bin of the detector. `new_period` ends a period of minimum search.
void trackBins(VadHandle_t& vad, const float* power, bool new_period);
/// The same from bin `first` on.
void trackBinsScalar(VadHandle_t& vad, const float* power, bool new_period, size_t first = 0);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_AUDIO_AUDIO_KERNELS_H_

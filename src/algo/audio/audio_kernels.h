#ifndef ZEL_SRC_ALGO_AUDIO_AUDIO_KERNELS_H_
#define ZEL_SRC_ALGO_AUDIO_AUDIO_KERNELS_H_

#include <cstddef>

namespace ZELAlgo {

struct VadHandle_t;

// The one loop of the audio road that the compiler does not make fast by itself, twice: the plain one, ending
// in Scalar, says what is computed; the other gives the same bits with the widest instructions of the
// processor, or is the plain one if those are switched off.

/// One update of every bin of the detector. `new_period` ends a period of the search for the minimum.
void trackBins(VadHandle_t& vad, const float* power, bool new_period);
/// The same from bin `first` on.
void trackBinsScalar(VadHandle_t& vad, const float* power, bool new_period, size_t first = 0);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_AUDIO_AUDIO_KERNELS_H_

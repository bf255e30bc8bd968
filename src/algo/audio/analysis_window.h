#ifndef ZEL_SRC_ALGO_AUDIO_ANALYSIS_WINDOW_H_
#define ZEL_SRC_ALGO_AUDIO_ANALYSIS_WINDOW_H_

#include <array>
#include <cstddef>

namespace ZELAlgo {

/// Points of the transform, and samples of history that it looks at.
inline constexpr size_t kFftSize = 960;
/// The window is zero from this entry on: only the oldest third of the history reaches the spectrum.
inline constexpr size_t kWindowSpan = 320;

/// One weight per sample of the history: a bell over the first kWindowSpan entries that fades a piece of
/// sound in and out, so that its cut edges do not spread over the spectrum as if they were noise.
const std::array<float, kFftSize>& analysisWindow();

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_AUDIO_ANALYSIS_WINDOW_H_

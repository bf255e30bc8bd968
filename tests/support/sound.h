#ifndef ZEL_TESTS_SUPPORT_SOUND_H_
#define ZEL_TESTS_SUPPORT_SOUND_H_

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/random.h"

namespace support {

/// White noise in which every sample is `level` or its negative, so that its level is known exactly.
inline std::vector<int16_t> hiss(Random& random, int16_t level, size_t count) {
    std::vector<int16_t> samples(count);
    for (auto& sample : samples) {
        sample = static_cast<int16_t>(random.below(2) == 0 ? level : -level);
    }
    return samples;
}

inline double rootMeanSquare(const std::vector<int16_t>& samples) {
    double sum = 0.0;
    for (const int16_t sample : samples) {
        sum += static_cast<double>(sample * sample);
    }
    return std::sqrt(sum / static_cast<double>(samples.size()));
}

/// `gain` times the samples, clipped where they do not fit.
inline std::vector<int16_t> scaled(const std::vector<int16_t>& samples, double gain) {
    std::vector<int16_t> result(samples.size());
    std::transform(samples.begin(), samples.end(), result.begin(), [gain](int16_t sample) {
        return static_cast<int16_t>(std::lround(std::clamp(gain * sample, -32768.0, 32767.0)));
    });
    return result;
}

/// `sound` with as much of `noise` on top as gives this ratio of their mean powers, in decibels.
inline std::vector<int16_t> withNoise(const std::vector<int16_t>& sound, const std::vector<int16_t>& noise,
                                      double ratio_db) {
    const double gain = rootMeanSquare(sound) / rootMeanSquare(noise) * std::pow(10.0, -ratio_db / 20.0);
    std::vector<int16_t> result = scaled(noise, gain);
    for (size_t i = 0; i < result.size(); ++i) {
        result[i] = static_cast<int16_t>(std::clamp(result[i] + sound[i], -32768, 32767));
    }
    return result;
}

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_SOUND_H_

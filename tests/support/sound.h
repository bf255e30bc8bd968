#ifndef ZEL_TESTS_SUPPORT_SOUND_H_
#define ZEL_TESTS_SUPPORT_SOUND_H_

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

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_SOUND_H_

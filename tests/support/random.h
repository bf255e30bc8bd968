#ifndef ZEL_TESTS_SUPPORT_RANDOM_H_
#define ZEL_TESTS_SUPPORT_RANDOM_H_

#include <cstdint>

namespace support {

/// SplitMix64: the same sequence everywhere, unlike the standard distributions.
class Random {
  public:
    explicit Random(uint64_t seed) : state_(seed) {}

    uint64_t next() {
        state_ += 0x9E3779B97F4A7C15U;
        uint64_t z = state_;
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31U);
    }
    uint8_t byte() { return static_cast<uint8_t>(next() >> 56U); }
    /// Uniform enough for tests: 0 to `bound` - 1.
    uint32_t below(uint32_t bound) { return static_cast<uint32_t>((next() >> 32U) * bound >> 32U); }

  private:
    uint64_t state_;
};

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_RANDOM_H_

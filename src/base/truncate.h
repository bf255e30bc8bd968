#ifndef ZEL_SRC_BASE_TRUNCATE_H_
#define ZEL_SRC_BASE_TRUNCATE_H_

#include <cstdint>
#include <limits>

namespace ZEL {

/// Integer part of `value`. What no int32_t can hold, and NaN, becomes the smallest one on every processor.
constexpr int32_t truncateToInt32(double value) {
    const bool fits = value > -2147483649.0 && value < 2147483648.0;
    return fits ? static_cast<int32_t>(value) : std::numeric_limits<int32_t>::min();
}

}  // namespace ZEL

#endif  // ZEL_SRC_BASE_TRUNCATE_H_

#ifndef ZEL_SRC_MONITOR_TRUNCATE_H_
#define ZEL_SRC_MONITOR_TRUNCATE_H_

#include <cstdint>
#include <limits>

namespace ZEL {

/// `value` cut to a whole number. What does not fit, or is no number, becomes the least integer, which is
/// what common processors answer.
inline int32_t truncateToInt32(double value) {
    if (value > -2147483649.0 && value < 2147483648.0) [[likely]] {
        return static_cast<int32_t>(value);
    }
    return std::numeric_limits<int32_t>::min();
}

}  // namespace ZEL

#endif  // ZEL_SRC_MONITOR_TRUNCATE_H_

#include "base/text.h"

#include <array>
#include <charconv>
#include <limits>

namespace ZEL {

std::string fixedText(double value, int digits) {
    // The largest double has max_exponent10 + 1 digits before the point; sign, point and `digits` come on
    // top.
    std::array<char, std::numeric_limits<double>::max_exponent10 + 32> text;
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, digits);
    return error == std::errc() ? std::string(text.data(), end) : std::string();
}

}  // namespace ZEL

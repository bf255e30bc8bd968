#include "input/container/matroska_extent.h"

#include <bit>
#include <cstddef>

namespace zel_monitor {
namespace {

using Bytes = std::span<const uint8_t>;

constexpr uint64_t kSegment = 0x18538067;

/// A number of one to eight bytes, whose first bits tell how many.
struct Number {
    uint64_t value;  ///< with those bits
    size_t bytes;
};

std::optional<Number> numberAt(Bytes bytes, size_t most_bytes) {
    const size_t size = bytes.empty() ? 0 : static_cast<size_t>(std::countl_zero(bytes.front())) + 1;
    if (size == 0 || size > most_bytes || size > bytes.size()) {
        return std::nullopt;
    }
    uint64_t value = 0;
    for (const uint8_t byte : bytes.first(size)) {
        value = value << 8 | byte;
    }
    return Number{value, size};
}

}  // namespace

std::optional<int64_t> matroskaSize(Bytes beginning) {
    for (size_t place = 0; place < beginning.size();) {
        const auto id = numberAt(beginning.subspan(place), 4);
        const auto stated = id ? numberAt(beginning.subspan(place + id->bytes), 8) : std::nullopt;
        if (!stated) {
            return std::nullopt;
        }
        const uint64_t marker = uint64_t{1} << 7 * stated->bytes;
        const uint64_t size = stated->value - marker;
        const size_t content = place + id->bytes + stated->bytes;
        if (id->value == kSegment) {
            const bool is_open = size == marker - 1;
            return is_open ? std::nullopt : std::optional(static_cast<int64_t>(content + size));
        }
        if (size > beginning.size()) {
            return std::nullopt;
        }
        place = content + static_cast<size_t>(size);
    }
    return std::nullopt;
}

}  // namespace zel_monitor

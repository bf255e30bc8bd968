#include "input/container/flv_extent.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <string_view>

extern "C" {
#include <libavutil/intreadwrite.h>
}

namespace zel_monitor {

std::optional<int64_t> flvSize(std::span<const uint8_t> beginning) {
    constexpr std::string_view kField{"\0\10filesize\0", 11};  // its name, and that it is a number
    constexpr size_t kTagsAt = 13;
    constexpr size_t kTagHead = 11;
    constexpr uint8_t kMetadata = 18;
    constexpr double kMost = 1e15;
    constexpr int64_t kLeeway = 4;  // some do not count the last tag's size, which stands behind it
    if (beginning.size() < kTagsAt + kTagHead || (beginning[kTagsAt] & 0x1f) != kMetadata) {
        return std::nullopt;
    }
    const size_t end = std::min(beginning.size(),
                                kTagsAt + kTagHead + static_cast<size_t>(AV_RB24(&beginning[kTagsAt + 1])));
    const std::string_view metadata(reinterpret_cast<const char*>(beginning.data()), end);
    const size_t found = metadata.find(kField);
    if (found == std::string_view::npos || found + kField.size() + 8 > end) {
        return std::nullopt;
    }
    const auto size = std::bit_cast<double>(AV_RB64(&beginning[found + kField.size()]));
    return size > 0 && size < kMost ? std::optional(static_cast<int64_t>(size) - kLeeway) : std::nullopt;
}

}  // namespace zel_monitor

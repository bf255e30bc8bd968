#include "declared_size.h"

#include <string_view>

namespace zel_monitor {

/// Programs that write into a pipe say nothing there, or the most that fits.
bool isShorterThanItsHeader(const AVFormatContext& format) {
    constexpr uint32_t kLeastUnknown = 0x7fff0000;
    const std::string_view name = format.iformat->name;
    const int64_t length = name == "wav" || name == "avi" ? avio_size(format.pb) : -1;
    if (length < 0 || avio_seek(format.pb, 4, SEEK_SET) < 0) {
        return false;
    }
    const uint32_t size = avio_rl32(format.pb);
    return size < kLeastUnknown && size > 0 && int64_t{size} + 8 > length;
}

}  // namespace zel_monitor

#include "input/container/byte_source.h"

#include <algorithm>

namespace zel_monitor {
namespace {

constexpr size_t kStepBytes = size_t{1} << 20;

}  // namespace

ReadAt readerOf(AVIOContext& input) {
    return [&input](int64_t place, std::span<uint8_t> into) {
        const bool there = avio_seek(&input, place, SEEK_SET) == place;
        const int read = there ? avio_read(&input, into.data(), static_cast<int>(into.size())) : 0;
        return static_cast<size_t>(std::max(read, 0));
    };
}

ReadAt readerOf(std::span<const uint8_t> bytes) {
    return [bytes](int64_t place, std::span<uint8_t> into) {
        const size_t from = std::min(bytes.size(), static_cast<size_t>(std::max<int64_t>(place, 0)));
        const size_t count = std::min(into.size(), bytes.size() - from);
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(from), count, into.begin());
        return count;
    };
}

std::vector<uint8_t> readBytes(const ReadAt& read, int64_t place, size_t most_bytes) {
    std::vector<uint8_t> bytes;
    for (size_t had = 0; had < most_bytes;) {
        bytes.resize(std::min(most_bytes, had + kStepBytes));  // headers lie about sizes
        const size_t got = read(place + static_cast<int64_t>(had), std::span(bytes).subspan(had));
        const bool is_all = had + got < bytes.size();
        had += got;
        if (is_all) {
            bytes.resize(had);
            break;
        }
    }
    return bytes;
}

}  // namespace zel_monitor

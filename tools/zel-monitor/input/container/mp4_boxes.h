#ifndef ZEL_TOOLS_INPUT_CONTAINER_MP4_BOXES_H_
#define ZEL_TOOLS_INPUT_CONTAINER_MP4_BOXES_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

extern "C" {
#include <libavutil/intreadwrite.h>
}

namespace zel_monitor {

constexpr uint32_t fourCc(const char (&name)[5]) {
    return uint32_t{static_cast<uint8_t>(name[0])} << 24 | uint32_t{static_cast<uint8_t>(name[1])} << 16 |
           uint32_t{static_cast<uint8_t>(name[2])} << 8 | uint32_t{static_cast<uint8_t>(name[3])};
}

/// A box of an MP4 by its head, which may claim more bytes than there are.
struct Mp4Box {
    uint32_t type;
    int64_t head_bytes;
    int64_t bytes;  ///< with the head
};

/// Sizes and places above this are nonsense; their sums stay far from the end of what can be counted.
inline constexpr int64_t kMostMp4Bytes = int64_t{1} << 56;

/// The box whose head `bytes` begins with; one that goes on to the end of what it is in has `left` bytes.
/// None if there is none.
inline std::optional<Mp4Box> mp4BoxAt(std::span<const uint8_t> bytes, int64_t left) {
    if (bytes.size() < 8) {
        return std::nullopt;
    }
    Mp4Box box{.type = AV_RB32(&bytes[4]), .head_bytes = 8, .bytes = AV_RB32(bytes.data())};
    if (box.bytes == 0) {
        box.bytes = left;
    } else if (box.bytes == 1 && bytes.size() >= 16) {
        box.head_bytes = 16;
        box.bytes = static_cast<int64_t>(std::min<uint64_t>(AV_RB64(&bytes[8]), kMostMp4Bytes));
    }
    return box.bytes >= box.head_bytes ? std::optional(box) : std::nullopt;
}

/// Calls `visit(type, content)` for each box in `bytes`, with as much of its content as is there.
template <typename Visit>
void forMp4Boxes(std::span<const uint8_t> bytes, const Visit& visit) {
    while (const auto box = mp4BoxAt(bytes, static_cast<int64_t>(bytes.size()))) {
        const size_t size = std::min(static_cast<size_t>(box->bytes), bytes.size());
        const size_t head = std::min(static_cast<size_t>(box->head_bytes), size);
        visit(box->type, bytes.subspan(head, size - head));
        bytes = bytes.subspan(size);
    }
}

/// The content of the first box of that type in `bytes`; empty if there is none.
inline std::span<const uint8_t> mp4BoxIn(std::span<const uint8_t> bytes, uint32_t type) {
    std::span<const uint8_t> found;
    forMp4Boxes(bytes, [&](uint32_t here, std::span<const uint8_t> content) {
        found = found.empty() && here == type ? content : found;
    });
    return found;
}

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_CONTAINER_MP4_BOXES_H_

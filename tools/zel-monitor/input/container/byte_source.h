#ifndef ZEL_TOOLS_INPUT_CONTAINER_BYTE_SOURCE_H_
#define ZEL_TOOLS_INPUT_CONTAINER_BYTE_SOURCE_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "input/ffmpeg_handles.h"

namespace zel_monitor {

/// Reads bytes of an input from a place on, as many as there are of those wanted; 0 where it cannot be read.
using ReadAt = std::function<size_t(int64_t place, std::span<uint8_t> into)>;

/// Of an input that libavformat has open and that can be read anywhere. Leaves it elsewhere.
ReadAt readerOf(AVIOContext& input);
/// Of the beginning of one that cannot; `bytes` outlives the reader.
ReadAt readerOf(std::span<const uint8_t> bytes);

/// At most `most_bytes` from `place` on.
std::vector<uint8_t> readBytes(const ReadAt& read, int64_t place, size_t most_bytes);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_CONTAINER_BYTE_SOURCE_H_

#ifndef ZEL_TOOLS_INPUT_CONTAINER_MATROSKA_EXTENT_H_
#define ZEL_TOOLS_INPUT_CONTAINER_MATROSKA_EXTENT_H_

#include <cstdint>
#include <optional>
#include <span>

namespace zel_monitor {

/// How many bytes a Matroska or WebM file has by the size of its segment, from the file's first bytes; none
/// if that is left open, as where the file was written while it was sent.
std::optional<int64_t> matroskaSize(std::span<const uint8_t> beginning);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_CONTAINER_MATROSKA_EXTENT_H_

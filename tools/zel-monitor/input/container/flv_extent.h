#ifndef ZEL_TOOLS_INPUT_CONTAINER_FLV_EXTENT_H_
#define ZEL_TOOLS_INPUT_CONTAINER_FLV_EXTENT_H_

#include <cstdint>
#include <optional>
#include <span>

namespace zel_monitor {

/// How many bytes an FLV has at least by its metadata, from the file's first bytes; none if they do not say.
std::optional<int64_t> flvSize(std::span<const uint8_t> beginning);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_CONTAINER_FLV_EXTENT_H_

#ifndef ZEL_TOOLS_INPUT_CONTAINER_DECLARED_SIZE_H_
#define ZEL_TOOLS_INPUT_CONTAINER_DECLARED_SIZE_H_

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "input/ffmpeg_handles.h"

namespace zel_monitor {

/// How many bytes an input has at least by its own header, for the containers that libavformat does not hold
/// to their word: WAV, AVI, W64, ASF and CAF. `beginning` holds the first bytes of one that cannot be read
/// again. None if the header does not say, as when it was written into a pipe. To be asked before anything
/// after the header is read; leaves the input where it is.
std::optional<int64_t> declaredSize(const AVFormatContext& format, std::span<const uint8_t> beginning);

/// The same of an input that could not be opened, whose container is libavformat's `name`.
std::optional<int64_t> declaredSize(std::string_view name, std::span<const uint8_t> beginning);

/// Whether an input whose end was reached has fewer bytes than that. Leaves it elsewhere.
bool endsBefore(AVIOContext& input, int64_t size);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_CONTAINER_DECLARED_SIZE_H_

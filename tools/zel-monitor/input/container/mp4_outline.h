#ifndef ZEL_TOOLS_INPUT_CONTAINER_MP4_OUTLINE_H_
#define ZEL_TOOLS_INPUT_CONTAINER_MP4_OUTLINE_H_

#include <optional>

#include "input/container/byte_source.h"

namespace zel_monitor {

/// What libavformat does not tell of an MP4 or QuickTime file.
struct Mp4Outline {
    bool has_index = false;  ///< the box without which nothing can be found
    bool index_is_whole = false;
    bool is_encrypted = false;  ///< by its index a stream is
};

/// None if the input does not begin like such a file.
std::optional<Mp4Outline> outlineOfMp4(const ReadAt& read);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_CONTAINER_MP4_OUTLINE_H_

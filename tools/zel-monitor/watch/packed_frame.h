#ifndef ZEL_TOOLS_WATCH_PACKED_FRAME_H_
#define ZEL_TOOLS_WATCH_PACKED_FRAME_H_

#include <zel/algo/algo_types.h>

#include <cstdint>
#include <vector>

namespace zel_monitor {

/// Copies the planes one behind the other without gaps, as the C interface takes a frame. `packed` is
/// resized to width * height * 3 / 2 bytes.
void packPlanes(const ZELAlgo::ZELVideoPlanes& planes, std::vector<uint8_t>& packed);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_WATCH_PACKED_FRAME_H_

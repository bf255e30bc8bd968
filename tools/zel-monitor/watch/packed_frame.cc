#include "watch/packed_frame.h"

#include <algorithm>
#include <cstddef>

namespace zel_monitor {

void packPlanes(const ZELAlgo::ZELVideoPlanes& planes, std::vector<uint8_t>& packed) {
    packed.resize(size_t{planes.width} * planes.height * 3 / 2);
    uint8_t* target = packed.data();
    for (size_t plane = 0; plane < 3; ++plane) {
        const uint32_t halving = plane == 0 ? 1 : 2;
        for (size_t y = 0; y < planes.height / halving; ++y) {
            target =
                std::copy_n(planes.data[plane] + y * planes.stride[plane], planes.width / halving, target);
        }
    }
}

}  // namespace zel_monitor

#include "report/mean_luma.h"

#include <cstdint>

namespace zel_monitor {
namespace {

constexpr uint32_t kLumaGrid = 8;  // every so many rows and columns are enough for a mean

}  // namespace

double meanLuma(const ZELAlgo::ZELVideoPlanes& planes) {
    uint64_t sum = 0;
    uint64_t count = 0;
    for (uint32_t y = 0; y < planes.height; y += kLumaGrid) {
        const uint8_t* const row = planes.data[0] + y * planes.stride[0];
        for (uint32_t x = 0; x < planes.width; x += kLumaGrid) {
            sum += row[x];
            ++count;
        }
    }
    return static_cast<double>(sum) / static_cast<double>(count);
}

}  // namespace zel_monitor

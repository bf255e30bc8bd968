#ifndef ZEL_TOOLS_REPORT_MEAN_LUMA_H_
#define ZEL_TOOLS_REPORT_MEAN_LUMA_H_

#include <zel/algo/algo_types.h>

namespace zel_monitor {

/// Mean of the luma, 0 to 255, from a grid of samples.
double meanLuma(const ZELAlgo::ZELVideoPlanes& planes);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_MEAN_LUMA_H_

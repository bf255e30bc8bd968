#ifndef ZEL_TOOLS_REPORT_DETECTOR_TABLE_H_
#define ZEL_TOOLS_REPORT_DETECTOR_TABLE_H_

#include <string>

namespace zel_monitor {

/// The kinds of faults with their defaults, for people.
std::string detectorTable();

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_DETECTOR_TABLE_H_

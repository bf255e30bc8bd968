#ifndef ZEL_TOOLS_REPORT_CONTAINER_NAME_H_
#define ZEL_TOOLS_REPORT_CONTAINER_NAME_H_

#include <string>

namespace zel_monitor {

/// The container as a person calls it, "MP4/MOV", from FFmpeg's name of the format,
/// "mov,mp4,m4a,3gp,3g2,mj2".
std::string containerName(const std::string& format);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_CONTAINER_NAME_H_

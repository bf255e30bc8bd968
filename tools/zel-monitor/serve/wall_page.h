#ifndef ZEL_TOOLS_SERVE_WALL_PAGE_H_
#define ZEL_TOOLS_SERVE_WALL_PAGE_H_

#include <span>
#include <string_view>

namespace zel_monitor {

/// The built page that shows all streams, in pieces. None if it was not built.
std::span<const std::string_view> wallPage();

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_WALL_PAGE_H_

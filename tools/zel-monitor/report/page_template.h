#ifndef ZEL_TOOLS_REPORT_PAGE_TEMPLATE_H_
#define ZEL_TOOLS_REPORT_PAGE_TEMPLATE_H_

#include <span>
#include <string_view>

namespace zel_monitor {

/// The built page in pieces; its data goes where kPageDataMark stands. None if it was not built.
std::span<const std::string_view> pageTemplate();

inline constexpr std::string_view kPageDataMark = "@ZEL_SCAN_DATA@";

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_PAGE_TEMPLATE_H_

#ifndef ZEL_TOOLS_REPORT_PAGE_H_
#define ZEL_TOOLS_REPORT_PAGE_H_

#include <nlohmann/json.hpp>
#include <string>

namespace zel_monitor {

/// Whether this program was built with the page.
bool hasPage();

/// The self-contained page that shows `data`: {"report": ..., "records": [one per input]}. The kinds' names,
/// colours and meanings come from the table of kinds.
std::string pageHtml(const nlohmann::ordered_json& data);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_PAGE_H_

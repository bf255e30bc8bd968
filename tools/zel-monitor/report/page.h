#ifndef ZEL_TOOLS_REPORT_PAGE_H_
#define ZEL_TOOLS_REPORT_PAGE_H_

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace zel_monitor {

/// Whether this program was built with the page.
bool hasPage();

/// A script element that holds data under this id. No text in it can end the element.
std::string dataElement(std::string_view id, const nlohmann::ordered_json& data);
/// What pages know of the kinds.
nlohmann::ordered_json kindsJson();

/// The self-contained page that shows `data`: {"report": ..., "records": [one per input]}. The kinds' names,
/// colours and meanings come from the table of kinds.
std::string pageHtml(const nlohmann::ordered_json& data);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_PAGE_H_

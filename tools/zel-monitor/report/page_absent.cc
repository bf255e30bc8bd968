#include "report/page_template.h"

namespace zel_monitor {

std::span<const std::string_view> pageTemplate() {
    return {};
}

}  // namespace zel_monitor

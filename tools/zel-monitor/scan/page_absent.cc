#include "scan/page_template.h"

namespace zel_monitor::scan {

std::span<const std::string_view> pageTemplate() {
    return {};
}

}  // namespace zel_monitor::scan

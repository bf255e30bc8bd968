#include "serve/wall_page.h"

namespace zel_monitor {

std::span<const std::string_view> wallPage() {
    return {};
}

}  // namespace zel_monitor

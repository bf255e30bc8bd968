#ifndef ZEL_TOOLS_REPORT_KIND_OPTIONS_H_
#define ZEL_TOOLS_REPORT_KIND_OPTIONS_H_

#include <zel/events/kinds.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace zel_monitor {

/// The kind that an option names. Throws CLI::ValidationError.
ZEL::EventKind kindOf(const std::string& option, std::string_view name);

/// Adds an option that takes "kind=time", several with commas or by repetition. `bare` allows "kind" alone,
/// without a time.
void addPerKind(CLI::App& command, const std::string& name, const std::string& help, bool bare,
                std::function<void(ZEL::EventKind, std::optional<double>)> set);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_KIND_OPTIONS_H_

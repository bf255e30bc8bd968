#include "report/kind_options.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <utility>
#include <vector>

#include "cli/command_line.h"

namespace zel_monitor {

ZEL::EventKind kindOf(const std::string& option, std::string_view name) {
    const auto found = ZEL::eventKindByName(name);
    if (!found) {
        throw CLI::ValidationError(
            option, fmt::format("'{}' is not a kind of fault; --list-detectors names them all", name));
    }
    return *found;
}

void addPerKind(CLI::App& command, const std::string& name, const std::string& help, bool bare,
                std::function<void(ZEL::EventKind, std::optional<double>)> set) {
    command
        .add_option_function<std::vector<std::string>>(
            name,
            [name, bare, set = std::move(set)](const std::vector<std::string>& items) {
                ZEL::PerEventKind<bool> given{};
                for (const std::string& item : items) {
                    const size_t equals = item.find('=');
                    if (equals == std::string::npos && !bare) {
                        throw CLI::ValidationError(
                            name, fmt::format("'{}' lacks a length of time; write {}=0.5s", item, item));
                    }
                    const ZEL::EventKind wanted = kindOf(name, item.substr(0, equals));
                    if (std::exchange(given[indexOf(wanted)], true)) {
                        throw CLI::ValidationError(name,
                                                   fmt::format("{} is given twice", infoOf(wanted).name));
                    }
                    set(wanted, equals == std::string::npos
                                    ? std::nullopt
                                    : std::optional(seconds(name, item.substr(equals + 1))));
                }
            },
            help)
        ->delimiter(',')
        ->type_name("KIND=TIME")
        ->allow_extra_args(false);
}

}  // namespace zel_monitor

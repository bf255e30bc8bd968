#include "cli/command_line.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <sstream>
#include <string_view>
#include <utility>

#include "cli/exit_status.h"
#include "cli/file_names.h"
#include "cli/standard_streams.h"
#include "cli/time_text.h"

namespace zel_monitor {
namespace {

/// A check that reads the text as CLI11 will.
template <typename Number>
std::function<std::string(const std::string&)> checkOf(std::string_view what, Number least, Number most) {
    return [=](const std::string& text) {
        Number value{};
        if (!CLI::detail::lexical_cast(text, value) || std::isnan(static_cast<double>(value))) {
            return fmt::format("'{}' is not {}", text, what);
        }
        return least <= value && value <= most ? ""
                                               : fmt::format("{} is not from {} to {}", text, least, most);
    };
}

}  // namespace

int runCommandLine(std::span<const Command> commands, std::vector<std::string> arguments) {
    const auto app = makeCommandLine();
    std::vector<std::pair<const CLI::App*, std::function<int()>>> prepared;
    for (const Command& command : commands) {
        CLI::App* const added = app->add_subcommand(command.name, command.summary);
        prepared.emplace_back(added, command.prepare(*added));
    }
    if (const auto answer = parseArguments(*app, std::move(arguments))) {
        writeError(answer->error);
        writeOutput(answer->output);
        return answer->status;
    }
    const auto chosen = std::find_if(prepared.begin(), prepared.end(),
                                     [](const auto& command) { return command.first->parsed(); });
    return chosen->second();
}

std::shared_ptr<CLI::App> makeCommandLine() {
    auto app = std::make_shared<CLI::App>("Monitors the quality of video and audio streams.", "zel-monitor");
    app->set_version_flag("--version", "zel-monitor " ZEL_VERSION);
    app->require_subcommand(1);
    app->failure_message([](const CLI::App* program, const CLI::Error& error) {
        const std::vector<std::string> unknown = program->remaining();
        const std::string fault = program->get_subcommands().empty() && !unknown.empty()
                                      ? "'" + unknown.front() + "' is neither a command nor an option"
                                      : error.what();
        return "zel-monitor: " + printable(fault) + " (--help tells more)\n";
    });
    return app;
}

std::optional<EarlyExit> parseArguments(CLI::App& app, std::vector<std::string> arguments) {
    try {
        std::reverse(arguments.begin(), arguments.end());  // the parser takes them from the back
        app.parse(std::move(arguments));
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        std::ostringstream output;
        std::ostringstream messages;
        const bool asked_for = app.exit(error, output, messages) == 0;  // --help or --version
        return EarlyExit{
            .status = asked_for ? kExitDone : kExitUsage, .output = output.str(), .error = messages.str()};
    }
}

std::function<std::string(const std::string&)> numberFrom(double least, double most) {
    return checkOf("a number", least, most);
}

std::function<std::string(const std::string&)> wholeNumberFrom(int64_t least, int64_t most) {
    return checkOf("a whole number", least, most);
}

double seconds(const std::string& option, std::string_view text) {
    const auto value = parseSeconds(text);
    if (!value) {
        throw CLI::ValidationError(
            option, fmt::format("'{}' is no length of time; write for example 0.5s, 500ms or 2m", text));
    }
    return *value;
}

}  // namespace zel_monitor

#ifndef ZEL_TOOLS_CLI_COMMAND_LINE_H_
#define ZEL_TOOLS_CLI_COMMAND_LINE_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace zel_monitor {

/// One command of the program.
struct Command {
    const char* name;
    const char* summary;
    /// Adds the options to the command and gives what runs it with them once they were parsed. Its answer is
    /// the exit status.
    std::function<std::function<int()>(CLI::App& command)> prepare;
};

/// A command from the function that adds its options and the one that runs it.
template <typename Options>
Command command(const char* name, const char* summary, void (*add)(CLI::App&, Options&),
                int (*run)(const Options&)) {
    return {name, summary, [add, run](CLI::App& app) -> std::function<int()> {
                const auto options = std::make_shared<Options>();
                add(app, *options);
                return [options, run] { return run(*options); };
            }};
}

/// Reads the arguments after the program's name, runs the command that they name and gives the exit status.
int runCommandLine(std::span<const Command> commands, std::vector<std::string> arguments);

/// The program without its commands.
std::shared_ptr<CLI::App> makeCommandLine();

/// Nothing to run: what to write to standard output or standard error, and the exit status.
struct EarlyExit {
    int status;
    std::string output;
    std::string error;
};

std::optional<EarlyExit> parseArguments(CLI::App& app, std::vector<std::string> arguments);

/// For CLI::Option::check: refuses what is not a number from `least` to `most`.
std::function<std::string(const std::string&)> numberFrom(double least, double most);
std::function<std::string(const std::string&)> wholeNumberFrom(int64_t least, int64_t most);

/// The length of time that an option was given. Throws CLI::ValidationError.
double seconds(const std::string& option, std::string_view text);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_COMMAND_LINE_H_

#include "watch/watch_options.h"

#include <CLI/App.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/command_line.h"

namespace {

using testing::HasSubstr;
using zel_monitor::EarlyExit;
using zel_monitor::kHeartbeatFormats;
using zel_monitor::WatchOptions;

struct Parsed {
    std::optional<EarlyExit> early;
    WatchOptions options;
};

Parsed parse(std::vector<std::string> arguments) {
    const auto app = zel_monitor::makeCommandLine();
    WatchOptions watch;
    WatchOptions demo;
    zel_monitor::addWatchOptions(*app->add_subcommand("watch"), watch);
    CLI::App* const demo_command = app->add_subcommand("demo");
    zel_monitor::addDemoOptions(*demo_command, demo);
    auto early = zel_monitor::parseArguments(*app, std::move(arguments));
    return {.early = std::move(early), .options = demo_command->parsed() ? demo : watch};
}

WatchOptions parsed(std::vector<std::string> arguments) {
    const Parsed result = parse(std::move(arguments));
    EXPECT_FALSE(result.early.has_value());
    return result.options;
}

TEST(WatchOptions, TakeAnInputAndHaveDefaults) {
    const WatchOptions options = parsed({"watch", "-"});
    EXPECT_EQ("-", options.input);
    EXPECT_EQ(1.0, options.speed);
    EXPECT_EQ(5U, options.interval);
    EXPECT_EQ(&kHeartbeatFormats[0], options.format);
    EXPECT_TRUE(options.audio);
    EXPECT_EQ("", options.log_file);
}

TEST(WatchOptions, AreAllRead) {
    const WatchOptions options =
        parsed({"watch", "--speed", "0.5", "a.mp4", "--interval=60", "--json", "--no-audio", "--log", "x.log",
                "--reconnect", "--name", "news", "--open-timeout", "1m", "--read-timeout=500ms"});
    EXPECT_TRUE(options.reconnect);
    EXPECT_EQ("news", options.name);
    EXPECT_EQ(60.0, options.open_timeout_s);
    EXPECT_EQ(0.5, options.read_timeout_s);
    EXPECT_EQ("a.mp4", options.input);
    EXPECT_EQ(0.5, options.speed);
    EXPECT_EQ(60U, options.interval);
    EXPECT_STREQ("--json", options.format->option);
    EXPECT_FALSE(options.audio);
    EXPECT_EQ("x.log", options.log_file);
    EXPECT_EQ("demo:", parsed({"demo", "--json"}).input);
    EXPECT_EQ("[a,b]", parsed({"watch", "[a,b]"}).input) << "no list";
}

TEST(WatchOptions, WrongUsageIsRefused) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"watch"}, "INPUT"},
        {{"watch", "a", "b"}, "b"},
        {{"watch", "a", "--speed", "0"}, "--speed"},
        {{"watch", "a", "--speed", "abc"}, "--speed: 'abc' is not a number"},
        {{"watch", "a", "--speed", "nan"}, "--speed"},
        {{"watch", "a", "--interval", "-1"}, "--interval"},
        {{"watch", "a", "--read-timeout", "0s"}, "'0s' is no length of time"},
        {{"watch", "a", "--open-timeout", "-1"}, "--open-timeout"},
        {{"watch", "a", "--interval", "0"}, "--interval"},
        {{"demo", "a"}, "a"},
    };
    for (const auto& [arguments, fault] : cases) {
        const EarlyExit answer = parse(arguments).early.value();
        EXPECT_EQ(2, answer.status);
        EXPECT_THAT(answer.error, HasSubstr(fault));
    }
    EXPECT_THAT(parse({"watch", "--help"}).early.value().output,
                testing::AllOf(HasSubstr("--interval"), HasSubstr("Exit status")));
}

}  // namespace

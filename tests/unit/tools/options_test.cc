#include "watch/options.h"

#include <CLI/App.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;
using zel_monitor::EarlyExit;
using zel_monitor::WatchOptions;

struct Parsed {
    std::optional<EarlyExit> early;
    WatchOptions options;
};

Parsed parse(std::vector<std::string> arguments) {
    const auto app = zel_monitor::makeCommandLine();
    WatchOptions watch;
    WatchOptions demo;
    zel_monitor::addWatchCommand(*app, watch);
    const CLI::App* const demo_command = zel_monitor::addDemoCommand(*app, demo);
    auto early = zel_monitor::parseArguments(*app, std::move(arguments));
    return {.early = std::move(early), .options = demo_command->parsed() ? demo : watch};
}

WatchOptions parsed(std::vector<std::string> arguments) {
    const Parsed result = parse(std::move(arguments));
    EXPECT_FALSE(result.early.has_value());
    return result.options;
}

EarlyExit refused(std::vector<std::string> arguments) {
    return parse(std::move(arguments)).early.value();
}

TEST(Options, WatchTakesAnInputAndHasDefaults) {
    const WatchOptions options = parsed({"watch", "-"});
    EXPECT_EQ("-", options.input);
    EXPECT_EQ(1.0, options.speed);
    EXPECT_EQ(5U, options.interval);
    EXPECT_FALSE(options.json);
    EXPECT_TRUE(options.audio);
    EXPECT_EQ("", options.log_file);
}

TEST(Options, EverySwitchIsRead) {
    const WatchOptions options = parsed(
        {"watch", "--speed", "0.5", "a.mp4", "--interval=60", "--json", "--no-audio", "--log", "x.log"});
    EXPECT_EQ("a.mp4", options.input);
    EXPECT_EQ(0.5, options.speed);
    EXPECT_EQ(60U, options.interval);
    EXPECT_TRUE(options.json);
    EXPECT_FALSE(options.audio);
    EXPECT_EQ("x.log", options.log_file);
    EXPECT_EQ("demo:", parsed({"demo", "--json"}).input);
    EXPECT_EQ("[a,b]", parsed({"watch", "[a,b]"}).input) << "no list";
}

TEST(Options, WrongUsageIsRefusedWithOneLineThatNamesTheFault) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{}, "subcommand"},
        {{"watch"}, "INPUT"},
        {{"watch", "a", "b"}, "b"},
        {{"watch", "a", "--speed", "0"}, "--speed"},
        {{"watch", "a", "--speed", "fast"}, "--speed"},
        {{"watch", "a", "--speed", "nan"}, "--speed"},
        {{"watch", "a", "--interval", "-1"}, "--interval"},
        {{"watch", "a", "--interval", "0"}, "--interval"},
        {{"watch", "a", "--frob"}, "--frob"},
        {{"demo", "a"}, "a"},
        {{"frobnicate"}, "'frobnicate'"},
    };
    for (const auto& [arguments, fault] : cases) {
        const EarlyExit answer = refused(arguments);
        EXPECT_EQ(2, answer.status);
        EXPECT_EQ("", answer.output);
        EXPECT_THAT(answer.error, testing::AllOf(HasSubstr("zel-monitor: "), HasSubstr(fault)));
        EXPECT_EQ(1, std::count(answer.error.begin(), answer.error.end(), '\n')) << answer.error;
    }
}

TEST(Options, HelpAndVersionGoToStandardOutput) {
    EXPECT_EQ(0, refused({"--help"}).status);
    EXPECT_THAT(refused({"--help"}).output, testing::AllOf(HasSubstr("watch"), HasSubstr("demo")));
    EXPECT_THAT(refused({"watch", "--help"}).output,
                testing::AllOf(HasSubstr("--interval"), HasSubstr("Exit status")));
    EXPECT_THAT(refused({"--version"}).output, testing::MatchesRegex("zel-monitor [0-9.]+\n"));
}

}  // namespace

#include "cli/command_line.h"

#include <CLI/App.hpp>
#include <array>
#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace zel_monitor;
using testing::HasSubstr;

struct Asked {
    double number = 1.0;
    int whole = 2;
};

std::optional<Asked> heard;

void addAsked(CLI::App& command, Asked& asked) {
    command.add_option("--number", asked.number)->check(numberFrom(0.5, 10));
    command.add_option("--whole", asked.whole)->check(wholeNumberFrom(0, 10));
}

int hear(const Asked& asked) {
    heard = asked;
    return 7;
}

int refuse(const Asked& /*asked*/) {
    return 8;
}

const std::array kCommands = {command("hear", "Hears", &addAsked, &hear),
                              command("refuse", "Refuses", &addAsked, &refuse)};

TEST(CommandLine, RunsTheCommandThatIsNamedWithItsOptions) {
    EXPECT_EQ(runCommandLine(kCommands, {"hear", "--number", "2.5"}), 7);
    ASSERT_TRUE(heard);
    EXPECT_EQ(heard->number, 2.5);
    EXPECT_EQ(heard->whole, 2);
    EXPECT_EQ(runCommandLine(kCommands, {"refuse"}), 8);
}

TEST(CommandLine, HelpAndVersionGoToStandardOutput) {
    const auto output = [](const std::vector<std::string>& arguments) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(runCommandLine(kCommands, arguments), 0);
        return testing::internal::GetCapturedStdout();
    };
    EXPECT_THAT(output({"--help"}), testing::AllOf(HasSubstr("hear"), HasSubstr("Refuses")));
    EXPECT_THAT(output({"refuse", "--help"}), HasSubstr("--number"));
    EXPECT_THAT(output({"--version"}), testing::MatchesRegex("zel-monitor [0-9.]+\n"));
}

TEST(CommandLine, WrongUsageIsOneLineThatNamesTheFault) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{}, "subcommand"},
        {{"frobnicate"}, "'frobnicate' is neither"},
        {{"hear", "--frob"}, "--frob"},
        {{"hear", "--number", "abc"}, "--number: 'abc' is not a number"},
        {{"hear", "--number", "nan"}, "--number: 'nan' is not a number"},
        {{"hear", "--number", "0"}, "--number: 0 is not from 0.5 to 10"},
        {{"hear", "--whole", "1.5"}, "--whole: '1.5' is not a whole number"},
        {{"hear", "--whole", "-1"}, "--whole: -1 is not from 0 to 10"},
    };
    for (const auto& [arguments, fault] : cases) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(runCommandLine(kCommands, arguments), 2);
        const std::string said = testing::internal::GetCapturedStderr();
        EXPECT_THAT(said, testing::AllOf(testing::StartsWith("zel-monitor: "), HasSubstr(fault)));
        EXPECT_EQ(1, std::count(said.begin(), said.end(), '\n')) << said;
    }
}

}  // namespace

#include "cli/shard.h"

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using zel_monitor::parseShard;
using zel_monitor::Shard;
using zel_monitor::shardFor;

TEST(Shard, EveryNameFallsToOneOfThem) {
    constexpr int kNames = 3000;
    std::vector<int> taken(3);
    for (int i = 0; i < kNames; ++i) {
        int takers = 0;
        for (size_t shard = 0; shard < taken.size(); ++shard) {
            const bool takes = Shard{shard, taken.size()}.takes("channel-" + std::to_string(i));
            taken[shard] += takes ? 1 : 0;
            takers += takes ? 1 : 0;
        }
        ASSERT_EQ(takers, 1);
    }
    EXPECT_THAT(taken, testing::Each(testing::AllOf(testing::Gt(850), testing::Lt(1150))));
    ASSERT_TRUE(parseShard("3/3"));
    EXPECT_EQ(parseShard("3/3")->index, 2U);
    for (const char* const wrong : {"0/3", "4/3", "1", "1/", "/3", "1/0", "a/3", "1/3x", "-1/3", ""}) {
        EXPECT_FALSE(parseShard(wrong)) << wrong;
    }
}

using Variables = std::map<std::string, std::string>;

/// "index of count" with these variables, or "refused".
std::string taskShard(const std::string& text, const Variables& variables) {
    try {
        const Shard shard = shardFor(text, [&](const char* name) {
            const auto found = variables.find(name);
            return found != variables.end() ? found->second.c_str() : nullptr;
        });
        return std::to_string(shard.index) + " of " + std::to_string(shard.count);
    } catch (const std::runtime_error&) {
        return "refused";
    }
}

Variables slurm(const std::string& task, const std::string& first, const std::string& last,
                const std::string& count, const std::string& step) {
    return {{"SLURM_ARRAY_TASK_ID", task},
            {"SLURM_ARRAY_TASK_MIN", first},
            {"SLURM_ARRAY_TASK_MAX", last},
            {"SLURM_ARRAY_TASK_COUNT", count},
            {"SLURM_ARRAY_TASK_STEP", step}};
}

TEST(Shard, IsThatOfTheTaskWhereTheEngineTells) {
    EXPECT_EQ(taskShard("2/5", {}), "1 of 5");
    EXPECT_EQ(taskShard("auto", slurm("1", "1", "10", "10", "1")), "0 of 10");
    EXPECT_EQ(taskShard("auto", slurm("9", "0", "9", "10", "1")), "9 of 10");
    EXPECT_EQ(taskShard("auto", slurm("8", "4", "12", "3", "4")), "1 of 3");
    EXPECT_EQ(taskShard("auto/100", slurm("42", "7", "42", "2", "1")), "42 of 100");
    EXPECT_EQ(taskShard("auto/4", {{"JOB_COMPLETION_INDEX", "3"}}), "3 of 4");

    EXPECT_EQ(taskShard("auto", slurm("42", "7", "42", "2", "1")), "refused");  // --array=7,42
    EXPECT_EQ(taskShard("auto/42", slurm("42", "1", "42", "42", "1")), "refused");
    EXPECT_EQ(taskShard("auto", {{"JOB_COMPLETION_INDEX", "3"}}), "refused");
    EXPECT_EQ(taskShard("auto", {}), "refused");
    EXPECT_EQ(taskShard("auto", {{"SLURM_ARRAY_TASK_ID", ""}}), "refused");
    EXPECT_EQ(taskShard("automatic", slurm("1", "1", "2", "2", "1")), "refused");
    EXPECT_EQ(taskShard("auto/", {{"JOB_COMPLETION_INDEX", "0"}}), "refused");
}

}  // namespace

#include "cli/output_file.h"

#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/file_names.h"
#include "cli/standard_streams.h"
#include "support/clip.h"

namespace {

using namespace zel_monitor;
using testing::HasSubstr;

std::string contentOf(const std::string& path) {
    const auto bytes = support::readFile(path);
    return {bytes.begin(), bytes.end()};
}

void writeWhole(const std::string& path, bool overwrite, std::string_view text) {
    OutputFile file(path, overwrite, Appears::kWhenComplete);
    file.write(text);
    file.complete();
}

TEST(OutputFile, ReplacesWhatExistsOnlyWhenAskedFor) {
    const support::ScratchDir dir;
    const std::string path = dir.file("report.json");
    writeWhole(path, false, "first");
    EXPECT_THROW(OutputFile(path, false, Appears::kAtOnce), std::runtime_error);
    EXPECT_EQ(contentOf(path), "first");
    writeWhole(path, true, "2nd");
    EXPECT_EQ(contentOf(path), "2nd");
    std::filesystem::create_symlink(path, dir.file("link"));
    writeWhole(dir.file("link"), true, "third");
    EXPECT_EQ(contentOf(path), "third") << "where the link points to";
    EXPECT_THROW(OutputFile(dir.file("no/such/place"), false, Appears::kAtOnce), std::runtime_error);
    EXPECT_THROW(OutputFile(dir.file(""), true, Appears::kAtOnce), std::runtime_error);
}

TEST(OutputFile, NeverReplacesWhatCameMeanwhile) {
    const support::ScratchDir dir;
    const std::string path = dir.file("report.json");
    std::string message;
    {
        OutputFile file(path, false, Appears::kWhenComplete);
        file.write("hours of work");
        support::writeFile(path, {'x'});
        try {
            file.complete();
        } catch (const OutputError& error) {
            message = error.what();
        }
    }
    EXPECT_EQ(contentOf(path), "x");
    std::filesystem::remove(path);
    const std::filesystem::directory_iterator kept(dir.file(""));
    ASSERT_NE(kept, std::filesystem::directory_iterator());
    EXPECT_EQ(contentOf(kept->path().string()), "hours of work");
    EXPECT_THAT(message, testing::AllOf(HasSubstr(kept->path().string()), HasSubstr(path + ": File exists")));
}

TEST(OutputFile, FollowsALinkThatPointsToNothingYet) {
    const support::ScratchDir dir;
    std::filesystem::create_symlink("inner", dir.file("outer"));
    std::filesystem::create_symlink("report.json", dir.file("inner"));
    EXPECT_TRUE(writesOver(dir.file("outer"), dir.file("report.json")));
    EXPECT_THROW(OutputFile(dir.file("outer"), false, Appears::kAtOnce), std::runtime_error);
    writeWhole(dir.file("outer"), true, "first");
    EXPECT_TRUE(std::filesystem::is_symlink(dir.file("outer")));
    EXPECT_TRUE(std::filesystem::is_symlink(dir.file("inner")));
    EXPECT_EQ(contentOf(dir.file("report.json")), "first");
}

TEST(OutputFile, LeavesNothingBehindThatBlocksTheNextRun) {
    const support::ScratchDir dir;
    const std::string path = dir.file("events.jsonl");
    for (const Appears appears : {Appears::kAtOnce, Appears::kWhenComplete}) {
        { const OutputFile empty(path, false, appears); }
        EXPECT_TRUE(std::filesystem::is_empty(dir.file("")));
    }
    {
        OutputFile file(path, false, Appears::kAtOnce);
        file.write("an event\n");
        EXPECT_EQ(contentOf(path), "an event\n") << "can be followed";
    }
    EXPECT_EQ(contentOf(path), "an event\n") << "what was found stays";
    OutputFile(dir.file("none.jsonl"), false, Appears::kAtOnce).complete();
    EXPECT_EQ(contentOf(dir.file("none.jsonl")), "");
}

}  // namespace

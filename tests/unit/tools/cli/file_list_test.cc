#include "cli/file_list.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/clip.h"

namespace {

using namespace zel_monitor;
using testing::ElementsAre;

std::vector<char> bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

TEST(FileList, WalksFoldersInOneOrderAndKeepsThatOfTheList) {
    const support::ScratchDir dir;
    const auto make = [&](const std::string& name) {
        std::filesystem::create_directories(std::filesystem::path(dir.file(name)).parent_path());
        support::writeFile(dir.file(name), {'x'});
        return dir.file(name);
    };
    const std::string upper = make("folder/B.MP4");
    const std::string lower = make("folder/a.ts");
    const std::string below = make("folder/c/d/e.wav");
    make("folder/notes.txt");
    make("folder/.hidden.mp4");
    make("folder/.hidden/f.mp4");
    const std::string folder = dir.file("folder");
    std::filesystem::create_directory_symlink(folder, folder + "/c/loop");
    std::filesystem::create_directory(folder + "/series.mp4");
    const std::string episode = make("folder/series.mp4/1.mov");
    std::filesystem::create_directory(dir.file("empty"));

    support::writeFile(dir.file("list"),
                       bytesOf("z.mp4\r\n\n" + dir.file("empty") + "\n" + folder + "/c\nx\ny.mp4"));
    EXPECT_THAT(namesIn({.names = {folder, "-", "http://host/x"}, .from = dir.file("list")}),
                ElementsAre(upper, lower, below, episode, "-", "http://host/x", "z.mp4", dir.file("empty"),
                            below, "x", "y.mp4"));
    support::writeFile(dir.file("list"), bytesOf(std::string("a\nb.mp4\0c.mp4\r", 15)));
    EXPECT_THAT(namesIn({.names = {}, .from = dir.file("list"), .null_separated = true}),
                ElementsAre("a\nb.mp4", "c.mp4\r"));
    EXPECT_THROW(namesIn({.names = {}, .from = dir.file("none")}), std::runtime_error);
    EXPECT_THROW(namesIn({.names = {}, .from = folder}), std::runtime_error);
}

TEST(FileList, OneFileHasOneAbsoluteNameUnlessLinksDecide) {
    const std::string here = std::filesystem::current_path().string();
    EXPECT_EQ(absoluteName("./a//b/./c.mp4"), here + "/a/b/c.mp4");
    EXPECT_EQ(absoluteName(here + "/a/b/c.mp4"), here + "/a/b/c.mp4");
    EXPECT_EQ(absoluteName("a/../b"), here + "/a/../b");
    EXPECT_EQ(absoluteName("http://host/a//b"), "http://host/a//b");
}

}  // namespace

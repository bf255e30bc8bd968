#include "cli/file_names.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "support/clip.h"

namespace {

TEST(FileNames, KnowWhenAnOutputWouldDestroyAnotherFile) {
    const support::ScratchDir dir;
    const std::string file = dir.file("a.mkv");
    support::writeFile(file, {'x'});
    std::filesystem::create_symlink(file, dir.file("link"));
    using zel_monitor::writesOver;
    EXPECT_TRUE(writesOver(dir.file("./a.mkv"), file));
    EXPECT_TRUE(writesOver(dir.file("link"), file));
    EXPECT_TRUE(writesOver(file, "file:" + file));
    EXPECT_TRUE(writesOver("new.html", "./new.html"));
    EXPECT_FALSE(writesOver(dir.file("b.mkv"), file));
    EXPECT_FALSE(writesOver("/dev/null", "/dev/null"));
    EXPECT_FALSE(writesOver("", "-"));
}

TEST(FileNames, AreShownWithoutControlCharacters) {
    EXPECT_EQ(zel_monitor::printable("a\x1b[2J"
                                     "b\n\x7f.mkv"),
              "a\\x1b[2Jb\\x0a\\x7f.mkv");
    EXPECT_EQ(zel_monitor::printable("\xc2\x9b"), "\xc2\\x9b");
    EXPECT_EQ(zel_monitor::printable("\u00dcbung \u00b0.mkv"), "\u00dcbung \u00b0.mkv");
}

}  // namespace

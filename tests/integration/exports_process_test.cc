// What the library does to the process that hosts it.
#include <zel/zel.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "support/frames.h"

namespace {

/// A host of its own, since what becomes of standard output and "ZEL_LOG" is one process's matter.
class ExportsDeathTest : public testing::Test {
  protected:
    ExportsDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    /// Feeds `count` frames with standard output going into a pipe, and ends as a host does.
    [[noreturn]] static void hostWithAPipe(int count, bool somebody_reads) {
        std::fflush(stdout);
        std::array<int, 2> ends{};
        EXPECT_EQ(pipe(ends.data()), 0);
        dup2(ends[1], STDOUT_FILENO);
        close(ends[1]);
        if (!somebody_reads) {
            close(ends[0]);
        }
        host(count);
    }

    [[noreturn]] static void host(int count) {
        const std::vector<uint8_t> frame = support::flatFrame(16, 16, support::kMidGrey);
        ZELHandle* const handle = init_handle();
        for (int i = 0; i < count; ++i) {
            feed_video_frame(handle, frame.data(), 16, 16, i);
        }
        release_handle(handle);
        std::exit(0);
    }
};

TEST_F(ExportsDeathTest, NoOutputHoldsAHostUpOrEndsIt) {
    EXPECT_EXIT(hostWithAPipe(5000, true), testing::ExitedWithCode(0), "");  // never read
    EXPECT_EXIT(hostWithAPipe(5000, false), testing::ExitedWithCode(0), "");
}

TEST_F(ExportsDeathTest, LogWhereTheEnvironmentSays) {
    setenv("ZEL_LOG", "stderr", 1);
    EXPECT_EXIT(host(1), testing::ExitedWithCode(0), "line: 188.ZELSessionPC feed_video_frame\n");
    setenv("ZEL_LOG", "off", 1);
    EXPECT_EXIT(hostWithAPipe(1, false), testing::ExitedWithCode(0), "^$");
    unsetenv("ZEL_LOG");
}

}  // namespace

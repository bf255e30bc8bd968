#include "base/started_thread.h"

#include <array>
#include <atomic>
#include <pthread.h>

#include <gtest/gtest.h>

namespace {

TEST(StartThread, ReturnsWhenTheThreadHasItsNameAndRunsTheBody) {
    std::atomic<bool> looked_at{false};
    bool ran = false;
    std::thread thread = ZEL::startThread([] { return "a name too long for Linux"; },
                                          [&] {
                                              looked_at.wait(false);  // the name goes with the thread
                                              ran = true;
                                          });
    std::array<char, 32> name{};
    EXPECT_EQ(pthread_getname_np(thread.native_handle(), name.data(), name.size()), 0);
    EXPECT_STREQ(name.data(), "a name too long");
    looked_at = true;
    looked_at.notify_one();
    thread.join();
    EXPECT_TRUE(ran);
}

}  // namespace

#include "base/started_thread.h"

#include <array>
#include <atomic>
#include <pthread.h>
#include <system_error>

#include <gtest/gtest.h>

#include "support/allocations.h"
#include "support/no_threads.h"

namespace {

TEST(StartThread, ReturnsWhenTheThreadHasItsNameAndRunsTheBody) {
    std::atomic<bool> looked_at{false};
    bool ran = false;
    // Neither the name nor anything else needs memory on the new thread.
    const support::NoMemoryElsewhere no_memory;
    std::thread thread = ZEL::startThread([] { return ZEL::ThreadName("%s for Linux", "a name too long"); },
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

TEST(StartThread, ThrowsWhenThereIsNoThreadWhateverMemoryThereIs) {
    const support::NoThreads no_threads;
    int refused = 0;
    support::withEachAllocationFailing([&] {
        try {
            ZEL::startThread([] { return ZEL::ThreadName("none"); }, [] {});
            ADD_FAILURE() << "started";
        } catch (const std::system_error&) {
            ++refused;
        } catch (const std::bad_alloc&) {
        }
    });
    EXPECT_GT(refused, 0);
}

}  // namespace

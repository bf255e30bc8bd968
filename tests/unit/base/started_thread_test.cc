#include "base/started_thread.h"

#include <array>
#include <atomic>
#include <csignal>
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

TEST(StartThread, LeavesTheProcessesSignalsToItsMaker) {
    sigset_t makers;
    pthread_sigmask(SIG_SETMASK, nullptr, &makers);
    sigset_t threads;
    ZEL::startThread([] { return ZEL::ThreadName("signals"); },
                     [&] { pthread_sigmask(SIG_SETMASK, nullptr, &threads); })
        .join();
    for (const int signal :
         {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGALRM, SIGCHLD, SIGUSR1, SIGPROF, SIGRTMIN}) {
        EXPECT_EQ(sigismember(&threads, signal), 1) << signal;
    }
    EXPECT_EQ(sigismember(&threads, SIGSEGV) + sigismember(&threads, SIGABRT), 0);
    sigset_t after;
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    EXPECT_EQ(sigismember(&after, SIGTERM), sigismember(&makers, SIGTERM));
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

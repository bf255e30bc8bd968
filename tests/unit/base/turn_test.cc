#include "base/turn.h"

#include <array>
#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/threads.h"
#include "support/wait.h"

namespace {

using ZEL::Turn;

TEST(Turn, IsOneThreadsAtATime) {
    Turn turn;
    int sum = 0;  // the thread sanitizer watches
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 2000; ++n) {
                const Turn::Held outer(turn);
                const Turn::Held again(turn);  // on the way back to it
                ++sum;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(sum, 8000);
}

TEST(Turn, IsKeptUntilTheFirstHoldEnds) {
    Turn turn;
    std::atomic<bool> left{false};
    std::atomic<pid_t> other{0};
    std::thread waiting;
    {
        const Turn::Held outer(turn);
        { const Turn::Held again(turn); }
        waiting = std::thread([&] {
            other = gettid();
            const Turn::Held held(turn);
            EXPECT_TRUE(left);
        });
        while (other == 0) {
            std::this_thread::yield();
        }
        support::waitUntilItWaits(other);
        left = true;
    }
    waiting.join();
}

TEST(Turn, WhatAThreadOnceWaitedForMakesNoCircle) {
    Turn first;
    Turn second;
    std::atomic<bool> left{false};
    std::atomic<pid_t> other{0};
    std::atomic<bool> has_second{false};
    const pid_t self = gettid();
    std::thread thread;
    {
        const Turn::Held held(first);
        thread = std::thread([&] {
            other = gettid();
            { const Turn::Held waited(first); }
            const Turn::Held own(second);
            has_second = true;
            support::waitUntilItWaits(self);
            left = true;
        });
        while (other == 0) {
            std::this_thread::yield();
        }
        support::waitUntilItWaits(other);
    }
    while (!has_second) {
        std::this_thread::yield();
    }
    const Turn::Held held(first);
    const Turn::Held wanted(second);
    EXPECT_TRUE(left);
    thread.join();
}

TEST(Turn, IsNotWaitedForInACircle) {
    constexpr size_t kThreads = 3;
    std::array<Turn, kThreads> turns;
    support::Count has_own;
    int went_on = 0;  // one at a time: the others of the circle wait
    std::vector<std::thread> threads;
    for (size_t i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            const Turn::Held own(turns[i]);
            has_own.add();
            ASSERT_TRUE(has_own.waitFor(kThreads));
            const Turn::Held next(turns[(i + 1) % kThreads]);
            ++went_on;
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(went_on, 3);
}

}  // namespace

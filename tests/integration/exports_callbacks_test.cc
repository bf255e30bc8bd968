// Callbacks that take their time, call back, throw, or come from a thread that is not expected.
#include <zel/zel.h>

#include <array>
#include <atomic>
#include <functional>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "support/allocations.h"
#include "support/fast_timers.h"
#include "support/frames.h"
#include "support/log_capture.h"
#include "support/no_threads.h"
#include "support/recording_host.h"
#include "support/threads.h"
#include "support/wait.h"

namespace {

using support::Count;
using support::RecordingHost;

constexpr const char* kTimer = "zel_timer_threa";

/// What the heartbeat callback of a stream does; there is no user data.
std::array<std::function<void()>, 2> on_heartbeat;

std::function<void()> onlyOnce(std::function<void()> call) {
    return [first = std::make_shared<std::atomic<bool>>(true), call = std::move(call)] {
        if (first->exchange(false)) {
            call();
        }
    };
}

ZELHandle* open(uint32_t interval) {
    ZELHandle* const handle = init_handle_with_interval(interval);
    set_heart_beat_timer_switch_listener(handle, [] { return true; });
    set_heart_beat_callback(handle, [](ReportMap*) { on_heartbeat[0](); });
    return handle;
}

void feedOne(ZELHandle* handle) {
    const std::vector<uint8_t> frame = support::flatFrame(16, 16, support::kMidGrey);
    EXPECT_TRUE(feed_video_frame(handle, frame.data(), 16, 16, 0));
}

class ExportsCallbacks : public testing::Test {
  protected:
    ExportsCallbacks() {
        host_.reset();
        on_heartbeat = {[] {}, [] {}};
    }

    /// The heartbeats and the final report of one stream in the order in which they were uploaded, by number.
    static std::vector<std::string> order(const std::vector<RecordingHost::Event>& events) {
        std::vector<std::string> numbers;
        for (const auto& event : events) {
            const auto number = event.fields.find("zel_heartbeat_seq");
            numbers.push_back(number != event.fields.end() ? number->second : "final");
        }
        return numbers;
    }

    /// Timers of this test: those of released streams that nobody has stopped go on.
    bool waitForTimers(int count) const { return support::waitForThreads(kTimer, timers_before_ + count); }

    RecordingHost& host_ = RecordingHost::get();
    const int timers_before_ = support::threadsNamed(kTimer);
};

/// Runs `call` on a thread of its own while a heartbeat's callback is in progress, and lets the callback end
/// when `call` waits or is done.
void callDuringAHeartbeat(ZELHandle* handle, const std::function<void()>& call) {
    Count entered;
    std::atomic<pid_t> caller{0};
    on_heartbeat[0] = onlyOnce([&] {
        entered.add();
        while (caller == 0) {
            std::this_thread::yield();
        }
        support::waitUntilItWaits(caller);
    });
    start_zel_session(handle);
    ASSERT_TRUE(entered.waitFor(1));
    std::thread thread([&] {
        caller = gettid();
        call();
    });
    thread.join();
}

TEST_F(ExportsCallbacks, AStopWaitsForTheHeartbeatThatIsUnderWay) {
    ZELHandle* const handle = open(1);
    size_t at_the_end = 0;
    callDuringAHeartbeat(handle, [&] {
        stop_zel_session(handle);
        at_the_end = host_.events().size();
    });
    release_handle(handle);
    EXPECT_EQ(order(host_.events()), (std::vector<std::string>{"0", "1", "final"}));
    EXPECT_EQ(at_the_end, 3U);
}

TEST_F(ExportsCallbacks, AReleaseWaitsForTheHeartbeatThatIsUnderWay) {
    const support::FastTimers timers;
    ZELHandle* const handle = open(1);
    size_t at_the_end = 0;
    callDuringAHeartbeat(handle, [&] {
        release_handle(handle);
        at_the_end = host_.events().size();
    });
    EXPECT_GE(at_the_end, 1U);
    const support::LogCapture log;
    EXPECT_TRUE(log.waitFor(" sessionpc is has released \n"));  // the timer goes on
    EXPECT_EQ(host_.events().size(), at_the_end);
}

TEST_F(ExportsCallbacks, AStreamMayBeStoppedAndReleasedInItsHeartbeat) {
    const support::FastTimers timers;
    static ZELHandle* handle;
    for (const bool ending_heartbeat : {true, false}) {
        host_.reset();
        host_.setSwitch("DisableEndingTimer", !ending_heartbeat);
        handle = open(1);
        Count done;
        on_heartbeat[0] = onlyOnce([&] {
            stop_zel_session(handle);
            release_handle(handle);
            done.add();
        });
        feedOne(handle);
        start_zel_session(handle);
        ASSERT_TRUE(done.waitFor(1));
        ASSERT_TRUE(waitForTimers(0));
        // What the heartbeat had found comes before what the stop sends, and only once.
        EXPECT_EQ(order(host_.events()), ending_heartbeat ? (std::vector<std::string>{"0", "1", "final"})
                                                          : (std::vector<std::string>{"0", "final"}));
        EXPECT_EQ(host_.events().at(0).fields.at("zel_vframes"), "1");
    }
}

TEST_F(ExportsCallbacks, StreamsMayStopEachOtherInTheirHeartbeats) {
    static std::array<ZELHandle*, 2> handles;
    handles = {open(1), open(1)};
    set_heart_beat_callback(handles[1], [](ReportMap*) { on_heartbeat[1](); });
    Count entered;
    Count done;
    for (size_t i = 0; i < 2; ++i) {
        on_heartbeat[i] = onlyOnce([&, i] {
            entered.add();
            ASSERT_TRUE(entered.waitFor(2));
            stop_zel_session(handles[1 - i]);
            done.add();
        });
    }
    start_zel_session(handles[0]);
    start_zel_session(handles[1]);
    EXPECT_TRUE(done.waitFor(2));
    release_handle(handles[0]);
    release_handle(handles[1]);
    EXPECT_TRUE(waitForTimers(0));
    EXPECT_EQ(host_.events().size(), 2U * 3U);
}

TEST_F(ExportsCallbacks, WhatACallbackThrowsGoesNoFurther) {
    const support::LogCapture log;
    static bool allow;
    ZELHandle* const handle = open(3600);
    set_heart_beat_timer_switch_listener(handle, [] { return allow ? allow : throw 7; });
    on_heartbeat[0] = [] { throw 7; };
    host_.startThrowing();
    const uint8_t sample[2] = {};
    for (const bool allowed : {false, true}) {
        allow = allowed;
        EXPECT_FALSE(start_zel_session(handle));
        feedOne(handle);
        EXPECT_TRUE(feed_audio_frame(handle, sample, 1, 2, 48000, 1, 0));  // as with no callback
        stop_zel_session(handle);
        EXPECT_TRUE(support::waitForThreads("ZELSession-" + std::to_string(gettid()), 0));
    }
    set_heart_beat_detail_callback(handle, [](ReportMap* extra, ReportMap*) {
        (*extra)["added"] = "before";
        throw std::runtime_error("the host cannot");
    });
    start_zel_session(handle);
    stop_zel_session(handle);
    EXPECT_EQ(order(host_.events()), (std::vector<std::string>{"final", "0", "final", "1", "final"}));
    EXPECT_EQ(host_.events().at(3).fields.at("added"), "before");
    release_handle(handle);
    for (const char* callback : {"boolean switch", "integer switch", "upload"}) {
        EXPECT_GT(log.count(std::string("ZEL: WARN: the ") + callback + " callback threw: the host cannot\n"),
                  0U);
    }
    EXPECT_EQ(log.count("ZEL: WARN: the timer switch callback threw\n"), 1U);
    EXPECT_EQ(log.count("ZEL: WARN: the heartbeat callback threw\n"), 1U);
}

TEST_F(ExportsCallbacks, AStreamThatDoesNotStartHasNoTimerAndStartsLater) {
    ZELHandle* const handle = open(3600);
    const support::LogCapture log;
    {
        const support::NoThreads no_threads;
        EXPECT_THROW(start_zel_session(handle), std::system_error);
    }
    int failed = 0;
    support::withEachAllocationFailing([&] {
        try {
            start_zel_session(handle);
        } catch (const std::bad_alloc&) {
            ++failed;
            EXPECT_TRUE(waitForTimers(0));
        }
    });
    EXPECT_GT(failed, 0);
    EXPECT_TRUE(waitForTimers(1));
    stop_zel_session(handle);
    release_handle(handle);
}

TEST_F(ExportsCallbacks, OfTwoStartsAtOnceOneTimerRemainsAndEndsWithTheStop) {
    static ZELHandle* handle;
    static bool nested;
    nested = false;
    handle = open(3600);
    set_heart_beat_timer_switch_listener(handle, [] {
        if (!std::exchange(nested, true)) {
            start_zel_session(handle);  // between the other start's end of old timers and its new one
        }
        return true;
    });
    start_zel_session(handle);
    EXPECT_TRUE(waitForTimers(1));
    stop_zel_session(handle);
    EXPECT_TRUE(waitForTimers(0));  // at once, not after an hour
    release_handle(handle);
}

TEST_F(ExportsCallbacks, AForkedChildIsRefusedWhatItsParentOpened) {
    ZELHandle* const handle = open(3600);
    start_zel_session(handle);
    const uint8_t sample[6] = {};
    const pid_t child = fork();
    if (child == 0) {
        alarm(60);  // ends a child that hangs
        const bool refused = !feed_video_frame(handle, sample, 2, 2, 0) &&
                             !feed_audio_frame(handle, sample, 1, 2, 48000, 1, 0) &&
                             !start_zel_session(handle) && get_session_id(handle) == ~uint64_t{0};
        set_heart_beat_callback(handle, nullptr);
        set_heart_beat_detail_callback(handle, nullptr);
        set_heart_beat_timer_switch_listener(handle, nullptr);
        set_user_state_dir(handle, {});
        stop_zel_session(handle);
        release_handle(handle);
        _exit(refused ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    feedOne(handle);  // still the parent's
    stop_zel_session(handle);
    release_handle(handle);
    EXPECT_EQ(host_.events().size(), 2U);
}

}  // namespace

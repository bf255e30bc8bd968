#include "pc/timer_pc.h"

#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "support/log_capture.h"
#include "support/wait.h"

namespace {

using Mode = ZELPCTimer::Mode;

TEST(TimerPc, TicksUntilStopped) {
    support::Count ticks;
    const auto running = std::make_shared<ZELPCTimer::RunningFlag>();
    // A period below 1 does not sleep.
    ZELPCTimer(
        0, Mode::kJoined,
        [&] {
            ticks.add();
            if (ticks.value() == 3) {
                running->clear();
            }
        },
        running);
    EXPECT_EQ(ticks.value(), 3);
}

TEST(TimerPc, LeavesOutATickThatThrows) {
    const support::LogCapture log;
    int ticks = 0;
    const auto running = std::make_shared<ZELPCTimer::RunningFlag>();
    const ZELPCTimer timer(
        0, Mode::kJoined,
        [&] {
            if (++ticks == 1) {
                throw std::runtime_error("no memory");
            }
            if (ticks == 2) {
                throw 2;
            }
            running->clear();
        },
        running);
    EXPECT_EQ(ticks, 3);
    EXPECT_EQ(log.messages(), (std::vector<std::string>{"WARN: a heartbeat failed: no memory\n",
                                                        "WARN: a heartbeat failed\n"}));
}

/// Ends a test's wait when the timer's thread lets go of its task.
class ThreadEnd {
  public:
    explicit ThreadEnd(support::Count& ended) : ended_(ended) {}
    ~ThreadEnd() { ended_.add(); }

  private:
    support::Count& ended_;
};

TEST(TimerPc, EndsAtOnceHoweverLongThePeriod) {
    support::Count ended;
    auto end = std::make_shared<ThreadEnd>(ended);
    ZELPCTimer timer(1'000'000, Mode::kDetached, [end] { FAIL() << "ticked"; });
    end.reset();
    timer.stop();
    EXPECT_TRUE(ended.waitFor(1));
}

TEST(TimerPc, OutlivesItsObjectUntilTheFlagIsCleared) {
    support::Count ended;
    support::Count ticks;
    const auto running = std::make_shared<ZELPCTimer::RunningFlag>();
    {
        auto end = std::make_shared<ThreadEnd>(ended);
        ZELPCTimer(
            0, Mode::kDetached,
            [end, &ticks] {
                ticks.add();
                std::this_thread::yield();
            },
            running);
    }
    EXPECT_TRUE(ticks.waitFor(2));
    EXPECT_EQ(ended.value(), 0);
    running->clear();
    EXPECT_TRUE(ended.waitFor(1));
}

}  // namespace

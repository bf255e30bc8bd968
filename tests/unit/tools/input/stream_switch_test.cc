#include "input/stream_switch.h"

#include <gtest/gtest.h>

namespace {

using zel_monitor::PacketHandle;
using zel_monitor::StreamSwitch;

constexpr int kFirst = 0;
constexpr int kSecond = 1;
constexpr int kThird = 2;

PacketHandle packetOf(int stream, int64_t place) {
    PacketHandle packet(av_packet_alloc());
    packet->stream_index = stream;
    packet->pos = place;
    return packet;
}

/// A switch whose chosen stream is fed packets a second apart, laid down one after another.
class StreamSwitchTest : public testing::Test {
  protected:
    void chosen(double from_s, double to_s) { run(-1, from_s, to_s); }
    void other(int stream, double from_s, double to_s) { run(stream, from_s, to_s); }
    /// Both by turns, in packets of a second.
    void sideBySide(int stream, double from_s, double to_s) {
        for (double time_s = from_s; time_s < to_s; ++time_s) {
            chosen(time_s, time_s + 1);
            other(stream, time_s, time_s + 1);
        }
    }

    StreamSwitch switch_;

  private:
    void run(int stream, double from_s, double to_s) {
        for (double time_s = from_s; time_s < to_s; ++time_s, place_ += 1000) {
            if (stream < 0) {
                switch_.goesOn(*packetOf(kFirst, place_), time_s);
            } else {
                switch_.runs(*packetOf(stream, place_), time_s);
            }
        }
    }

    int64_t place_ = 0;
};

TEST_F(StreamSwitchTest, TakesAStreamForTheSuccessorThatRunsOnAlone) {
    chosen(0, 10);
    other(kSecond, 10, 14);
    EXPECT_TRUE(switch_.isUndecided());
    EXPECT_EQ(switch_.successor(false), std::nullopt) << "the chosen one may come back";
    EXPECT_EQ(switch_.successor(true), kSecond);
    other(kSecond, 14, 15);
    ASSERT_EQ(switch_.successor(false), kSecond);
    EXPECT_EQ(switch_.choose(kSecond, kFirst).size(), 5U) << "nothing of it is lost";
    EXPECT_FALSE(switch_.isUndecided());
    EXPECT_FALSE(switch_.missedAny());
}

TEST_F(StreamSwitchTest, FollowsToWhereTheClockBeginsAgainAndBack) {
    chosen(1000, 1010);
    other(kSecond, 0, 6);
    ASSERT_EQ(switch_.successor(false), kSecond);
    switch_.choose(kSecond, kFirst);
    chosen(6, 10);
    other(kFirst, 1000, 1006);
    EXPECT_EQ(switch_.successor(false), kFirst);
}

TEST_F(StreamSwitchTest, LeavesAStreamAloneThatRunsBesideTheChosenOne) {
    sideBySide(kSecond, 0, 10);
    other(kSecond, 10, 30);
    EXPECT_FALSE(switch_.isUndecided());
    EXPECT_EQ(switch_.successor(true), std::nullopt) << "it is another track, and longer";

    chosen(10, 20);
    other(kThird, 16, 19);  // laid down a little late, but due while the chosen one was
    EXPECT_EQ(switch_.successor(true), std::nullopt);
}

TEST_F(StreamSwitchTest, TellsAStreamThatHadItsSayBeforeTheChosenOneBegan) {
    other(kSecond, 0, 5);
    chosen(5, 10);
    EXPECT_TRUE(switch_.missedAny());
    other(kThird, 10, 16);
    ASSERT_EQ(switch_.successor(false), kThird);
    switch_.choose(kThird, kFirst);
    EXPECT_TRUE(switch_.missedAny()) << "a change does not make up for it";
}

TEST_F(StreamSwitchTest, MissesNoStreamThatBeganEarlierAndStillRuns) {
    other(kSecond, 0, 5);
    sideBySide(kSecond, 5, 10);
    EXPECT_FALSE(switch_.missedAny());
}

TEST_F(StreamSwitchTest, KeepsNoMoreThanABoundOfPacketsWithoutTimes) {
    chosen(0, 1);
    for (int i = 0; i < 499; ++i) {
        switch_.runs(*packetOf(kSecond, 2000 + i), std::nullopt);
    }
    EXPECT_EQ(switch_.successor(false), std::nullopt);
    switch_.runs(*packetOf(kSecond, 2499), std::nullopt);
    EXPECT_EQ(switch_.successor(false), kSecond);
}

}  // namespace

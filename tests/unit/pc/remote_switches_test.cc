#include "pc/remote_switches.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using ZEL::RemoteSwitches;

TEST(RemoteSwitches, AreOffAndMinusOneUntilSomebodyIsRegistered) {
    const RemoteSwitches switches;
    EXPECT_FALSE(switches.readBool("EnableAudioAlgo"));
    EXPECT_EQ(switches.readInt("ExtraInitialHeartBeatInterval"), -1);
}

TEST(RemoteSwitches, AskTheFirstOneRegisteredEveryTime) {
    static int answer;
    answer = 0;
    RemoteSwitches switches;
    switches.registerBool(nullptr);
    switches.registerBool([](const char* key) { return std::string(key) == "on"; });
    switches.registerBool([](const char*) { return true; });
    switches.registerInt([](const char*) { return ++answer; });
    switches.registerInt([](const char*) { return 100; });
    EXPECT_TRUE(switches.readBool("on"));
    EXPECT_FALSE(switches.readBool("off"));
    EXPECT_EQ(switches.readInt("any"), 1);
    EXPECT_EQ(switches.readInt("any"), 2);
}

}  // namespace

#include "algo/mix_down.h"

#include <gtest/gtest.h>

namespace {

using ZELAlgo::mixedDown;
using Samples = std::vector<int16_t>;

Samples mixed(const Samples& interleaved, uint32_t channels) {
    Samples buffer;
    const size_t samples = interleaved.size() / channels;
    const int16_t* const result = mixedDown(interleaved.data(), samples, channels, buffer);
    return {result, result + samples};
}

TEST(MixDown, HandsASingleChannelOnWithoutACopy) {
    const Samples mono{1, -2, 3};
    Samples buffer;
    EXPECT_EQ(mixedDown(mono.data(), mono.size(), 1, buffer), mono.data());
    EXPECT_TRUE(buffer.empty());
}

TEST(MixDown, TruncatesTheMeanTowardZero) {
    EXPECT_EQ(mixed({3, 4, -3, -4, 0, 1, 0, -1}, 2), (Samples{3, -3, 0, 0}));
    EXPECT_EQ(mixed({1, 1, 3, -1, -1, -3, 0, 0, 2}, 3), (Samples{1, -1, 0}));
    EXPECT_EQ(mixed({1, 2, 3, 4, 5, 6, -1, -2, -3, -4, -5, -6}, 6), (Samples{3, -3}));
}

TEST(MixDown, DoesNotOverflow) {
    for (const uint32_t channels : {2U, 3U, 6U, 8U, 70'000U}) {
        EXPECT_EQ(mixed(Samples(channels, INT16_MIN), channels), Samples{INT16_MIN}) << channels;
        EXPECT_EQ(mixed(Samples(channels, INT16_MAX), channels), Samples{INT16_MAX}) << channels;
    }
}

TEST(MixDown, MakesAPhaseInvertedPairSilent) {
    EXPECT_EQ(mixed({900, -900, -7, 7}, 2), (Samples{0, 0}));
}

TEST(MixDown, KeepsItsBufferFromFrameToFrame) {
    const Samples longer(960, 5);
    Samples buffer;
    const int16_t* const first = mixedDown(longer.data(), 480, 2, buffer);
    EXPECT_EQ(mixedDown(longer.data(), 1, 2, buffer), first);
    EXPECT_EQ(mixedDown(longer.data(), 480, 2, buffer), first);
}

}  // namespace

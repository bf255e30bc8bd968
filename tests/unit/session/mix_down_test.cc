#include "session/mix_down.h"

#include <algorithm>
#include <memory>
#include <utility>

#include <gtest/gtest.h>

namespace {

using ZEL::AudioFrame;
using ZEL::mixedDown;
using Samples = std::vector<int16_t>;

AudioFrame frame(const Samples& interleaved, int32_t channels) {
    auto data = std::make_unique<int16_t[]>(interleaved.size());
    std::copy(interleaved.begin(), interleaved.end(), data.get());
    return {0, std::move(data), static_cast<uint32_t>(interleaved.size() / static_cast<size_t>(channels)),
            48000, channels};
}

Samples mixed(const Samples& interleaved, int32_t channels) {
    Samples buffer;
    const AudioFrame sound = frame(interleaved, channels);
    const int16_t* const result = mixedDown(sound, buffer);
    return {result, result + sound.samples};
}

TEST(MixDown, HandsASingleChannelOnWithoutACopy) {
    const AudioFrame mono = frame({1, -2, 3}, 1);
    Samples buffer;
    EXPECT_EQ(mixedDown(mono, buffer), mono.data.get());
    EXPECT_TRUE(buffer.empty());
}

TEST(MixDown, TruncatesTheMeanTowardZero) {
    EXPECT_EQ(mixed({3, 4, -3, -4, 0, 1, 0, -1}, 2), (Samples{3, -3, 0, 0}));
    EXPECT_EQ(mixed({1, 1, 3, -1, -1, -3, 0, 0, 2}, 3), (Samples{1, -1, 0}));
}

TEST(MixDown, DoesNotOverflow) {
    for (const int32_t channels : {2, 3, 8, 70'000}) {
        const auto count = static_cast<size_t>(channels);
        EXPECT_EQ(mixed(Samples(count, INT16_MIN), channels), Samples{INT16_MIN}) << channels;
        EXPECT_EQ(mixed(Samples(count, INT16_MAX), channels), Samples{INT16_MAX}) << channels;
    }
}

TEST(MixDown, MakesAPhaseInvertedPairSilent) {
    EXPECT_EQ(mixed({900, -900, -7, 7}, 2), (Samples{0, 0}));
}

TEST(MixDown, KeepsItsBufferFromFrameToFrame) {
    const AudioFrame longer = frame(Samples(960, 5), 2);
    const AudioFrame shorter = frame(Samples(2, 5), 2);
    Samples buffer;
    const int16_t* const first = mixedDown(longer, buffer);
    EXPECT_EQ(mixedDown(shorter, buffer), first);
    EXPECT_EQ(mixedDown(longer, buffer), first);
}

}  // namespace

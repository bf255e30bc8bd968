#include "algo/audio/sample_ring.h"

#include <numeric>
#include <vector>

#include <gtest/gtest.h>

namespace {

using ZELAlgo::SampleRing;

/// `count` samples that count up from `first`.
std::vector<int16_t> ramp(int16_t first, size_t count) {
    std::vector<int16_t> samples(count);
    std::iota(samples.begin(), samples.end(), first);
    return samples;
}

std::vector<int16_t> take(SampleRing& ring, size_t count) {
    std::vector<int16_t> samples(count);
    ring.read(samples.data(), count);
    return samples;
}

/// An empty ring whose next sample goes to `place`.
SampleRing ringAt(size_t place) {
    SampleRing ring;
    ring.write(ramp(0, place).data(), place);
    take(ring, place);
    return ring;
}

TEST(SampleRing, GivesBackInOrderAndInTwoPiecesAroundTheEnd) {
    for (const size_t place : {size_t{0}, size_t{23'990}, size_t{23'999}}) {
        SampleRing ring = ringAt(place);
        ASSERT_TRUE(ring.write(ramp(1, 20).data(), 20));
        EXPECT_EQ(ring.available(), 20U);
        EXPECT_EQ(ring.freeSpace(), SampleRing::kCapacity - 20);
        EXPECT_EQ(take(ring, 3), ramp(1, 3)) << place;
        EXPECT_EQ(take(ring, 17), ramp(4, 17)) << place;
        EXPECT_EQ(ring.available(), 0U);
    }
}

TEST(SampleRing, RefusesOneSampleTooManyAndKeepsWhatItHas) {
    for (const size_t place : {size_t{0}, size_t{15'000}}) {
        SampleRing ring = ringAt(place);
        const auto most = ramp(0, SampleRing::kCapacity - 1);
        ASSERT_TRUE(ring.write(most.data(), most.size()));
        EXPECT_FALSE(ring.write(ramp(0, 2).data(), 2));
        EXPECT_EQ(ring.available(), most.size());
        EXPECT_EQ(take(ring, most.size()), most);
    }
}

TEST(SampleRing, ReadsAsEmptyWhenFilledToTheLastPlace) {
    for (const size_t place : {size_t{0}, size_t{15'000}}) {
        SampleRing ring = ringAt(place);
        ASSERT_TRUE(ring.write(ramp(0, 23'000).data(), 23'000));
        ASSERT_TRUE(ring.write(ramp(0, 1000).data(), 1000));
        EXPECT_EQ(ring.available(), 0U);
        EXPECT_EQ(ring.freeSpace(), SampleRing::kCapacity);
    }
}

}  // namespace

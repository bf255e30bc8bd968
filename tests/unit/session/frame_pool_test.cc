#include "session/frame_pool.h"

#include <zel/session/frames.h>

#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using ZEL::FramePool;

TEST(FramePool, ABufferGoesRoundWithItsFrames) {
    const auto pool = std::make_shared<FramePool>(2);
    constexpr int32_t kWidth = 64;
    constexpr int32_t kHeight = 48;
    const uint8_t* first = nullptr;
    for (int round = 0; round < 3; ++round) {
        auto buffer = pool->take(ZEL::i420Bytes(kWidth, kHeight));
        if (round == 0) {
            first = buffer.get();
        }
        EXPECT_EQ(buffer.get(), first);
        const ZEL::VideoFrame frame(2, std::move(buffer), kWidth, kHeight, pool);
        EXPECT_EQ(pool->kept(), 0U);
    }
    EXPECT_EQ(pool->kept(), 1U);
}

TEST(FramePool, KeepsNoMoreThanItsBoundAndOnlyTheLatestSize) {
    FramePool pool(2);
    std::vector<std::unique_ptr<uint8_t[]>> small;
    for (int i = 0; i < 3; ++i) {
        small.push_back(pool.take(100));
    }
    for (auto& buffer : small) {
        pool.giveBack(std::move(buffer), 100);
    }
    EXPECT_EQ(pool.kept(), 2U);
    auto large = pool.take(200);
    EXPECT_EQ(pool.kept(), 0U);
    pool.giveBack(std::make_unique<uint8_t[]>(100), 100);  // a straggler of the old size
    EXPECT_EQ(pool.kept(), 0U);
    pool.giveBack(std::move(large), 200);
    EXPECT_EQ(pool.kept(), 1U);
}

TEST(FramePool, OutlivesItsSessionAsLongAsAFrameDoes) {
    auto pool = std::make_shared<FramePool>(2);
    auto buffer = pool->take(ZEL::i420Bytes(2, 2));
    auto frame = std::make_shared<ZEL::VideoFrame>(2, std::move(buffer), 2, 2, pool);
    const std::weak_ptr<FramePool> watch = pool;
    pool.reset();
    EXPECT_FALSE(watch.expired());
    frame.reset();
    EXPECT_TRUE(watch.expired());
}

}  // namespace

#include "session/task_queue.h"

#include <thread>

#include <gtest/gtest.h>

#include "support/frames.h"
#include "support/wait.h"

namespace {

using ZEL::TaskQueue;
using ZEL::ZELTask;

/// Tasks that can be told apart: a video frame's width, an audio frame's length.
ZELTask video(int32_t id) {
    return {support::flatVideoFrame(id, 2, 0)};
}
ZELTask audio(uint32_t id) {
    return {support::silentAudioFrame(id)};
}
int32_t videoId(const ZELTask& task) {
    return std::get<std::shared_ptr<ZEL::VideoFrame>>(task.frame)->width;
}
uint32_t audioId(const ZELTask& task) {
    return std::get<std::shared_ptr<ZEL::AudioFrame>>(task.frame)->samples;
}

TEST(TaskQueue, DropsTheOldestVideoFrameWhenTheEleventhArrives) {
    TaskQueue queue;
    for (int32_t id = 1; id <= 10; ++id) {
        EXPECT_FALSE(queue.pushDropOldest(video(id)));
    }
    EXPECT_EQ(videoId(queue.pushDropOldest(video(11)).value()), 1);
    EXPECT_EQ(videoId(queue.pushDropOldest(video(12)).value()), 2);
    queue.open();
    for (int32_t id = 3; id <= 12; ++id) {
        const auto round = queue.waitForRound();
        ASSERT_TRUE(round && round->shared);
        EXPECT_EQ(videoId(*round->shared), id);
        EXPECT_FALSE(round->audio_waits);
    }
    EXPECT_EQ(queue.sizes().shared, 0U);
}

TEST(TaskQueue, BoundsAudioAtFiftyOrWithTheVideo) {
    TaskQueue queue;
    for (uint32_t id = 1; id <= 51; ++id) {
        EXPECT_EQ(queue.pushDropOldest(audio(id)).has_value(), id == 51);
    }
    EXPECT_EQ(queue.sizes().audio, 50U);

    TaskQueue shared;
    shared.setSeparateAudio(false);
    for (uint32_t id = 1; id <= 11; ++id) {
        EXPECT_EQ(shared.pushDropOldest(audio(id)).has_value(), id == 11);
    }
    EXPECT_EQ(shared.sizes().shared, 10U);
    EXPECT_EQ(shared.sizes().audio, 0U);
}

TEST(TaskQueue, GivesAVideoAndThenAnAudioFrameInEachRound) {
    TaskQueue queue;
    queue.open();
    queue.pushDropOldest(video(1));
    queue.pushDropOldest(video(2));
    queue.pushDropOldest(audio(1));
    queue.pushDropOldest(audio(2));
    queue.pushDropOldest(audio(3));
    for (int32_t id = 1; id <= 2; ++id) {
        const auto round = queue.waitForRound();
        ASSERT_TRUE(round && round->shared && round->audio_waits);
        EXPECT_EQ(videoId(*round->shared), id);
        EXPECT_EQ(audioId(queue.takeAudio()), static_cast<uint32_t>(id));
    }
    const auto last = queue.waitForRound();
    ASSERT_TRUE(last && last->audio_waits);
    EXPECT_FALSE(last->shared);
    EXPECT_EQ(audioId(queue.takeAudio()), 3U);
}

TEST(TaskQueue, ClosingEndsAWaitAndKeepsTasks) {
    TaskQueue queue;
    queue.open();
    support::Count rounds;
    std::thread consumer([&] {
        while (queue.waitForRound()) {
            rounds.add();
        }
    });
    queue.pushDropOldest(video(1));
    EXPECT_TRUE(rounds.waitFor(1));  // woken by the push
    queue.close();                   // and by this, or the join would hang
    consumer.join();
    queue.pushDropOldest(video(2));
    EXPECT_FALSE(queue.waitForRound());
    EXPECT_EQ(queue.sizes().shared, 1U);
    queue.pushDropOldest(audio(3));
    EXPECT_EQ(videoId(queue.discardOne().value()), 2);
    EXPECT_EQ(audioId(queue.discardOne().value()), 3U);
    EXPECT_FALSE(queue.discardOne());
    EXPECT_EQ(queue.sizes().shared + queue.sizes().audio, 0U);
}

}  // namespace

// Everything at once, for the thread sanitizer: streams that are fed, stopped, started and released while
// their heartbeats tick, switches flip and callbacks are exchanged.
#include <zel/base/log.h>
#include <zel/zel.h>

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/frames.h"
#include "support/random.h"
#include "support/recording_host.h"

namespace {

constexpr int kStreams = 4;
constexpr int kLives = 3;

TEST(SessionsStress, FourStreamsFedStartedStoppedAndReleasedAtOnce) {
    ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
    auto& host = support::RecordingHost::get();
    host.reset();
    host.setNumber("ExtraInitialHeartBeatInterval", 1);
    std::atomic<bool> done{false};
    std::atomic<uint64_t> fed{0};

    const auto stream = [&](uint64_t seed) {
        support::Random random(seed);
        const auto width = static_cast<int32_t>(32 + 16 * seed);
        const std::vector<uint8_t> frame = support::flatFrame(width, 32, support::kVideoBlack);
        const std::vector<uint8_t> sound(960 * 2 * 2);
        for (int life = 0; life < kLives; ++life) {
            ZELHandle* const handle = init_handle_with_interval(1);
            set_heart_beat_timer_switch_listener(handle, [] { return true; });
            std::atomic<bool> alive{true};
            std::thread feeder([&] {
                for (int64_t index = 0; alive; ++index) {
                    fed += feed_video_frame(handle, frame.data(), width, 32, index) ? 1 : 0;
                    feed_audio_frame(handle, sound.data(), 960, 2, 48000, 2, index);
                    std::this_thread::yield();
                }
            });
            std::thread controller([&] {
                for (int turn = 0; turn < 6; ++turn) {
                    start_zel_session(handle);
                    set_heart_beat_callback(handle, [](ReportMap* extra) { (*extra)["host"] = "1"; });
                    set_user_state_dir(handle, {{"turn", std::to_string(turn)}});
                    if (random.below(2) == 0) {
                        stop_zel_session(handle);
                    }
                }
            });
            start_zel_session(handle);
            controller.join();
            start_zel_session(handle);
            EXPECT_TRUE(host.waitForEvents(host.events().size() + 1));
            if (life % 2 == 0) {
                stop_zel_session(handle);
            }
            alive = false;
            feeder.join();
            release_handle(handle);
        }
    };

    std::thread switches([&] {
        for (int turn = 0; !done; ++turn) {
            host.setSwitch("EnableAudioAlgo", turn % 2 == 0);
            host.setSwitch("DisableEndingTimer", turn % 3 == 0);
            host.setSwitch("DisableFixListenerCleaning", turn % 5 == 0);
            std::this_thread::yield();
        }
    });
    std::vector<std::thread> streams;
    for (uint64_t seed = 0; seed < kStreams; ++seed) {
        streams.emplace_back(stream, seed);
    }
    for (auto& thread : streams) {
        thread.join();
    }
    done = true;
    switches.join();
    ZEL::setLogSink(nullptr, nullptr);
    EXPECT_GT(fed.load(), 0U);
}

}  // namespace

// Every road of the library with every one of its requests for memory refused in turn: nothing may end the
// process, and what failed must work the next time.
#include <zel/algo/algo_facade.h>
#include <zel/base/log.h>
#include <zel/monitor/health_assessment.h>
#include <zel/monitor/manager.h>
#include <zel/zel.h>

#include <array>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/allocations.h"
#include "support/fft_failure.h"
#include "support/frames.h"
#include "support/no_threads.h"
#include "support/recording_host.h"

namespace {

using support::flatFrame;
using support::kMidGrey;

struct Releaser {
    void operator()(ZELHandle* handle) const {
        try {
            stop_zel_session(handle);
        } catch (const std::bad_alloc&) {  // for the reports; the stream is stopped all the same
        }
        release_handle(handle);
    }
};
using Handle = std::unique_ptr<ZELHandle, Releaser>;

Handle open() {
    Handle handle(init_handle_with_interval(3600));
    set_heart_beat_timer_switch_listener(handle.get(), [] { return true; });
    return handle;
}

bool feedVideo(const Handle& handle) {
    static const std::vector<uint8_t> frame = flatFrame(64, 48, kMidGrey);
    return feed_video_frame(handle.get(), frame.data(), 64, 48, 0);
}

bool feedAudio(const Handle& handle) {
    static const std::vector<uint8_t> samples(480 * 2 * 2);
    return feed_audio_frame(handle.get(), samples.data(), 480, 2, 48000, 2, 0);
}

void listen(ZEL::MessageCenter& center) {
    struct Owner : ZEL::CObject {};
    const auto owner = std::make_shared<Owner>();
    center.registerListener("a name that is no short string", owner, [](const auto&) {});
    center.publish(std::make_shared<ZEL::Message>("a name that is no short string", ReportMap{{"k", "v"}}));
    center.unregisterListener("a name that is no short string", owner);
}

/// A road throws std::bad_alloc or reports failure; otherwise it checks what it did.
struct Road {
    const char* name;
    void (*take)();
};

constexpr Road kRoads[] = {
    {"OpenAndRelease",
     [] {
         const Handle handle = open();
         set_user_state_dir(handle.get(), {{"a key that is no short string", "v"}});
     }},
    {"StartAndStop",
     [] {
         const Handle handle = open();
         start_zel_session(handle.get());
         stop_zel_session(handle.get());
         start_zel_session(handle.get());
     }},
    {"Heartbeat",
     [] {
         const Handle handle = open();
         set_heart_beat_detail_callback(handle.get(), [](ReportMap* extra, ReportMap* report) {
             (*extra)["frames that the host has counted"] = report->at("zel_vframes");
         });
         start_zel_session(handle.get());
         support::RecordingHost::get().reset();
         stop_zel_session(handle.get());
     }},
    {"Collect",
     [] {
         ZEL::ZELManager& manager = ZEL::ZELManager::getInstance();
         const auto session = std::make_shared<ZEL::ZELSession>(manager.getMessageCenter());
         manager.registerSession(session);
         const auto id = static_cast<uint64_t>(session->getSessionId());
         const std::map<std::string, int64_t> sums{{"a key that is no short string", 5}};
         const std::string key = "another key that is no short string";
         const std::array<float, 3> samples{1.0F, 2.0F, 3.0F};
         EXPECT_TRUE(zel_collect_accumulative_data_for_session_v2(id, &sums));
         EXPECT_TRUE(zel_collect_serial_data_for_session_v2(id, &key, samples.data(), samples.size()));
         ReportMap report;
         session->getHeartbeatInfo(report);
         EXPECT_EQ(report.at(sums.begin()->first), "5");
         EXPECT_EQ(report.at(key + "_cnt"), "3");
     }},
    {"Listeners", [] { listen(*ZEL::ZELManager::getInstance().getMessageCenter()); }},
    {"Manager",
     [] {
         ZEL::ZELManager manager;
         const auto collector = ZEL::ZELInfoCollector::create("ZELAccumulativeInfoCollector");
         EXPECT_TRUE(manager.registerCollector(1, collector));
         EXPECT_TRUE(manager.aliasCollector(2, 1));
         const std::map<std::string, int64_t> sums{{"a key that is no short string", 5}};
         manager.collectAccumulativeDataByKey(2, &sums);
         EXPECT_EQ(collector->collect().size(), 1U);
         manager.purgeCollectors();
         listen(*manager.getMessageCenter());
     }},
    {"PlayerReports",
     [] {
         ZEL::ZELPlayerDataMonitor monitor;
         monitor.reportPeriodic(1, {{"recv_bytes", "1000"}, {"zel_time_interval", "1"}});
         monitor.reportPlaybackEnd(1, {{"error_code", "-110"}, {"first_frame_rendering_time", "12"}});
         EXPECT_EQ(ZEL::ZELHA::getInstance().evaluate("PlayerErrorRate").at("count"), "2");
     }},
    {"Session",
     [] {
         const auto session =
             std::make_shared<ZEL::ZELSession>(ZEL::ZELManager::getInstance().getMessageCenter());
         try {
             session->registerMessageListeners();
         } catch (const std::bad_alloc&) {
             EXPECT_EQ(session.use_count(), 1);  // half a subscription would keep it alive
             throw;
         }
         session->unregisterMessageListeners();
         session->addCollector("ZELSerialStatisticsInfoCollector");
         session->start();
         EXPECT_EQ(session->getAccumulativeInfo().at("zel_vframes"), "0");
     }},
    {"Log", [] { EXPECT_EQ(ZEL::ZELManager::getInstance().start(), true); }},
};

class NoMemory : public testing::TestWithParam<Road> {
  protected:
    NoMemory() {
        ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
        support::RecordingHost::get().reset();
    }
    ~NoMemory() override { ZEL::setLogSink(nullptr, nullptr); }
};

TEST_P(NoMemory, FailsWhereItMustAndWorksTheNextTime) {
    support::withEachAllocationFailing([] {
        try {
            GetParam().take();
        } catch (const std::bad_alloc&) {
        }
    });
    GetParam().take();
}

INSTANTIATE_TEST_SUITE_P(, NoMemory, testing::ValuesIn(kRoads),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_F(NoMemory, CountsWhatWasTakenInAndNothingElse) {
    support::RecordingHost::get().setSwitch("EnableAudioAlgo", true);
    const Handle handle = open();
    int video = 0;
    int audio = 0;
    support::withEachAllocationFailing([&] {
        try {
            video += feedVideo(handle) ? 1 : 0;
            audio += feedAudio(handle) ? 1 : 0;
        } catch (const std::bad_alloc&) {
        }
    });
    stop_zel_session(handle.get());
    const ReportMap report = support::RecordingHost::get().events().back().fields;
    EXPECT_EQ(report.at("zel_vframes"), std::to_string(video));
    EXPECT_EQ(report.at("zel_aframes"), std::to_string(audio));
}

TEST_F(NoMemory, OrThreadsIsAnErrorToWhoeverNeedsThem) {
    ZEL::ZELManager& manager = ZEL::ZELManager::getInstance();
    const auto session = std::make_shared<ZEL::ZELSession>(manager.getMessageCenter());
    {
        const support::NoThreads no_threads;
        EXPECT_THROW(ZEL::MessageCenter(), std::system_error);
        EXPECT_THROW(ZEL::ZELManager(), std::system_error);
        EXPECT_THROW(session->start(), std::system_error);
    }
    EXPECT_TRUE(session->start());
    session->stop();
}

// ---- the detectors, when a stream changes its size and when it begins ----

ZELAlgo::ZELVideoResult examine(ZELAlgo::AlgoFacade& facade, uint32_t width, uint32_t height, uint8_t luma) {
    const std::vector<uint8_t> frame =
        flatFrame(static_cast<int32_t>(width), static_cast<int32_t>(height), luma);
    ZELAlgo::ZELVideoResult result{};
    EXPECT_TRUE(facade.detectVideo({width, height, 0, frame.data()}, result));
    return result;
}

TEST_F(NoMemory, ForANewFrameSizeIsAskedForAgainWithTheNextFrame) {
    size_t refused = 0;
    for (size_t nth = 0;; ++nth) {
        ZELAlgo::AlgoFacade facade;
        examine(facade, 64, 48, kMidGrey);
        const std::vector<uint8_t> larger = flatFrame(128, 96, support::kVideoBlack);
        ZELAlgo::ZELVideoResult result{};
        bool happened = false;
        {
            const support::FailingNew fail(nth);
            EXPECT_TRUE(facade.detectVideo({128, 96, 0, larger.data()}, result));
            happened = fail.happened();
        }
        EXPECT_EQ(result.screen_type, 1U) << nth;  // what needs no memory is found all the same
        EXPECT_EQ(examine(facade, 128, 96, support::kVideoBlack).screen_type, 1U) << nth;
        // With the next frame all detectors have what they need: no request is left.
        const std::vector<uint8_t> next = flatFrame(128, 96, kMidGrey);
        const size_t before = support::allocationCount();
        EXPECT_TRUE(facade.detectVideo({128, 96, 0, next.data()}, result));
        EXPECT_EQ(support::allocationCount(), before) << nth;
        if (!happened) {
            break;
        }
        ++refused;
    }
    EXPECT_GE(refused, 5U);  // four buffers of the block detector, one plane of the static one
}

TEST_F(NoMemory, ForTheTransformIsNoAudioVerdictAndNoneLater) {
    ZELAlgo::AlgoFacade facade;
    const std::vector<int16_t> samples(480, 100);
    ZELAlgo::ZELAudioResult result{};
    {
        const support::NoTransform no_transform;
        EXPECT_FALSE(facade.detectAudio({48000, 480, 1, samples.data()}, result));
        EXPECT_EQ(result.status, 0U);
    }
    EXPECT_TRUE(facade.detectAudio({48000, 480, 1, samples.data()}, result));
    EXPECT_EQ(result.status, 1U);
}

TEST_F(NoMemory, OrRatherNoRoomForAnAudioFrameLeavesItOut) {
    ZELAlgo::AlgoFacade facade(ZELAlgo::ZELAlgoConfig{.longtime_period_s = 0.05});
    const std::vector<int16_t> samples(24001, 100);
    ZELAlgo::ZELAudioResult result{};
    EXPECT_TRUE(facade.detectAudio({48000, 24001, 1, samples.data()}, result));
    for (int packet = 1; packet <= 5; ++packet) {
        EXPECT_EQ(result.status, 1U) << packet;
        EXPECT_TRUE(facade.detectAudio({48000, 480, 1, samples.data()}, result));
    }
    EXPECT_EQ(result.status, 2U);
    EXPECT_EQ(result.audio_level, 100U);
}

}  // namespace

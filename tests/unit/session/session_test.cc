#include <zel/base/log.h>
#include <zel/session/session.h>

#include <atomic>
#include <cfenv>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/clock.h"
#include "session/session_hooks.h"
#include "support/allocations.h"
#include "support/frames.h"
#include "support/wait.h"

namespace {

using support::flatVideoFrame;
using support::kMidGrey;
using support::kVideoBlack;
using support::silentAudioFrame;

/// A session that publishes its results, and a count of the video frames that its worker has done.
class Session : public testing::Test {
  protected:
    Session() {
        center_->registerListener("ZELMsgVideoFrameResult", owner_, [this](const auto&) { examined_.add(); });
        session_->setPublishFrameResults(true);
    }
    ~Session() override {
        session_->stop();
        center_->stop();
    }

    void feed(int count, uint8_t luma) {
        for (int i = 0; i < count; ++i) {
            EXPECT_TRUE(session_->feedVideoFrame(flatVideoFrame(64, 48, luma), i));
        }
    }

    /// Feeds one at a time, so that none is dropped.
    void feedAndWait(int count, uint8_t luma) {
        for (int i = 0; i < count; ++i) {
            const int before = examined_.value();
            feed(1, luma);
            ASSERT_TRUE(examined_.waitFor(before + 1));
        }
    }

    ReportMap heartbeat() {
        ReportMap report;
        session_->getHeartbeatInfo(report);
        return report;
    }

    class Owner : public ZEL::CObject {};
    const std::shared_ptr<Owner> owner_ = std::make_shared<Owner>();
    support::Count examined_;
    const std::shared_ptr<ZEL::MessageCenter> center_ = std::make_shared<ZEL::MessageCenter>();
    std::shared_ptr<ZEL::ZELSession> session_ = std::make_shared<ZEL::ZELSession>(center_);
};

TEST_F(Session, VideoFramesFedBeforeTheStartAreAllCountedAndTheTenNewestExamined) {
    feed(2, kMidGrey);  // dropped
    feed(10, kVideoBlack);
    session_->start();
    ASSERT_TRUE(examined_.waitFor(10));
    const ReportMap report = heartbeat();
    EXPECT_EQ(report.at("zel_vframes"), "12");
    EXPECT_EQ(report.at("zel_black_cnt"), "9");
}

TEST_F(Session, CountsTheFramesItNeverExaminedByKind) {
    const auto feedBoth = [this](int video, int audio) {
        for (int i = 0; i < audio; ++i) {
            EXPECT_TRUE(session_->feedAudioFrame(silentAudioFrame(480), i));
        }
        feed(video, kMidGrey);
    };
    feedBoth(13, 52);
    EXPECT_EQ(session_->getQueueDrops(), (ZEL::QueueDrops{3, 2}));
    EXPECT_EQ(heartbeat().size(), 7U);  // reports do not tell
    session_->stop();
    session_->start();  // throws away what was queued
    EXPECT_EQ(session_->getQueueDrops(), (ZEL::QueueDrops{13, 52}));
    EXPECT_EQ(ZEL::queueDropsOfSession(session_->getSessionId()), session_->getQueueDrops());
    const int64_t gone = session_->getSessionId();
    session_.reset();
    EXPECT_EQ(ZEL::queueDropsOfSession(gone), std::nullopt);

    session_ = std::make_shared<ZEL::ZELSession>(center_);
    session_->setSeparateAudioQueue(false);
    feedBoth(6, 6);
    EXPECT_EQ(session_->getQueueDrops(), (ZEL::QueueDrops{0, 2}));
}

TEST_F(Session, ReportsEachPeriodOnItsOwnAndTheWholeLifeAtAnyTime) {
    EXPECT_TRUE(session_->start());
    EXPECT_TRUE(session_->start());  // already running
    feedAndWait(4, kVideoBlack);
    EXPECT_TRUE(session_->feedAudioFrame(silentAudioFrame(480), 0));
    const ReportMap first = heartbeat();
    EXPECT_EQ(first.at("zel_heartbeat_seq"), "0");
    EXPECT_EQ(first.at("zel_token"), std::to_string(session_->getSessionId()));
    EXPECT_EQ(first.at("zel_vframes"), "4");
    EXPECT_EQ(first.at("zel_aframes"), "1");
    EXPECT_EQ(first.at("zel_black_cnt"), "3");
    feedAndWait(2, kVideoBlack);
    EXPECT_EQ(session_->getAccumulativeInfo(), session_->getAccumulativeInfo());
    const ReportMap second = heartbeat();
    EXPECT_EQ(second.at("zel_heartbeat_seq"), "1");
    EXPECT_EQ(second.at("zel_vframes"), "2");
    EXPECT_EQ(second.at("zel_black_cnt"), "2");
    const ReportMap life = session_->getAccumulativeInfo();
    EXPECT_EQ(life.at("zel_vframes"), "6");
    EXPECT_EQ(life.at("zel_black_cnt"), "5");
    EXPECT_EQ(life.count("zel_token") + life.count("zel_heartbeat_seq"), 0U);
}

TEST_F(Session, RunsAfreshAfterAStopWhileCountersGoOn) {
    session_->start();
    feedAndWait(2, kVideoBlack);
    session_->stop();
    EXPECT_FALSE(session_->collectAccumulativeData("ZELAccumulativeInfoCollector", nullptr));
    feed(3, kVideoBlack);  // taken in, never examined
    session_->start();
    feedAndWait(1, kVideoBlack);
    EXPECT_EQ(examined_.value(), 3);
    const ReportMap report = heartbeat();
    EXPECT_EQ(report.at("zel_vframes"), "6");
    EXPECT_EQ(report.at("zel_black_cnt"), "2");
    const std::map<std::string, int64_t> values{{"host", 5}};
    EXPECT_TRUE(session_->collectAccumulativeData("ZELAccumulativeInfoCollector", &values));
    EXPECT_EQ(heartbeat().at("host"), "5");
}

TEST_F(Session, AppliesTheConfigurationItWasGiven) {
    ZELAlgo::ZELAlgoConfig config;
    config.enable_black_screen = false;
    session_->setAlgoConfig(config);
    session_->start();
    feedAndWait(3, kVideoBlack);
    EXPECT_EQ(heartbeat().count("zel_black_cnt"), 0U);
}

TEST_F(Session, NamedCollectorsReportUnlessDisabledAddedOnesAlways) {
    const std::map<std::string, int64_t> values{{"host", 5}};
    session_->setCollectorsDisabled(true);
    EXPECT_TRUE(session_->collectAccumulativeData("ZELAccumulativeInfoCollector", &values));
    EXPECT_FALSE(session_->collectAccumulativeData("ZELAccumulativeInfoCollector ", &values));
    EXPECT_FALSE(session_->collectAccumulativeData("ZELAccumulativeInfoCollector", nullptr));
    EXPECT_EQ(heartbeat().count("host"), 0U);
    session_->addCollector("ZELAccumulativeInfoCollector")
        ->addAccumulativeData({{"zel_token", 1}, {"added", 2}});
    EXPECT_EQ(session_->addCollector("another"), nullptr);
    const ReportMap report = heartbeat();
    EXPECT_EQ(report.at("added"), "2");
    EXPECT_EQ(report.at("zel_token"), std::to_string(session_->getSessionId()));
    session_->setCollectorsDisabled(false);
    EXPECT_EQ(heartbeat().at("host"), "5");
    session_->stop();  // never started
    EXPECT_FALSE(session_->collectSerialData("ZELSerialStatisticsInfoCollector", "k", {1.0F}));
}

TEST_F(Session, TellsItsListenerOfResultsWhileSubscribed) {
    struct Listener : ZEL::IZELSessionListener {
        void onSessionEvent(uint32_t code, uint64_t a, uint64_t b, std::string text) override {
            EXPECT_TRUE(code == 0 && a == 0 && b == 0 && text.empty());
            events.add();
        }
        support::Count events;
    };
    const auto listener = std::make_shared<Listener>();
    session_->setListener(listener);
    session_->registerMessageListeners();
    session_->registerMessageListeners();  // one subscription all the same
    session_->start();
    feedAndWait(1, kMidGrey);
    ASSERT_TRUE(listener->events.waitFor(1));
    session_->unregisterMessageListeners();
    feedAndWait(1, kMidGrey);
    EXPECT_EQ(listener->events.value(), 1);
    session_->stop();
    EXPECT_EQ(listener.use_count(), 1);
}

TEST_F(Session, HandsTheVerdictsOfEachFrameThatIsLeftToWhoListensWithTheIndexThatWasFed) {
    struct Listener : ZEL::IZELResultListener {
        void onVideoResult(int64_t index, const ZELAlgo::ZELVideoResult& result) override {
            EXPECT_EQ(result.screen_type, ZELAlgo::kScreenBlack);
            indices.push_back(index);
        }
        void onAudioResult(int64_t index, const ZELAlgo::ZELAudioResult& /*result*/) override {
            indices.push_back(-index);
        }
        std::vector<int64_t> indices;
    };
    const auto listener = std::make_shared<Listener>();
    session_->setResultListener(listener);
    session_->feedAudioFrame(silentAudioFrame(480), 7);
    feed(12, kVideoBlack);  // the first two make room
    session_->start();
    ASSERT_TRUE(examined_.waitFor(10));
    session_->stop();
    EXPECT_THAT(listener->indices, testing::UnorderedElementsAre(2, 3, 4, 5, 6, 7, 8, 9, 10, 11, -7));
    EXPECT_EQ(listener->indices.at(0), 2);
}

TEST_F(Session, RefusesWhatIsNoFrame) {
    EXPECT_FALSE(session_->feedVideoFrame(nullptr, 0));
    EXPECT_FALSE(session_->feedVideoFrame(std::make_shared<ZEL::VideoFrame>(2, nullptr, -1, 8), 0));
    EXPECT_FALSE(session_->feedAudioFrame(nullptr, 0));
    EXPECT_FALSE(session_->feedAudioFrame(std::make_shared<ZEL::AudioFrame>(0, nullptr, 1, 48000, 0), 0));
    EXPECT_EQ(heartbeat().at("zel_vframes"), "0");
    EXPECT_EQ(heartbeat().at("zel_aframes"), "0");
}

TEST_F(Session, ComputesInTheUsualModeWhateverItsHostsIs) {
    static std::atomic<int> mode;
    mode = -1;
    ZEL::setLogSink([](const char*, size_t, void*) { mode = std::fegetround(); }, nullptr);
    session_->setAlgoConfig(ZELAlgo::ZELAlgoConfig{.staticframe_param = 1.0F});  // a log line for each frame
    std::fesetround(FE_UPWARD);
    session_->start();
    std::fesetround(FE_TONEAREST);
    feedAndWait(2, kMidGrey);
    ZEL::setLogSink(nullptr, nullptr);
    EXPECT_EQ(mode, FE_TONEAREST);
}

TEST_F(Session, SumsTheTimeOfIntakePerKind) {
    static std::atomic<int> quarters;
    quarters = 0;
    ZEL::setClockForTesting([] { return ++quarters * 0.25; });
    for (int i = 0; i < 3; ++i) {
        feed(1, kMidGrey);
    }
    session_->feedAudioFrame(silentAudioFrame(480), 0);
    ZEL::setClockForTesting(nullptr);
    const ReportMap report = heartbeat();
    EXPECT_EQ(report.at("zel_vframes_time"), "0.750000");
    EXPECT_EQ(report.at("zel_aframes_time"), "0.250000");
    EXPECT_EQ(session_->getAccumulativeInfo().at("zel_vframes_time"), "0.750000");
}

TEST_F(Session, TakesFramesInOneAtATime) {
    // A feed asks the clock before and after it queues its frame.
    static std::mutex mutex;
    static std::vector<std::thread::id> asked;
    asked.clear();
    ZEL::setClockForTesting([] {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            asked.push_back(std::this_thread::get_id());
        }
        std::this_thread::yield();
        return 0.0;
    });
    std::vector<std::thread> hosts;
    for (int i = 0; i < 2; ++i) {
        hosts.emplace_back([this] { feed(2000, kMidGrey); });
    }
    for (std::thread& host : hosts) {
        host.join();
    }
    ZEL::setClockForTesting(nullptr);
    ASSERT_EQ(asked.size(), 2U * 2U * 2000U);
    for (size_t i = 0; i < asked.size(); i += 2) {
        ASSERT_EQ(asked[i], asked[i + 1]) << i;
    }
}

TEST_F(Session, TellsWhoeverKeepsTrackThatItEnds) {
    static int64_t forgotten;
    static int purges;
    forgotten = 0;
    purges = 0;
    ZEL::setSessionHooks(
        {.forget_session = [](int64_t id) { forgotten = id; }, .purge_collectors = [] { ++purges; }});
    const int64_t id = session_->getSessionId();
    session_->stop();
    EXPECT_EQ(purges, 0);  // no collector was added
    session_->addCollector("ZELAccumulativeInfoCollector");
    session_->stop();
    EXPECT_EQ(purges, 1);
    session_ = std::make_shared<ZEL::ZELSession>(center_);
    EXPECT_EQ(forgotten, id);
    ZEL::setSessionHooks({});
}

TEST_F(Session, CountsFramesWithoutDataAndFindsNothingInThem) {
    session_->start();
    EXPECT_TRUE(session_->feedAudioFrame(std::make_shared<ZEL::AudioFrame>(0, nullptr, 480, 48000, 2), 0));
    EXPECT_TRUE(session_->feedVideoFrame(std::make_shared<ZEL::VideoFrame>(2, nullptr, 16, 8), 0));
    ASSERT_TRUE(examined_.waitFor(1));
    const ReportMap report = heartbeat();
    EXPECT_EQ(report.at("zel_vframes"), "1");
    EXPECT_EQ(report.at("zel_aframes"), "1");
    EXPECT_EQ(report.size(), 7U);
}

TEST_F(Session, DropsFramesThatThereIsNoMemoryForAndGoesOn) {
    static support::Count dropped;
    ZEL::setLogSink([](const char*, size_t, void*) { dropped.add(); }, nullptr);
    session_->start();
    const auto video = flatVideoFrame(64, 48, kVideoBlack);  // a counter to make
    const auto audio = silentAudioFrame(480, 48000, 2);      // to mix down
    {
        const support::NoMemoryElsewhere no_memory;
        session_->feedVideoFrame(video, 0);
        session_->feedAudioFrame(audio, 0);
        ASSERT_TRUE(dropped.waitFor(2));
    }
    EXPECT_EQ(session_->getQueueDrops(), (ZEL::QueueDrops{1, 1}));
    feedAndWait(2, kVideoBlack);
    EXPECT_EQ(heartbeat().at("zel_black_cnt"), "1");
    ZEL::setLogSink(nullptr, nullptr);
}

TEST_F(Session, LosesNoPeriodWhoseReportThereIsNoMemoryFor) {
    feed(4, kMidGrey);
    session_->addCollector("ZELAccumulativeInfoCollector")
        ->addAccumulativeData({{"a long name of a sum", 5}});
    ReportMap report;
    support::withEachAllocationFailing([&] {
        try {
            report = heartbeat();
        } catch (const std::bad_alloc&) {
        }
    });
    EXPECT_EQ(report.at("zel_heartbeat_seq"), "0");
    EXPECT_EQ(report.at("zel_vframes"), "4");
    EXPECT_EQ(report.at("a long name of a sum"), "5");
}

TEST_F(Session, OutlivesItsCentre) {
    auto center = std::make_shared<ZEL::MessageCenter>();
    const auto session = std::make_shared<ZEL::ZELSession>(center);
    session->setPublishFrameResults(true);
    center->stop();
    center.reset();
    session->registerMessageListeners();
    session->unregisterMessageListeners();
    session->start();
    session->feedVideoFrame(flatVideoFrame(64, 48, kMidGrey), 0);
}  // and dies running

}  // namespace

#include "pc/session_pc.h"

#include <zel/message/message_center.h>

#include <limits>

#include <gtest/gtest.h>

#include "support/fast_timers.h"
#include "support/frames.h"
#include "support/log_capture.h"
#include "support/wait.h"

namespace {

using ZEL::AudioInput;
using ZEL::VideoInput;

constexpr int32_t kInt32Max = std::numeric_limits<int32_t>::max();

std::string line(const std::string& function, int number, const std::string& text) {
    return "[zel log...][function : " + function + "][line: " + std::to_string(number) + "]" + text;
}

class SessionPc : public testing::Test {
  protected:
    ~SessionPc() override { center_->stop(); }

    std::shared_ptr<ZELSessionPc> withCore() {
        auto session = std::make_shared<ZELSessionPc>(host_);
        session->attachCore(std::make_shared<ZEL::ZELSession>(center_));
        return session;
    }

    static std::string frames(const ZELSessionPc& session, const char* key) {
        return session.endReport().at(key);
    }

    ZEL::HostServices host_;
    const std::shared_ptr<ZEL::MessageCenter> center_ = std::make_shared<ZEL::MessageCenter>();
    const std::vector<uint8_t> frame_ = support::flatFrame(16, 8, support::kMidGrey);
};

TEST_F(SessionPc, SaysSoWhenItHasNoCoreOrIsGivenASecond) {
    host_.switches.registerBool([](const char*) { return true; });
    const support::LogCapture log;
    {
        const auto session = std::make_shared<ZELSessionPc>(host_);
        EXPECT_FALSE(session->start());
        session->stop();
        EXPECT_FALSE(session->feed_video_frame({frame_.data(), 16, 8, 0}));
        EXPECT_FALSE(session->feed_audio_frame({frame_.data(), 1, 2, 48000, 1, 0}));
        EXPECT_EQ(session->get_session_id(), std::numeric_limits<uint64_t>::max());
    }
    const auto session = withCore();
    session->attachCore(std::make_shared<ZEL::ZELSession>(center_));
    for (const std::string& expected : {
             line("ZELSessionPc::start", 171, "ZELSessionPc::start _impl is null\n"),
             line("ZELSessionPc::stop", 265, "ZELSessionPc::stop _impl is null\n"),
             line("ZELSessionPc::feed_video_frame", 206, "please init _impl, _impl is null\n"),
             line("ZELSessionPc::get_session_id", 182, "ZELSessionPc::_impl is null\n"),
             line("ZELSessionPc::~ZELSessionPc", 55, "ZELSessionPc delloc\n"),
             line("ZELSessionPc::ZELSessionPc", 43, "_impl exist ?\n"),
         }) {
        EXPECT_EQ(log.count(expected), 1U) << expected;
    }
}

TEST_F(SessionPc, LogsEachStepOfAVideoFeed) {
    const auto session = withCore();
    const support::LogCapture log;
    EXPECT_TRUE(session->feed_video_frame({frame_.data(), 16, 8, (1LL << 32) + 7}));
    const auto messages = log.messages();
    ASSERT_EQ(messages.size(), 3U);
    EXPECT_EQ(messages[0], line("ZELSessionPc::feed_video_frame", 188, "ZELSessionPC feed_video_frame\n"));
    EXPECT_EQ(messages[1].rfind(
                  line("ZELSessionPc::feed_video_frame", 199, "index ====== 7 yuv data adress === 0x"), 0),
              0U);
    EXPECT_EQ(messages[1].back(), '\n');
    EXPECT_EQ(messages[2],
              line("ZELSessionPc::feed_video_frame", 201, "ZELSessionPC start  feed_video_frame\n"));
}

TEST_F(SessionPc, RefusesBadVideoFramesWithoutCountingThem) {
    const auto session = withCore();
    const support::LogCapture log;
    const uint8_t* const data = frame_.data();
    for (const VideoInput& bad :
         {VideoInput{nullptr, 16, 8, 0}, VideoInput{data, 0, 8, 0}, VideoInput{data, 16, 0, 0},
          VideoInput{data, -16, 8, 0}, VideoInput{data, 16, 8, -1},
          VideoInput{data, kInt32Max, kInt32Max, 0},  // would wrap
          VideoInput{data, 1 << 16, 21846, 0}}) {     // just over 31 bits
        EXPECT_FALSE(session->feed_video_frame(bad)) << bad.width << "x" << bad.height;
    }
    EXPECT_EQ(log.messages(), std::vector<std::string>(7, line("ZELSessionPc::feed_video_frame", 188,
                                                               "ZELSessionPC feed_video_frame\n")));
    EXPECT_EQ(frames(*session, "zel_vframes"), "0");
}

TEST_F(SessionPc, TakesSoundOnlyWhenTheSwitchIsOn) {
    static bool enabled;
    enabled = false;
    const auto session = withCore();
    EXPECT_TRUE(
        session->feed_audio_frame({nullptr, 0, 4, 0, 0, -1}));  // nobody to ask: off, and nothing is checked
    host_.switches.registerBool(
        [](const char* key) { return enabled && std::string(key) == "EnableAudioAlgo"; });
    EXPECT_TRUE(session->feed_audio_frame({nullptr, 0, 4, 0, 0, -1}));
    EXPECT_EQ(frames(*session, "zel_aframes"), "0");

    enabled = true;
    const support::LogCapture log;
    const uint8_t* const data = frame_.data();
    const size_t held = frame_.size() / 4;  // stereo
    EXPECT_TRUE(session->feed_audio_frame({data, held, 2, 48000, 2, 0}));
    EXPECT_EQ(frames(*session, "zel_aframes"), "1");
    EXPECT_TRUE(log.messages().empty());
    for (const AudioInput& bad :
         {AudioInput{nullptr, held, 2, 48000, 2, 0}, AudioInput{data, 0, 2, 48000, 2, 0},
          AudioInput{data, held, 2, 0, 2, 0}, AudioInput{data, held, 2, 48000, 0, 0},
          AudioInput{data, held, 2, 48000, 2, -1}}) {
        EXPECT_FALSE(session->feed_audio_frame(bad));
    }
    EXPECT_EQ(log.count(line("ZELSessionPc::feed_audio_frame", 225,
                             "the parameters passed in do not meet the requirements,please check\n")),
              5U);
    EXPECT_FALSE(session->feed_audio_frame({data, held, 4, 48000, 2, 0}));
    EXPECT_EQ(log.count(line("ZELSessionPc::feed_audio_frame", 240, "bytes_per_sample is 4\n")), 1U);
    // Sizes that do not fit, among them products that would wrap to something small.
    EXPECT_FALSE(session->feed_audio_frame({data, 1ULL << 30, 2, 48000, 1, 0}));
    EXPECT_FALSE(session->feed_audio_frame({data, 1ULL << 63, 2, 48000, 1, 0}));
    EXPECT_FALSE(session->feed_audio_frame({data, kInt32Max, 2, 48000, kInt32Max, 0}));
    EXPECT_EQ(frames(*session, "zel_aframes"), "1");
}

TEST_F(SessionPc, PassesCoreEventsToTheEventCallback) {
    static std::string heard;
    const auto session = withCore();
    session->onSessionEvent(1, 2, 3, "nobody listens");
    session->setEventCallback([](uint32_t code, uint64_t a, uint64_t b, const char* text) {
        heard = std::to_string(code) + std::to_string(a) + std::to_string(b) + text;
    });
    session->onSessionEvent(1, 2, 3, "event");
    EXPECT_EQ(heard, "123event");
}

TEST_F(SessionPc, KeepsTheNamedCollectorsOutOfItsHeartbeats) {
    const auto core = std::make_shared<ZEL::ZELSession>(center_);
    const auto session = std::make_shared<ZELSessionPc>(host_);
    session->attachCore(core);
    const std::map<std::string, int64_t> values{{"collected", 1}};
    EXPECT_TRUE(core->collectAccumulativeData("ZELAccumulativeInfoCollector", &values));
    ReportMap report;
    core->getHeartbeatInfo(report);
    EXPECT_EQ(report.count("collected"), 0U);
}

TEST_F(SessionPc, UnsubscribesItsCoreAtAStopUnlessToldNotTo) {
    static bool leave_listeners = false;
    host_.switches.registerBool(
        [](const char* key) { return leave_listeners && std::string(key) == "DisableFixListenerCleaning"; });
    for (const bool leave : {false, true}) {
        leave_listeners = leave;
        const auto core = std::make_shared<ZEL::ZELSession>(center_);
        const auto session = std::make_shared<ZELSessionPc>(host_);
        session->attachCore(core);
        const long unsubscribed = core.use_count();
        session->start();
        EXPECT_GT(core.use_count(), unsubscribed);  // the centre holds its subscribers
        session->stop();
        EXPECT_EQ(core.use_count() > unsubscribed, leave);
        session->start();  // subscribes once in its life
        EXPECT_EQ(core.use_count() > unsubscribed, leave);
        session->stop();
    }
}

TEST_F(SessionPc, TakesTheInitialIntervalForEveryHeartbeat) {
    static support::Count uploads;
    host_.upload.setCallback(
        [](const char*, int, const char*, const char*, const char*, ReportMap*) { uploads.add(); });
    host_.switches.registerInt(
        [](const char* key) { return std::string(key) == "ExtraInitialHeartBeatInterval" ? 1 : -1; });
    const support::FastTimers timers;
    const auto session = withCore();
    session->setInterval(1'000'000);
    session->setTimerSwitchListener([] { return true; });
    session->start();
    EXPECT_TRUE(uploads.waitFor(3));
    session->stop();
}

TEST_F(SessionPc, SendsNoEndingHeartbeatAfterAStopFromTheSwitchThatAllowsIt) {
    static ZELSessionPc* stopping;
    static int uploads;
    uploads = 0;
    host_.upload.setCallback(
        [](const char*, int, const char*, const char*, const char*, ReportMap*) { ++uploads; });
    host_.switches.registerBool([](const char* key) {
        if (ZELSessionPc* const inner = std::string(key) == "DisableEndingTimer" ? stopping : nullptr) {
            stopping = nullptr;
            inner->stop();
        }
        return false;
    });
    const auto session = withCore();
    session->setInterval(3600);
    session->setTimerSwitchListener([] { return true; });
    for (const bool inside : {false, true}) {
        stopping = inside ? session.get() : nullptr;
        session->start();
        session->stop();
        EXPECT_EQ(uploads, 1) << "that of the stop from outside";
    }
}

TEST_F(SessionPc, SendsNoHeartbeatOnceItIsRetiredAlthoughSomebodyHoldsIt) {
    const support::FastTimers timers;
    const support::LogCapture log;
    const auto session = withCore();
    session->setInterval(1);
    session->setTimerSwitchListener([] { return true; });
    session->start();
    session->retire();
    EXPECT_TRUE(log.waitFor(" sessionpc is has released \n"));
    session->stop();
}

TEST_F(SessionPc, FreesItsCoreWhenReleasedWithoutAStop) {
    auto core = std::make_shared<ZEL::ZELSession>(center_);
    const std::weak_ptr<ZEL::ZELSession> watch = core;
    auto session = std::make_shared<ZELSessionPc>(host_);
    session->attachCore(std::move(core));
    session->start();
    session.reset();
    EXPECT_TRUE(watch.expired());
}

}  // namespace

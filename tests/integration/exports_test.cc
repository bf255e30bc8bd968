// The seventeen functions as a host uses them.
#include <zel/base/log.h>
#include <zel/zel.h>

#include <atomic>
#include <chrono>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/allocations.h"
#include "support/fast_timers.h"
#include "support/frames.h"
#include "support/log_capture.h"
#include "support/manual_clock.h"
#include "support/recording_host.h"

namespace {

using support::RecordingHost;

constexpr int32_t kWidth = 64;
constexpr int32_t kHeight = 48;

struct Releaser {
    void operator()(ZELHandle* handle) const { release_handle(handle); }
};
using Handle = std::unique_ptr<ZELHandle, Releaser>;

class Exports : public testing::Test {
  protected:
    Exports() { host_.reset(); }

    /// A handle whose heartbeats are allowed.
    static Handle open(uint32_t interval) {
        Handle handle(init_handle_with_interval(interval));
        set_heart_beat_timer_switch_listener(handle.get(), [] { return true; });
        return handle;
    }

    static void feed(const Handle& handle, int count, uint8_t luma) {
        const std::vector<uint8_t> frame = support::flatFrame(kWidth, kHeight, luma);
        for (int i = 0; i < count; ++i) {
            EXPECT_TRUE(feed_video_frame(handle.get(), frame.data(), kWidth, kHeight, i));
        }
    }

    RecordingHost& host_ = RecordingHost::get();
};

TEST_F(Exports, NameThemselvesWhenTheyGetNoHandle) {
    const support::LogCapture log;
    const uint8_t byte = 0;
    EXPECT_FALSE(feed_audio_frame(nullptr, &byte, 1, 2, 48000, 1, 0));
    EXPECT_FALSE(feed_video_frame(nullptr, &byte, 1, 1, 0));
    set_heart_beat_callback(nullptr, nullptr);
    set_heart_beat_detail_callback(nullptr, nullptr);
    set_user_state_dir(nullptr, {{"a", "b"}});
    EXPECT_FALSE(start_zel_session(nullptr));
    stop_zel_session(nullptr);
    release_handle(nullptr);  // silent
    std::vector<std::string> expected;
    for (const auto& [function, number] :
         std::initializer_list<std::pair<const char*, int>>{{"feed_audio_frame", 111},
                                                            {"feed_video_frame", 93},
                                                            {"set_heart_beat_callback", 49},
                                                            {"set_heart_beat_detail_callback", 59},
                                                            {"set_user_state_dir", 69},
                                                            {"start_zel_session", 78},
                                                            {"stop_zel_session", 121}}) {
        expected.push_back(std::string("[zel log...][function : ") + function +
                           "][line: " + std::to_string(number) + "]ERRO: please init handle\n");
    }
    EXPECT_EQ(log.messages(), expected);
}

TEST_F(Exports, LogTheLifeOfASession) {
    const support::LogCapture log;
    Handle handle(init_handle());
    set_user_state_dir(handle.get(), {{"kept", "unread"}});
    EXPECT_EQ(get_session_id(handle.get()), std::numeric_limits<uint64_t>::max());
    EXPECT_FALSE(start_zel_session(handle.get()));
    stop_zel_session(handle.get());
    handle.reset();
    EXPECT_EQ(log.messages(),
              (std::vector<std::string>{
                  "[zel log...][function : ZELSessionPc::start][line: 149]ZELSessionPc start!!!\n",
                  "[zel log...][function : ZELSessionPc::stop][line: 263]ZELSessionPc stop!!!!\n",
                  "[zel log...][function : ZELManagerPc::release_session][line: 100]do release something\n",
                  "[zel log...][function : ZELSessionPc::~ZELSessionPc][line: 55]ZELSessionPc delloc\n"}));
}

TEST_F(Exports, StopUploadsTheEndingHeartbeatAndTheFinalReport) {
    support::ManualClock clock;
    const Handle handle = open(3600);
    start_zel_session(handle.get());
    feed(handle, 3, support::kMidGrey);
    clock.advance(60.00126);
    stop_zel_session(handle.get());
    const auto events = host_.events();
    ASSERT_EQ(events.size(), 2U);
    for (const auto& event : events) {
        EXPECT_EQ(event.page, "Page_zel");
        EXPECT_EQ(event.id, 2101);
        EXPECT_EQ(event.args[0], "zel_algorithm_heartbeat");
        EXPECT_EQ(event.args[1] + event.args[2], "");
        EXPECT_EQ(event.fields.at("zel_vframes"), "3");
    }
    EXPECT_EQ(events[0].fields.at("zel_time_interval"), "60.0013");
    EXPECT_EQ(events[0].fields.at("zel_heartbeat_seq"), "0");
    EXPECT_EQ(events[1].fields.count("zel_time_interval") + events[1].fields.count("zel_token"), 0U);
}

TEST_F(Exports, WithoutATimerThereIsNoEndingHeartbeat) {
    const auto eventsOfOneRun = [this](Handle handle) {
        host_.reset();
        start_zel_session(handle.get());
        stop_zel_session(handle.get());
        return host_.events().size();
    };
    EXPECT_EQ(eventsOfOneRun(open(3600)), 2U);
    EXPECT_EQ(eventsOfOneRun(Handle(init_handle_with_interval(3600))), 1U);  // no listener
    EXPECT_EQ(eventsOfOneRun(open(0)), 1U);
    EXPECT_EQ(eventsOfOneRun(open(0x80000000U)), 1U);  // negative once it is signed
    Handle refused = open(3600);
    set_heart_beat_timer_switch_listener(refused.get(), [] { return false; });
    EXPECT_EQ(eventsOfOneRun(std::move(refused)), 1U);
    Handle withdrawn = open(3600);
    start_zel_session(withdrawn.get());
    set_heart_beat_timer_switch_listener(withdrawn.get(), [] { return false; });
    EXPECT_EQ(eventsOfOneRun(std::move(withdrawn)), 1U);  // the second start ends the first one's timer
    Handle quiet = open(3600);
    start_zel_session(quiet.get());
    host_.setSwitch("DisableEndingTimer", true);
    const size_t before = host_.events().size();
    stop_zel_session(quiet.get());
    EXPECT_EQ(host_.events().size(), before + 1);
}

TEST_F(Exports, AskTheListenerAtEveryStartWhateverTheInterval) {
    static int asked;
    asked = 0;
    const Handle handle(init_handle());
    set_heart_beat_timer_switch_listener(handle.get(), [] { return ++asked > 0; });
    start_zel_session(handle.get());
    start_zel_session(handle.get());
    EXPECT_EQ(asked, 2);
    stop_zel_session(handle.get());
}

TEST_F(Exports, AHostMayReleaseItsHandleInTheEndingHeartbeat) {
    static ZELHandle* handle;
    handle = open(3600).release();
    set_heart_beat_callback(handle, [](ReportMap*) { release_handle(handle); });
    start_zel_session(handle);
    stop_zel_session(handle);
    EXPECT_EQ(host_.events().size(), 2U);

    handle = open(3600).release();
    set_heart_beat_timer_switch_listener(handle, [] {
        release_handle(handle);
        return true;
    });
    start_zel_session(handle);
}

TEST_F(Exports, HeartbeatsTickAndCarryFramesUntilStopped) {
    support::ManualClock clock;
    constexpr std::chrono::milliseconds kSecond{40};
    const support::FastTimers timers(kSecond);
    const Handle handle = open(1);
    const auto begin = std::chrono::steady_clock::now();
    start_zel_session(handle.get());
    feed(handle, 5, support::kMidGrey);
    clock.advance(1.25);
    ASSERT_TRUE(host_.waitForEvents(1));
    feed(handle, 4, support::kMidGrey);
    clock.advance(2.5);
    ASSERT_TRUE(host_.waitForEvents(2));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 2 * kSecond);
    stop_zel_session(handle.get());
    int frames = 0;
    double time = 0;
    const auto events = host_.events();
    for (size_t i = 0; i + 1 < events.size(); ++i) {  // the last one is the final report
        EXPECT_EQ(events[i].fields.at("zel_heartbeat_seq"), std::to_string(i));
        frames += std::stoi(events[i].fields.at("zel_vframes"));
        time += std::stod(events[i].fields.at("zel_time_interval"));
    }
    EXPECT_EQ(frames, 9);
    EXPECT_EQ(time, 3.75);  // each interval begins where the one before ended
}

TEST_F(Exports, TheExtraInitialIntervalReplacesTheIntervalAltogether) {
    const support::FastTimers timers;
    const Handle handle = open(3600);
    host_.setNumber("ExtraInitialHeartBeatInterval", 0);  // below 1: not in force
    start_zel_session(handle.get());
    host_.setNumber("ExtraInitialHeartBeatInterval", 1);
    start_zel_session(handle.get());  // a new timer takes the old one's place
    EXPECT_TRUE(host_.waitForEvents(2));
    stop_zel_session(handle.get());
}

TEST_F(Exports, TheHostAddsFieldsButNeverReplacesOnes) {
    Handle handle = open(3600);
    set_heart_beat_callback(handle.get(), [](ReportMap* extra) {
        EXPECT_TRUE(extra->empty());
        *extra = {{"plain", "yes"}, {"zel_vframes", "mine"}};
    });
    start_zel_session(handle.get());
    stop_zel_session(handle.get());
    EXPECT_EQ(host_.events().at(0).fields.at("plain"), "yes");
    EXPECT_EQ(host_.events().at(0).fields.at("zel_vframes"), "0");
    EXPECT_EQ(host_.events().at(1).fields.count("plain"), 0U);

    host_.reset();
    set_heart_beat_detail_callback(handle.get(), [](ReportMap* extra, ReportMap* report) {
        (*extra)["detail"] = report->at("zel_heartbeat_seq");
        (*extra)["zel_time_interval"] = "mine";
    });
    start_zel_session(handle.get());
    stop_zel_session(handle.get());
    const ReportMap fields = host_.events().at(0).fields;
    EXPECT_EQ(fields.at("detail"), "1");  // the sequence runs on over the stop
    EXPECT_EQ(fields.count("plain"), 0U);
    EXPECT_NE(fields.at("zel_time_interval"), "mine");
}

TEST_F(Exports, KeepTheFirstSwitchCallbackAndTheLastUploadCallback) {
    static std::atomic<int> uploads;
    uploads = 0;
    set_cobalt_bool_callback([](const char*) { return true; });  // too late
    set_tlm_upload_callback(nullptr);
    const Handle handle = open(3600);
    const uint8_t sample[2] = {};
    start_zel_session(handle.get());
    EXPECT_TRUE(feed_audio_frame(handle.get(), sample, 1, 2, 48000, 1, 0));  // off, says the first one
    stop_zel_session(handle.get());                                          // uploads nowhere
    start_zel_session(handle.get());
    set_tlm_upload_callback([](const char*, int, const char*, const char*, const char*, ReportMap* fields) {
        EXPECT_EQ(fields->at("zel_aframes"), "0");
        ++uploads;
    });
    stop_zel_session(handle.get());
    EXPECT_EQ(uploads, 2);
    EXPECT_TRUE(host_.events().empty());
}

TEST_F(Exports, CollectNothingForSessionsThatAreNotRegistered) {
    const Handle handle = open(3600);
    start_zel_session(handle.get());
    stop_zel_session(handle.get());
    const uint64_t token = std::stoull(host_.events().at(0).fields.at("zel_token"));
    const std::map<std::string, int64_t> values{{"a", 1}};
    const std::string key = "k";
    const float sample = 1.0F;
    EXPECT_FALSE(zel_collect_accumulative_data_for_session_v2(token, &values));
    EXPECT_FALSE(zel_collect_accumulative_data_for_session_v2(0, nullptr));
    EXPECT_FALSE(zel_collect_serial_data_for_session_v2(token, &key, &sample, 1));
    EXPECT_FALSE(zel_collect_serial_data_for_session_v2(token, nullptr, &sample, 1));
    EXPECT_FALSE(zel_collect_serial_data_for_session_v2(token, &key, nullptr, 1));
}

TEST_F(Exports, AReleaseNeedsNoMemory) {
    ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
    for (const bool started : {false, true}) {
        Handle handle = open(3600);
        feed(handle, 12, support::kMidGrey);
        if (started) {
            start_zel_session(handle.get());
        }
        const size_t before = support::allocationCount();
        handle.reset();
        EXPECT_EQ(support::allocationCount(), before);
    }
    ZEL::setLogSink(nullptr, nullptr);
}

TEST_F(Exports, LeaveTheListenersWhenAskedAndStillFreeTheSession) {
    host_.setSwitch("DisableFixListenerCleaning", true);
    Handle handle = open(3600);
    start_zel_session(handle.get());
    stop_zel_session(handle.get());
    start_zel_session(handle.get());
    feed(handle, 1, support::kMidGrey);
    stop_zel_session(handle.get());
    EXPECT_EQ(host_.events().back().fields.at("zel_vframes"), "1");
    handle.reset();  // the leak checkers see the rest
}

}  // namespace

#include "serve/metrics.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "serve/history.h"
#include "serve/status_json.h"

namespace {

using std::chrono::system_clock;
using testing::HasSubstr;
using testing::Not;
using zel_monitor::History;
using zel_monitor::StreamStatus;

constexpr size_t kBlack = indexOf(ZEL::EventKind::kBlack);
constexpr size_t kBlock = indexOf(ZEL::EventKind::kBlock);

StreamStatus busyStream() {
    StreamStatus stream;
    stream.name = "a \"b\"\n";
    stream.labels = {{"site", "north"}};
    stream.state = zel_monitor::StreamState::kUp;
    stream.last_frame = system_clock::time_point(std::chrono::milliseconds(1500));
    stream.counts.video_frames = 12;
    stream.dropped = 3;
    stream.level = 3276.8;
    stream.enabled[kBlack] = true;
    stream.tallies[kBlack] = {.raised = 2, .seconds = 4.5, .active = true};
    stream.alarms.push_back({kBlack, zel_monitor::Severity::kCritical, "", {}});
    return stream;
}

TEST(Metrics, TellHowAStreamIsUnderItsNameAndLabels) {
    const std::string text =
        zel_monitor::metricsText({busyStream()}, {.lost = 1, .webhooks = {{"http://x", {.lost = 7}}}});
    const std::string labels = R"({stream="a \"b\"\n",site="north")";
    for (const std::string& line :
         {"zel_stream_up" + labels + "} 1\n", "zel_stream_state" + labels + R"(,state="no data"} 0)",
          "zel_stream_state" + labels + R"(,state="up"} 1)",
          "zel_fault_active" + labels + R"(,kind="black"} 1)",
          "zel_fault_seconds_total" + labels + R"(,kind="black"} 4.5)",
          "zel_events_total" + labels + R"(,kind="black"} 2)",
          "zel_frames_total" + labels + R"(,track="video"} 12)",
          "zel_frames_dropped_total" + labels + "} 3\n",
          "zel_last_frame_timestamp_seconds" + labels + "} 1.5\n", "zel_audio_level_db" + labels + "} -20\n",
          std::string("zel_event_log_lost_total 1\n"),
          std::string(R"(zel_webhook_lost_total{webhook="1",url="http://x"} 7)")}) {
        EXPECT_THAT(text, HasSubstr(line));
    }
    EXPECT_THAT(text, Not(HasSubstr("kind=\"block\"")));  // not asked for
    EXPECT_THAT(text, Not(HasSubstr("zel_luma{")));       // not known
    EXPECT_THAT(text, HasSubstr("# TYPE zel_events_total counter\n"));
}

TEST(StatusJson, TellsTheAlarmsAndWhatIsNotKnown) {
    const auto json = zel_monitor::statusJson({busyStream()}, system_clock::time_point())["streams"][0];
    EXPECT_EQ(json["state"], "up");
    EXPECT_EQ(json["alarms"][0]["kind"], "black");
    EXPECT_EQ(json["last_frame"], "1970-01-01T00:00:01.500Z");
    EXPECT_TRUE(json["luma"].is_null());
    EXPECT_TRUE(json["video"].is_null());
}

TEST(History, KeepsTheLastHourAndNothingElse) {
    History history;
    const auto at = [](double s) {
        return system_clock::time_point(
            std::chrono::duration_cast<system_clock::duration>(std::chrono::duration<double>(1e6 + s)));
    };
    for (int s = 0; s < 5000; ++s) {
        history.add(History::Curve::kLuma, s % 2 == 0 ? 100.0 : 101.0, at(s));
    }
    history.add(ZEL::EventKind::kBlack, at(100.0), at(110.0));
    history.add(ZEL::EventKind::kFreeze, at(1390.0), at(1410.0));
    history.add(ZEL::EventKind::kMute, at(4900.0), at(4905.0));
    const auto record = history.record(at(5100.0));
    const auto& values = record["luma"]["values"];
    ASSERT_EQ(values.size(), static_cast<size_t>(History::kLengthS / History::kStepS));
    EXPECT_EQ(values[0], 100.5);
    EXPECT_EQ(values[1748], 100.5);
    EXPECT_TRUE(values[1749].is_null());  // nothing for the last 100 s
    EXPECT_TRUE(record["audio_level"]["values"][0].is_null());
    const auto events = history.events(at(5000.0));
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].kind, ZEL::EventKind::kFreeze);
    EXPECT_NEAR(events[0].span.start_s, 0.0, 1e-6);  // it had begun before
    EXPECT_NEAR(events[0].span.end_s, 10.0, 1e-6);
    EXPECT_NEAR(events[1].span.start_s, 3500.0, 1e-6);
}

}  // namespace

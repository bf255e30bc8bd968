#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/time_text.h"
#include "watch/formats.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using zel_monitor::Console;
using zel_monitor::ReportEvent;

constexpr std::chrono::system_clock::time_point kMoment{std::chrono::milliseconds(1'700'000'000'042)};

const std::string kTime = zel_monitor::localClockText(kMoment);

ReportEvent eventFor(const ReportMap& report, double position) {
    return {.report = report, .time = kMoment, .position = position, .caption = "", .drops = {}};
}

zel_monitor::MediaFacts videoOnly() {
    zel_monitor::MediaFacts facts;
    facts.input = "clip";
    facts.duration = 65.25;
    facts.video = {.codec = "h264", .pixel_format = "yuv420p", .width = 320, .height = 180, .frame_rate = 25};
    return facts;
}

/// Lines on standard output while `write` runs, which is no terminal here.
std::vector<std::string> linesOf(const std::function<void(Console&)>& write) {
    testing::internal::CaptureStdout();
    {
        Console console(zel_monitor::StatusLine::kNever);
        write(console);
    }
    std::istringstream output(testing::internal::GetCapturedStdout());
    std::vector<std::string> lines;
    for (std::string line; std::getline(output, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> wordsOf(const std::string& line) {
    std::istringstream words(line);
    return {std::istream_iterator<std::string>(words), {}};
}

TEST(JsonHeartbeats, AreOneObjectPerReportWithNumbersAsNumbers) {
    const auto lines = linesOf([](Console& console) {
        const auto writer = zel_monitor::makeHeartbeatJson(console, "");
        writer->begin(videoOnly());
        writer->caption(0, "not for machines");
        const ReportMap report = {{"zel_heartbeat_seq", "0"},
                                  {"zel_token", "94045296714000"},
                                  {"zel_vframes_time", "0.001200"},
                                  {"remark", "1 of \"2\""}};
        ReportEvent event = eventFor(report, 1.9600000000000004);
        event.caption = "black";
        event.drops = {.video = 3, .audio = 0};
        writer->heartbeat(event);
        writer->finalReport(
            eventFor({{"zel_vframes", "7"}}, 2.0),
            {.counts = {.bytes_read = 10, .damaged = 1},
             .assessments = {{"RecentPlayerFF", {{"recent_ff", "12.500000"}, {"count", "1"}}}}});
    });
    ASSERT_EQ(2U, lines.size());
    EXPECT_EQ(nlohmann::json::parse(lines[0]), nlohmann::json({{"event", "heartbeat"},
                                                               {"time", "2023-11-14T22:13:20.042Z"},
                                                               {"position", 1.96},
                                                               {"shown", "black"},
                                                               {"zel_heartbeat_seq", 0},
                                                               {"zel_token", 94045296714000},
                                                               {"zel_vframes_time", 0.0012},
                                                               {"dropped_video_frames", 3},
                                                               {"dropped_audio_frames", 0},
                                                               {"remark", "1 of \"2\""}}));
    EXPECT_EQ(nlohmann::json::parse(lines[1]),
              nlohmann::json({{"event", "final"},
                              {"time", "2023-11-14T22:13:20.042Z"},
                              {"position", 2.0},
                              {"zel_vframes", 7},
                              {"bytes_read", 10},
                              {"damaged", 1},
                              {"assessments", {{"RecentPlayerFF", {{"recent_ff", 12.5}, {"count", 1}}}}}}));
}

TEST(HeartbeatTable, SetsOffWhatHasRisenAndTheFirstOfAKind) {
    const auto lines = linesOf([](Console& console) {
        const auto writer = zel_monitor::makeHeartbeatTable(console, "");
        writer->begin(videoOnly());
        writer->heartbeat(eventFor({{"zel_vframes", "125"}, {"zel_black_cnt", "0"}}, 5));
        const ReportMap second = {
            {"zel_vframes", "125"}, {"zel_black_cnt", "0"}, {"zel_greenscreen_cnt", "3"}};
        ReportEvent event = eventFor(second, 3665.04);
        event.drops = {.video = 7, .audio = 0};
        writer->heartbeat(event);
        const ReportMap all = {{"zel_vframes", "250"}, {"zel_greenscreen_cnt", "3"}};
        ReportEvent last = eventFor(all, 3665.04);
        last.drops = event.drops;
        writer->finalReport(
            last, {.counts = {.damaged = 2},
                   .assessments = {{"RecentPlayerFF", {{"recent_ff", "12.500000"}}}, {"RefNetSpeed", {}}}});
    });
    EXPECT_EQ("clip: h264 320x180 25 fps, 0:01:05.3", lines[0]);
    EXPECT_THAT(wordsOf(lines[1]), ElementsAre("time", "position", "frames", "drops", "black", "green",
                                               "block", "freeze", "underexposed", "overexposed"));
    EXPECT_THAT(wordsOf(lines[2]),
                ElementsAre(kTime, "0:00:05", "125", ".", "first", ".", ".", ".", ".", "."));
    EXPECT_THAT(wordsOf(lines[3]), ElementsAre(kTime, "1:01:05", "125", "+7", "0", "+3", ".", ".", ".", "."));
    EXPECT_EQ(lines[1].size(), lines[3].size()) << "figures stand under their headings";
    EXPECT_THAT(lines, testing::Contains("       250  video frames fed"));
    EXPECT_THAT(lines, testing::Contains("         7  video frames dropped, not examined in time"));
    EXPECT_THAT(lines, testing::Contains("         3  green frames"));
    EXPECT_THAT(lines, testing::Contains("         2  damaged packets or frames in the input"));
    EXPECT_THAT(lines, testing::Contains("      12.5  ms from opening to the first frame"));
    EXPECT_THAT(lines, testing::Contains("         0  bytes per second read, at best"));
    EXPECT_THAT(lines, testing::Each(Not(HasSubstr("\033"))));
}

TEST(Heartbeats, TellFaultsAndInterruptionsBetweenThem) {
    const auto write = [](auto make) {
        return linesOf([&](Console& console) {
            const auto writer = make(console, "news");
            const zel_monitor::FaultNotice raised{ZEL::EventKind::kBlack, kMoment, 12.5, 12.0, {}};
            zel_monitor::FaultNotice cleared = raised;
            cleared.length_s = 3.5;
            cleared.evidence = ZEL::Evidence{0.99, 0.98};
            writer->fault(raised);
            writer->fault(cleared);
            writer->interrupted({kMoment, 15.0, "it ended"});
        });
    };
    EXPECT_THAT(write(&zel_monitor::makeHeartbeatTable),
                ElementsAre(kTime + "  0:00:12  raised: black, since 0:00:12.0",
                            kTime + "  0:00:12  cleared: black, 3.5 s from 0:00:12.0",
                            kTime + "  0:00:15  it ended"));
    const auto lines = write(&zel_monitor::makeHeartbeatJson);
    ASSERT_EQ(3U, lines.size());
    const nlohmann::json raised = {{"event", "raised"},  {"time", "2023-11-14T22:13:20.042Z"},
                                   {"position", 12.5},   {"name", "news"},
                                   {"kind", "black"},    {"start", 12.0},
                                   {"evidence", nullptr}};
    EXPECT_EQ(nlohmann::json::parse(lines[0]), raised);
    EXPECT_EQ(nlohmann::json::parse(lines[1]).at("duration"), 3.5);
    EXPECT_EQ(nlohmann::json::parse(lines[1]).at("evidence").at("value"), 0.99);
    EXPECT_EQ(nlohmann::json::parse(lines[2]).at("reason"), "it ended");
}

TEST(HeartbeatTable, GivesEachTrackARowThatFitsATerminal) {
    zel_monitor::MediaFacts facts = videoOnly();
    facts.audio = {.codec = "aac", .sample_rate = 48000, .channels = 2};
    const auto lines = linesOf([&](Console& console) {
        const auto writer = zel_monitor::makeHeartbeatTable(console, "");
        writer->begin(facts);
        writer->heartbeat(
            eventFor({{"zel_vframes", "125"}, {"zel_aframes", "500"}, {"zel_audio_level", "32767"}}, 36005));
    });
    ASSERT_EQ(5U, lines.size());
    EXPECT_THAT(wordsOf(lines[2]), ElementsAre("audio", "frames", "drops", "mute", "low-voice", "high-voice",
                                               "no-voice", "level", "voice", "share"));
    EXPECT_THAT(wordsOf(lines[3]), ElementsAre(kTime, "10:00:05", "125", ".", ".", ".", ".", ".", ".", "."));
    EXPECT_THAT(wordsOf(lines[4]), ElementsAre("audio", "500", ".", ".", ".", ".", ".", "32767", ".", "."));
    for (size_t i = 1; i < lines.size(); ++i) {
        EXPECT_LE(lines[i].size(), 80U) << lines[i];
    }
}

}  // namespace

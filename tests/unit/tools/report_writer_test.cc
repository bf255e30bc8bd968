#include "watch/report_writer.h"

#include <nlohmann/json.hpp>
#include <sstream>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/time_text.h"
#include "watch/progress.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using zel_monitor::Console;
using zel_monitor::ReportEvent;
using zel_monitor::ReportWriter;

constexpr std::chrono::system_clock::time_point kMoment{std::chrono::milliseconds(1'700'000'000'042)};

ReportEvent eventFor(const ReportMap& report, double position) {
    return {.report = report, .time = kMoment, .position = position, .caption = ""};
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
        Console console;
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

TEST(JsonWriter, WritesOneObjectPerReportWithNumbersAsNumbers) {
    const auto lines = linesOf([](Console& console) {
        const auto writer = zel_monitor::makeJsonWriter(console);
        writer->begin(videoOnly());
        writer->caption(0, "not for machines");
        const ReportMap report = {{"zel_heartbeat_seq", "0"},
                                  {"zel_token", "94045296714000"},
                                  {"zel_vframes_time", "0.001200"},
                                  {"remark", "1 of \"2\""}};
        ReportEvent event = eventFor(report, 1.9600000000000004);
        event.caption = "black";
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

TEST(TextWriter, SetsOffWhatHasRisenAndTheFirstOfAKind) {
    const auto lines = linesOf([](Console& console) {
        const auto writer = zel_monitor::makeTextWriter(console);
        writer->begin(videoOnly());
        writer->heartbeat(eventFor({{"zel_vframes", "125"}, {"zel_black_cnt", "0"}}, 5));
        writer->heartbeat(eventFor(
            {{"zel_vframes", "125"}, {"zel_black_cnt", "0"}, {"zel_greenscreen_cnt", "3"}}, 3665.04));
        writer->finalReport(
            eventFor({{"zel_vframes", "250"}, {"zel_greenscreen_cnt", "3"}}, 3665.04),
            {.counts = {.damaged = 2},
             .assessments = {{"RecentPlayerFF", {{"recent_ff", "12.500000"}}}, {"RefNetSpeed", {}}}});
    });
    EXPECT_EQ("clip: h264 320x180 25 fps, 0:01:05.3", lines[0]);
    EXPECT_THAT(wordsOf(lines[1]),
                ElementsAre("position", "pictures", "black", "green", "blocky", "frozen", "dark", "bright"));
    EXPECT_THAT(wordsOf(lines[2]), ElementsAre("0:00:05.0", "125", "first", ".", ".", ".", ".", "."));
    EXPECT_THAT(wordsOf(lines[3]), ElementsAre("1:01:05.0", "125", "0", "+3", ".", ".", ".", "."));
    EXPECT_EQ(lines[1].size(), lines[3].size()) << "figures stand under their headings";
    EXPECT_THAT(lines, testing::Contains("       250  pictures fed"));
    EXPECT_THAT(lines, testing::Contains("         3  green pictures"));
    EXPECT_THAT(lines, testing::Contains("         2  damaged packets or frames in the input"));
    EXPECT_THAT(lines, testing::Contains("      12.5  ms from opening to the first picture"));
    EXPECT_THAT(lines, testing::Contains("         0  bytes per second read, at best"));
    EXPECT_THAT(lines, testing::Each(Not(HasSubstr("\033"))));
}

TEST(Progress, ShowsABarPositionSpeedAndWhatWasFed) {
    zel_monitor::WatchProgress progress(100.0);
    const zel_monitor::WatchProgress::TimePoint start{};
    progress.update(start, 0, 0, 0);
    EXPECT_FALSE(progress.update(start + std::chrono::milliseconds(50), 0.1, 1, 1).has_value());
    EXPECT_EQ("[############............] 0:00:50.0 / 0:01:40.0  25.00x  7 pictures, 9 sounds",
              progress.update(start + std::chrono::seconds(2), 50, 7, 9));
    EXPECT_EQ("0:00:50.0  0.00x  7 pictures, 9 sounds",
              zel_monitor::WatchProgress(std::nullopt).update(start, 50, 7, 9));
}

TEST(TimeText, RoundsToTenths) {
    EXPECT_EQ("0:00:00.0", zel_monitor::shortClockText(-0.02));
    EXPECT_EQ("-0:00:00.2", zel_monitor::shortClockText(-0.2));
    EXPECT_EQ("0:01:00.0", zel_monitor::shortClockText(59.96));
}

}  // namespace

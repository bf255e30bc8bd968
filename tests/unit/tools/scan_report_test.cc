#include <array>
#include <cmath>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/file_names.h"
#include "cli/output_file.h"
#include "cli/progress.h"
#include "cli/standard_streams.h"
#include "cli/time_text.h"
#include "report/report.h"
#include "report/series.h"
#include "report/writers.h"
#include "support/clip.h"

namespace {

using namespace zel_monitor;
using testing::HasSubstr;

InputReport reportOf(std::vector<ZEL::Event> events, double length_s = 100.0) {
    InputReport report;
    report.facts.input = "clip, \"one\".mp4";
    report.length_s = length_s;
    report.events = std::move(events);
    return report;
}

Policy failOn(ZEL::EventKind kind, double limit_s) {
    Policy policy;
    policy[indexOf(kind)] = limit_s;
    return policy;
}

const ZEL::Event kShortBlack{ZEL::EventKind::kBlack, {10.0, 12.0}, 1.0, false};
const ZEL::Event kLongBlack{ZEL::EventKind::kBlack, {50.0, 58.0}, 0.5, true};

TEST(ScanReport, TotalsAddUpPerKind) {
    const Totals black = totalsOf(reportOf({kShortBlack, kLongBlack}))[indexOf(ZEL::EventKind::kBlack)];
    EXPECT_EQ(black.events, 2U);
    EXPECT_DOUBLE_EQ(black.total_s, 10.0);
    EXPECT_DOUBLE_EQ(black.share, 0.1);
    EXPECT_DOUBLE_EQ(black.longest_s, 8.0);
    EXPECT_EQ(black.first_at_s, 10.0);
}

TEST(ScanReport, SharesAreOfTheDeclaredLengthUnlessThatIsAGuess) {
    InputReport report = reportOf({kShortBlack});
    report.facts.duration = 200.0;
    EXPECT_DOUBLE_EQ(totalsOf(report)[indexOf(ZEL::EventKind::kBlack)].share, 0.01);
    report.facts.duration_estimated = true;
    EXPECT_DOUBLE_EQ(totalsOf(report)[indexOf(ZEL::EventKind::kBlack)].share, 0.02);
    EXPECT_THAT(totalTable({report, report}, {}), HasSubstr(" 2.0%"));
}

TEST(ScanReport, PolicyLooksAtTheLongestEventOfAKind) {
    const InputReport report = reportOf({kShortBlack, kLongBlack});
    EXPECT_EQ(verdictOn(report, Policy{}), Verdict::kNone);
    EXPECT_EQ(verdictOn(report, failOn(ZEL::EventKind::kBlack, 8.0)), Verdict::kFail);
    EXPECT_EQ(verdictOn(report, failOn(ZEL::EventKind::kBlack, 8.1)), Verdict::kPass);
    EXPECT_EQ(verdictOn(report, failOn(ZEL::EventKind::kFreeze, 0.0)), Verdict::kPass);
    EXPECT_THAT(violations(report, failOn(ZEL::EventKind::kBlack, 2.0)),
                testing::ElementsAre("black for 8.000 s at 0:00:50.000 (limit 2 s)"));
}

TEST(ScanReport, EventAsLongAsTheLimitIsAViolationHoweverItsTimesWereRounded) {
    for (const double start_s : {0.32, 0.1, 8.04, 1234.56}) {
        const InputReport report =
            reportOf({{ZEL::EventKind::kBlack, {start_s, start_s + 2.0 - 1e-9}, 1.0, false}});
        EXPECT_EQ(verdictOn(report, failOn(ZEL::EventKind::kBlack, 2.0)), Verdict::kFail) << start_s;
    }
    EXPECT_EQ(verdictOn(reportOf({kShortBlack}), failOn(ZEL::EventKind::kBlack, 2.001)), Verdict::kPass);
}

TEST(ScanReport, TableTellsOfDamage) {
    InputReport report = reportOf({});
    EXPECT_THAT(inputTable(report, {}), testing::Not(HasSubstr("damaged")));
    report.counts.damaged = 225;
    EXPECT_THAT(inputTable(report, failOn(ZEL::EventKind::kBlack, 2.0)),
                testing::AllOf(HasSubstr("225 damaged packets or frames"), HasSubstr("PASS")));
}

TEST(ScanReport, WhatWasNotAnalysedToItsEndIsNeverAPass) {
    InputReport broken = reportOf({});
    broken.problem = "it broke off";
    const Policy policy = failOn(ZEL::EventKind::kBlack, 8.0);
    EXPECT_EQ(verdictOn(broken, policy), Verdict::kIncomplete);
    EXPECT_EQ(exitStatus({reportOf({}), reportOf({kLongBlack})}, policy), kViolated);
    EXPECT_EQ(exitStatus({reportOf({kLongBlack}), broken}, policy), kNotAnalysed);
    EXPECT_EQ(exitStatus({broken}, Policy{}), kNotAnalysed);
    EXPECT_EQ(exitStatus({reportOf({kLongBlack})}, Policy{}), kClean);
}

TEST(ScanReport, WritersQuoteNamesAndNeverPrintANumberThatIsNone) {
    const ZEL::Event odd{
        ZEL::EventKind::kBlack, {0.0, std::numeric_limits<double>::infinity()}, std::nan(""), false};
    EXPECT_THAT(eventLine("a\xff.mp4", odd),
                testing::AllOf(HasSubstr("\"end_s\":null"), HasSubstr("\"share\":null"),
                               HasSubstr("\xef\xbf\xbd.mp4")));
    const ZEL::Event early{ZEL::EventKind::kBlack, {-1e-9, 1.0}, 1.0, false};
    EXPECT_THAT(eventLine("a.mp4", early), HasSubstr("\"start_s\":0.0"));
    EXPECT_THAT(csvLine("a.mp4", early), HasSubstr("black,0.000000,1.000000"));
    EXPECT_EQ(csvLine("clip, \"one\".mp4", kShortBlack),
              "\"clip, \"\"one\"\".mp4\",black,10.000000,12.000000,2.000000,1.000000,false\n");
}

std::string contentOf(const std::string& path) {
    const auto bytes = support::readFile(path);
    return {bytes.begin(), bytes.end()};
}

void writeWhole(const std::string& path, bool overwrite, std::string_view text) {
    OutputFile file(path, overwrite, Appears::kWhenComplete);
    file.write(text);
    file.complete();
}

TEST(OutputFile, ReplacesWhatExistsOnlyWhenAskedFor) {
    const support::ScratchDir dir;
    const std::string path = dir.file("report.json");
    writeWhole(path, false, "first");
    EXPECT_THROW(OutputFile(path, false, Appears::kAtOnce), std::runtime_error);
    EXPECT_EQ(contentOf(path), "first");
    writeWhole(path, true, "2nd");
    EXPECT_EQ(contentOf(path), "2nd");
    std::filesystem::create_symlink(path, dir.file("link"));
    writeWhole(dir.file("link"), true, "third");
    EXPECT_EQ(contentOf(path), "third") << "where the link points to";
    EXPECT_THROW(OutputFile(dir.file("no/such/place"), false, Appears::kAtOnce), std::runtime_error);
    EXPECT_THROW(OutputFile(dir.file(""), true, Appears::kAtOnce), std::runtime_error);
}

TEST(OutputFile, NeverReplacesWhatCameMeanwhile) {
    const support::ScratchDir dir;
    const std::string path = dir.file("report.json");
    std::string message;
    {
        OutputFile file(path, false, Appears::kWhenComplete);
        file.write("hours of work");
        support::writeFile(path, {'x'});
        try {
            file.complete();
        } catch (const zel_monitor::OutputError& error) {
            message = error.what();
        }
    }
    EXPECT_EQ(contentOf(path), "x");
    std::filesystem::remove(path);
    const std::filesystem::directory_iterator kept(dir.file(""));
    ASSERT_NE(kept, std::filesystem::directory_iterator());
    EXPECT_EQ(contentOf(kept->path().string()), "hours of work");
    EXPECT_THAT(message, testing::AllOf(HasSubstr(kept->path().string()), HasSubstr(path + ": File exists")));
}

TEST(OutputFile, FollowsALinkThatPointsToNothingYet) {
    const support::ScratchDir dir;
    std::filesystem::create_symlink("inner", dir.file("outer"));
    std::filesystem::create_symlink("report.json", dir.file("inner"));
    EXPECT_TRUE(zel_monitor::writesOver(dir.file("outer"), dir.file("report.json")));
    EXPECT_THROW(OutputFile(dir.file("outer"), false, Appears::kAtOnce), std::runtime_error);
    writeWhole(dir.file("outer"), true, "first");
    EXPECT_TRUE(std::filesystem::is_symlink(dir.file("outer")));
    EXPECT_TRUE(std::filesystem::is_symlink(dir.file("inner")));
    EXPECT_EQ(contentOf(dir.file("report.json")), "first");
}

TEST(StandardStreams, WritingWaitsForADescriptorThatDoesNot) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    ASSERT_EQ(fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);
    const std::string text(1U << 20U, 'x');  // more than a pipe holds
    std::thread writer([&] {
        EXPECT_EQ(zel_monitor::writeAll(ends[1], text), 0);
        close(ends[1]);
    });
    std::string read_back;
    std::array<char, 4096> part{};
    for (ssize_t count = 0; (count = read(ends[0], part.data(), part.size())) > 0;) {
        read_back.append(part.data(), static_cast<size_t>(count));
    }
    writer.join();
    close(ends[0]);
    EXPECT_EQ(read_back, text);
}

TEST(OutputFile, LeavesNothingBehindThatBlocksTheNextRun) {
    const support::ScratchDir dir;
    const std::string path = dir.file("events.jsonl");
    for (const Appears appears : {Appears::kAtOnce, Appears::kWhenComplete}) {
        { const OutputFile empty(path, false, appears); }
        EXPECT_TRUE(std::filesystem::is_empty(dir.file("")));
    }
    {
        OutputFile file(path, false, Appears::kAtOnce);
        file.write("an event\n");
        EXPECT_EQ(contentOf(path), "an event\n") << "can be followed";
    }
    EXPECT_EQ(contentOf(path), "an event\n") << "what was found stays";
    OutputFile(dir.file("none.jsonl"), false, Appears::kAtOnce).complete();
    EXPECT_EQ(contentOf(dir.file("none.jsonl")), "");
}

TEST(FileNames, KnowWhenAnOutputWouldDestroyAnotherFile) {
    const support::ScratchDir dir;
    const std::string file = dir.file("a.mkv");
    support::writeFile(file, {'x'});
    std::filesystem::create_symlink(file, dir.file("link"));
    using zel_monitor::writesOver;
    EXPECT_TRUE(writesOver(dir.file("./a.mkv"), file));
    EXPECT_TRUE(writesOver(dir.file("link"), file));
    EXPECT_TRUE(writesOver(file, "file:" + file));
    EXPECT_TRUE(writesOver("new.html", "./new.html"));
    EXPECT_FALSE(writesOver(dir.file("b.mkv"), file));
    EXPECT_FALSE(writesOver("/dev/null", "/dev/null"));
    EXPECT_FALSE(writesOver("", "-"));
}

TEST(FileNames, AreShownWithoutControlCharacters) {
    EXPECT_EQ(zel_monitor::printable("a\x1b[2J"
                                     "b\n\x7f.mkv"),
              "a\\x1b[2Jb\\x0a\\x7f.mkv");
    EXPECT_EQ(zel_monitor::printable("\xc2\x9b"), "\xc2\\x9b");
    EXPECT_EQ(zel_monitor::printable("\u00dcbung \u00b0.mkv"), "\u00dcbung \u00b0.mkv");
}

TEST(ScanText, ReadsLengthsOfTime) {
    EXPECT_EQ(parseSeconds("0.5s"), 0.5);
    EXPECT_EQ(parseSeconds("500ms"), 0.5);
    EXPECT_EQ(parseSeconds("2m"), 120.0);
    EXPECT_EQ(parseSeconds("3"), 3.0);
    for (const char* const bad : {"", "s", "-1s", "1 s", "1x", "nan", "inf", "-0", "1e308h"}) {
        EXPECT_FALSE(parseSeconds(bad)) << bad;
    }
    EXPECT_EQ(clockText(3661.9996), "1:01:02.000");
    EXPECT_EQ(clockText(-61.5), "-0:01:01.500");
    EXPECT_EQ(clockText(-0.0004), "0:00:00.000");
}

TEST(ScanSeries, HalvesItsStepsInsteadOfGrowing) {
    Series series(1.0, 4);
    for (int i = 0; i < 16; ++i) {
        series.add(i, i);
    }
    EXPECT_EQ(series.step(), 4.0);
    ASSERT_EQ(series.size(), 4U);
    EXPECT_EQ(series.at(3), 13.5);
    series.add(-1.0, 5.0);
    EXPECT_EQ(series.at(0), 1.5);
}

TEST(ScanProgress, LineTellsSpeedAndTimeToGo) {
    EXPECT_EQ(progressText({.position_s = 30, .length_s = 120, .elapsed_s = 3, .events = 1}, 8),
              "[##......]  25% 0:00:30/0:02:00, 10.0x, 0:00:09 to go, 1 event");
    EXPECT_EQ(progressText({.position_s = 30, .length_s = {}, .elapsed_s = 3, .events = 2}, 8),
              "0:00:30, 10.0x, 2 events");
    EXPECT_EQ(progressText({.position_s = 30,
                            .length_s = {},
                            .elapsed_s = 3,
                            .events = 2,
                            .inputs = 4,
                            .inputs_done = 1,
                            .inputs_share = 0.375},
                           8),
              "[###.....]  38% 0:00:30, 10.0x, 0:00:05 to go, 2 events, input 2 of 4");
}

}  // namespace

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "scan/output_file.h"
#include "scan/progress.h"
#include "scan/report.h"
#include "scan/series.h"
#include "scan/text.h"
#include "scan/writers.h"
#include "support/clip.h"

namespace {

using namespace zel_monitor::scan;
using testing::HasSubstr;

InputReport reportOf(std::vector<Event> events, double length_s = 100.0) {
    InputReport report;
    report.facts.input = "clip, \"one\".mp4";
    report.length_s = length_s;
    report.events = std::move(events);
    return report;
}

Policy failOn(Kind kind, double limit_s) {
    Policy policy;
    policy[indexOf(kind)] = limit_s;
    return policy;
}

const Event kShortBlack{Kind::kBlack, {10.0, 12.0}, 1.0, false};
const Event kLongBlack{Kind::kBlack, {50.0, 58.0}, 0.5, true};

TEST(ScanReport, TotalsAddUpPerKind) {
    const Totals black = totalsOf(reportOf({kShortBlack, kLongBlack}))[indexOf(Kind::kBlack)];
    EXPECT_EQ(black.events, 2U);
    EXPECT_DOUBLE_EQ(black.total_s, 10.0);
    EXPECT_DOUBLE_EQ(black.share, 0.1);
    EXPECT_DOUBLE_EQ(black.longest_s, 8.0);
    EXPECT_EQ(black.first_at_s, 10.0);
}

TEST(ScanReport, PolicyLooksAtTheLongestEventOfAKind) {
    const InputReport report = reportOf({kShortBlack, kLongBlack});
    EXPECT_EQ(verdictOn(report, Policy{}), Verdict::kNone);
    EXPECT_EQ(verdictOn(report, failOn(Kind::kBlack, 8.0)), Verdict::kFail);
    EXPECT_EQ(verdictOn(report, failOn(Kind::kBlack, 8.1)), Verdict::kPass);
    EXPECT_EQ(verdictOn(report, failOn(Kind::kFreeze, 0.0)), Verdict::kPass);
    EXPECT_THAT(violations(report, failOn(Kind::kBlack, 2.0)),
                testing::ElementsAre("black for 8.000 s at 0:00:50.000 (limit 2 s)"));
}

TEST(ScanReport, EventAsLongAsTheLimitIsAViolationHoweverItsTimesWereRounded) {
    for (const double start_s : {0.32, 0.1, 8.04, 1234.56}) {
        const InputReport report = reportOf({{Kind::kBlack, {start_s, start_s + 2.0 - 1e-9}, 1.0, false}});
        EXPECT_EQ(verdictOn(report, failOn(Kind::kBlack, 2.0)), Verdict::kFail) << start_s;
    }
    EXPECT_EQ(verdictOn(reportOf({kShortBlack}), failOn(Kind::kBlack, 2.001)), Verdict::kPass);
}

TEST(ScanReport, TableTellsOfDamage) {
    InputReport report = reportOf({});
    EXPECT_THAT(inputTable(report, {}), testing::Not(HasSubstr("damaged")));
    report.counts.damaged = 225;
    EXPECT_THAT(inputTable(report, failOn(Kind::kBlack, 2.0)),
                testing::AllOf(HasSubstr("225 damaged packets or frames"), HasSubstr("PASS")));
}

TEST(ScanReport, WhatWasNotAnalysedToItsEndIsNeverAPass) {
    InputReport broken = reportOf({});
    broken.problem = "it broke off";
    const Policy policy = failOn(Kind::kBlack, 8.0);
    EXPECT_EQ(verdictOn(broken, policy), Verdict::kIncomplete);
    EXPECT_EQ(exitStatus({reportOf({}), reportOf({kLongBlack})}, policy), kViolated);
    EXPECT_EQ(exitStatus({reportOf({kLongBlack}), broken}, policy), kNotAnalysed);
    EXPECT_EQ(exitStatus({broken}, Policy{}), kNotAnalysed);
    EXPECT_EQ(exitStatus({reportOf({kLongBlack})}, Policy{}), kClean);
}

TEST(ScanReport, WritersQuoteNamesAndNeverPrintANumberThatIsNone) {
    const Event odd{Kind::kBlack, {0.0, std::numeric_limits<double>::infinity()}, std::nan(""), false};
    EXPECT_THAT(eventLine("a\xff.mp4", odd),
                testing::AllOf(HasSubstr("\"end_s\":null"), HasSubstr("\"share\":null"),
                               HasSubstr("\xef\xbf\xbd.mp4")));
    const Event early{Kind::kBlack, {-1e-9, 1.0}, 1.0, false};
    EXPECT_THAT(eventLine("a.mp4", early), HasSubstr("\"start_s\":0.0"));
    EXPECT_THAT(csvLine("a.mp4", early), HasSubstr("black,0.000000,1.000000"));
    EXPECT_EQ(csvLine("clip, \"one\".mp4", kShortBlack),
              "\"clip, \"\"one\"\".mp4\",black,10.000000,12.000000,2.000000,1.000000,false\n");
}

TEST(ScanReport, ExistingFileIsOverwrittenOnlyWhenAskedFor) {
    const support::ScratchDir dir;
    const std::string path = dir.file("report.json");
    OutputFile(path, false).write("first");
    EXPECT_THROW(OutputFile(path, false), std::runtime_error);
    OutputFile(path, true).write("2nd");
    EXPECT_EQ(support::readFile(path), std::vector<char>({'2', 'n', 'd'}));
    EXPECT_THROW(OutputFile(dir.file("no/such/place"), false), std::runtime_error);
}

TEST(ScanText, ReadsLengthsOfTime) {
    EXPECT_EQ(parseSeconds("0.5s"), 0.5);
    EXPECT_EQ(parseSeconds("500ms"), 0.5);
    EXPECT_EQ(parseSeconds("2m"), 120.0);
    EXPECT_EQ(parseSeconds("3"), 3.0);
    for (const char* const bad : {"", "s", "-1s", "1 s", "1x", "nan", "inf"}) {
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
    EXPECT_EQ(progressText({.position_s = 30, .length_s = {}, .elapsed_s = 3, .events = 2, .inputs = 3}, 8),
              "0:00:30, 10.0x, 2 events, input 1 of 3");
}

}  // namespace

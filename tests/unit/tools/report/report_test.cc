#include "report/report.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/exit_status.h"
#include "report/container_name.h"
#include "report/formats.h"

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

TEST(Report, TotalsAddUpPerKind) {
    const Totals black = totalsOf(reportOf({kShortBlack, kLongBlack}))[indexOf(ZEL::EventKind::kBlack)];
    EXPECT_EQ(black.events, 2U);
    EXPECT_DOUBLE_EQ(black.total_s, 10.0);
    EXPECT_DOUBLE_EQ(black.share, 0.1);
    EXPECT_DOUBLE_EQ(black.longest_s, 8.0);
    EXPECT_EQ(black.first_at_s, 10.0);
}

TEST(Report, SharesAreOfTheDeclaredLengthUnlessThatIsAGuess) {
    InputReport report = reportOf({kShortBlack});
    report.facts.duration = 200.0;
    EXPECT_DOUBLE_EQ(totalsOf(report)[indexOf(ZEL::EventKind::kBlack)].share, 0.01);
    report.facts.duration_estimated = true;
    EXPECT_DOUBLE_EQ(totalsOf(report)[indexOf(ZEL::EventKind::kBlack)].share, 0.02);
}

TEST(Report, PolicyLooksAtTheLongestEventOfAKind) {
    const InputReport report = reportOf({kShortBlack, kLongBlack});
    EXPECT_EQ(verdictOn(report, Policy{}), Verdict::kNone);
    EXPECT_EQ(verdictOn(report, failOn(ZEL::EventKind::kBlack, 8.0)), Verdict::kFail);
    EXPECT_EQ(verdictOn(report, failOn(ZEL::EventKind::kBlack, 8.1)), Verdict::kPass);
    EXPECT_EQ(verdictOn(report, failOn(ZEL::EventKind::kFreeze, 0.0)), Verdict::kPass);
    EXPECT_THAT(violations(report, failOn(ZEL::EventKind::kBlack, 2.0)),
                testing::ElementsAre("black for 8.000 s at 0:00:50.000 (limit 2 s)"));
}

TEST(Report, EventAsLongAsTheLimitIsAViolationHoweverItsTimesWereRounded) {
    for (const double start_s : {0.32, 0.1, 8.04, 1234.56}) {
        const InputReport report =
            reportOf({{ZEL::EventKind::kBlack, {start_s, start_s + 2.0 - 1e-9}, 1.0, false}});
        EXPECT_EQ(verdictOn(report, failOn(ZEL::EventKind::kBlack, 2.0)), Verdict::kFail) << start_s;
    }
    EXPECT_EQ(verdictOn(reportOf({kShortBlack}), failOn(ZEL::EventKind::kBlack, 2.001)), Verdict::kPass);
}

TEST(Report, WhatWasNotAnalysedToItsEndIsNeverAPass) {
    InputReport broken = reportOf({});
    broken.problem = "it broke off";
    const Policy policy = failOn(ZEL::EventKind::kBlack, 8.0);
    EXPECT_EQ(verdictOn(broken, policy), Verdict::kIncomplete);
    EXPECT_EQ(exitStatus({reportOf({}), reportOf({kLongBlack})}, policy), kExitViolated);
    EXPECT_EQ(exitStatus({reportOf({kLongBlack}), broken}, policy), kExitFailed);
    EXPECT_EQ(exitStatus({broken}, Policy{}), kExitFailed);
    InputReport unread = broken;
    unread.may_pass_later = true;
    EXPECT_EQ(exitStatus({unread, broken, reportOf({kShortBlack})}, policy), kExitTryAgain);
    EXPECT_EQ(exitStatus({unread, reportOf({kLongBlack})}, policy), kExitFailed);
    EXPECT_EQ(exitStatus({reportOf({kLongBlack})}, Policy{}), kExitDone);
}

/// What a format makes of one finished input, and of all.
std::string textOf(const ReportFormat& format, const InputReport& report, const Policy& policy = {}) {
    const ScanSettings settings{.policy = policy};
    return format.make(settings)->inputFinished(report, nullptr);
}
std::string endOf(const ReportFormat& format, const std::vector<InputReport>& reports) {
    const ScanSettings settings;
    return format.make(settings)->end(reports, kExitDone);
}

const ReportFormat& formatOf(const char* option) {
    return *std::find_if(kReportFormats.begin(), kReportFormats.end(), [&](const ReportFormat& format) {
        return option == nullptr ? format.option == nullptr
                                 : format.option != nullptr && std::string(option) == format.option;
    });
}

std::string eventText(const char* option, const std::string& input, const ZEL::Event& event) {
    const ScanSettings settings;
    return formatOf(option).make(settings)->event(input, event, false);
}

TEST(ReportFormats, TableTellsOfDamageAndOfTheContainerByItsUsualName) {
    InputReport report = reportOf({});
    EXPECT_THAT(textOf(formatOf(nullptr), report), testing::Not(HasSubstr("damaged")));
    report.counts.damaged = 225;
    for (const double start_s : {3.0, 61.0}) {
        report.damage.push_back({.what = "packets that cannot be decoded",
                                 .track = "audio",
                                 .span = {start_s, start_s + 1.0},
                                 .count = 25,
                                 .share = 1.0});
    }
    report.facts.container = "mov,mp4,m4a,3gp,3g2,mj2";
    EXPECT_THAT(
        textOf(formatOf(nullptr), report, failOn(ZEL::EventKind::kBlack, 2.0)),
        testing::AllOf(
            HasSubstr("damaged audio: packets that cannot be decoded, 50 in all, first at 0:00:03.000"),
            HasSubstr("PASS"), HasSubstr("MP4/MOV, 0:01:40.000 analysed")));
    EXPECT_EQ(containerName("mpegts"), "MPEG-TS");
    EXPECT_EQ(containerName("png_pipe"), "PNG image");
    EXPECT_EQ(containerName("no such"), "no such");
}

TEST(ReportFormats, TotalsAreOfWhatWasAnalysed) {
    InputReport cut = reportOf({kShortBlack});
    cut.facts.duration = 200.0;
    cut.problem = "it broke off";
    EXPECT_THAT(endOf(formatOf(nullptr), {cut, cut}),
                testing::AllOf(HasSubstr("2 inputs, 0:03:20.000 analysed: 2 not"), HasSubstr(" 2.0%")));
    InputReport empty = reportOf({{ZEL::EventKind::kShort, {1.0, 200.0}, 1.0, true}}, 1.0);
    EXPECT_THAT(endOf(formatOf(nullptr), {empty, empty}), HasSubstr(" 100.0%"));
    EXPECT_THAT(endOf(formatOf(nullptr), {reportOf({}), reportOf({})}), testing::Not(HasSubstr("kind")));
}

TEST(ReportFormats, NamesAreQuotedAndNoNumberIsNone) {
    const ZEL::Event odd{
        ZEL::EventKind::kBlack, {0.0, std::numeric_limits<double>::infinity()}, std::nan(""), false};
    EXPECT_THAT(eventText("--jsonl", "a\xff.mp4", odd),
                testing::AllOf(HasSubstr("\"end_s\":null"), HasSubstr("\"share\":null"),
                               HasSubstr("\xef\xbf\xbd.mp4")));
    const ZEL::Event early{ZEL::EventKind::kBlack, {-1e-9, 1.0}, 1.0, false};
    EXPECT_THAT(eventText("--jsonl", "a.mp4", early), HasSubstr("\"start_s\":0.0"));
    EXPECT_THAT(eventText("--csv", "a.mp4", early), HasSubstr("black,0.000000,1.000000"));
    EXPECT_EQ(eventText("--csv", "clip, \"one\".mp4", kShortBlack),
              "\"clip, \"\"one\"\".mp4\",black,10.000000,12.000000,2.000000,1.000000,false,,,,,\n");
}

TEST(ReportFormats, LinesHoldTheStatusOfEveryInput) {
    InputReport broken = reportOf({});
    broken.problem = "cut, or \"cut off\"";
    EXPECT_EQ(textOf(formatOf("--csv"), broken),
              "\"clip, \"\"one\"\".mp4\",status,,,,,,,,false,\"cut, or \"\"cut off\"\"\",\n");
    EXPECT_THAT(textOf(formatOf("--csv"), reportOf({}), failOn(ZEL::EventKind::kBlack, 2.0)),
                testing::EndsWith(",status,,,,,,,,true,,pass\n"));
    EXPECT_EQ(textOf(formatOf("--jsonl"), broken, failOn(ZEL::EventKind::kBlack, 2.0)),
              "{\"input\":\"clip, \\\"one\\\".mp4\",\"kind\":\"status\",\"complete\":false,"
              "\"problem\":\"cut, or \\\"cut off\\\"\",\"verdict\":\"incomplete\"}\n");
}

}  // namespace

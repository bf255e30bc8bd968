#include "session/result_accounting.h"

#include <algorithm>
#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "session/heartbeat_report.h"
#include "support/wait.h"

namespace {

using Counters = std::map<std::string, int32_t>;
using ZEL::DetectorCall;
using ZEL::ResultAccounting;
using ZELAlgo::kAudioComplete;
using ZELAlgo::kAudioFilling;
using ZELAlgo::kExposureNormal;
using ZELAlgo::kExposureOver;
using ZELAlgo::kExposureUnder;
using ZELAlgo::kScreenBlack;
using ZELAlgo::kScreenGreen;
using ZELAlgo::kScreenNormal;
using ZELAlgo::ZELAudioResult;
using ZELAlgo::ZELVideoResult;

constexpr DetectorCall kCall{true, 0.0012344};

ZELVideoResult screen(uint32_t type) {
    ZELVideoResult result{};
    result.screen_type = type;
    return result;
}

TEST(ResultAccounting, TheFirstEventOfAKindCountsAsZero) {
    ResultAccounting accounting({});
    for (int i = 0; i < 3; ++i) {
        accounting.account(kCall, screen(kScreenBlack));
    }
    EXPECT_EQ(accounting.snapshot().counters, (Counters{{"black_cnt", 2}}));
}

TEST(ResultAccounting, EveryVerdictHasItsCounter) {
    ResultAccounting accounting({});
    accounting.account(kCall, screen(kScreenNormal));
    EXPECT_TRUE(accounting.snapshot().counters.empty());
    accounting.account(kCall, ZELVideoResult{0, kScreenBlack, kExposureUnder, true, true});
    accounting.account(kCall, ZELVideoResult{0, kScreenGreen, kExposureOver, true, false});
    EXPECT_EQ(accounting.snapshot().counters, (Counters{{"black_cnt", 0},
                                                        {"greenscreen_cnt", 0},
                                                        {"block_cnt", 1},
                                                        {"staticframe_cnt", 0},
                                                        {"underexposure_cnt", 0},
                                                        {"overexposure_cnt", 0}}));
}

TEST(ResultAccounting, OnlyACompleteAudioPeriodCounts) {
    ResultAccounting accounting({});
    ZELAudioResult result{kAudioFilling, 0.75F, 600, 40, 1, 1, 1, 1};
    accounting.account(kCall, result);
    result.status = ZELAlgo::kAudioNoResult;
    accounting.account(kCall, result);
    EXPECT_TRUE(accounting.snapshot().counters.empty());
    EXPECT_TRUE(accounting.snapshot().gauges.empty());

    result.status = kAudioComplete;
    accounting.account(kCall, result);
    const Counters zeros{{"mute_cnt", 0}, {"low_voice_cnt", 0}, {"high_voice_cnt", 0}, {"no_voice_cnt", 0}};
    EXPECT_EQ(accounting.snapshot().counters, zeros);
    EXPECT_EQ(accounting.snapshot().gauges,
              (Counters{{"voice_level_longtime", 600}, {"audio_level", 40}, {"voice_scale_longtime", 0}}));

    accounting.account(kCall, ZELAudioResult{kAudioComplete, 1.0F, 7, 8, 0, 0, 0, 0});
    EXPECT_EQ(accounting.snapshot().counters, zeros);
    EXPECT_EQ(accounting.snapshot().gauges,
              (Counters{{"voice_level_longtime", 7}, {"audio_level", 8}, {"voice_scale_longtime", 1}}));
}

TEST(ResultAccounting, EveryAudioFlagHasItsOwnCounter) {
    ResultAccounting accounting({});
    for (int events = 1;
         const auto flag : {&ZELAudioResult::is_mute, &ZELAudioResult::is_low_voicelevel,
                            &ZELAudioResult::is_high_voicelevel, &ZELAudioResult::is_novoice_longtime}) {
        ZELAudioResult result{};
        result.status = kAudioComplete;
        result.*flag = 1;
        for (int i = 0; i < events; ++i) {
            accounting.account(kCall, result);
        }
        ++events;
    }
    EXPECT_EQ(accounting.snapshot().counters,
              (Counters{{"mute_cnt", 0}, {"low_voice_cnt", 1}, {"high_voice_cnt", 2}, {"no_voice_cnt", 3}}));
}

TEST(ResultAccounting, ASnapshotHoldsAllEventsOfAFrameOrNone) {
    ResultAccounting accounting({});
    std::atomic<bool> done{false};
    const std::jthread worker([&] {
        while (!done) {
            accounting.account(kCall, ZELVideoResult{0, kScreenBlack, kExposureOver, true, true});
        }
    });
    int torn = 0;
    for (int i = 0; i < 20'000; ++i) {
        const Counters counters = accounting.snapshot().counters;
        torn += std::all_of(counters.begin(), counters.end(),
                            [&](const auto& entry) { return entry.second == counters.begin()->second; })
                    ? 0
                    : 1;
    }
    done = true;
    EXPECT_EQ(torn, 0);
}

TEST(ResultAccounting, PublishesExactlyTheDetailKeysWhenAsked) {
    class Owner : public ZEL::CObject {};
    const auto center = std::make_shared<ZEL::MessageCenter>();
    ResultAccounting accounting(center);
    std::mutex mutex;
    std::map<std::string, ReportMap> received;
    support::Count messages;
    const auto owner = std::make_shared<Owner>();
    for (const char* name : {"ZELMsgVideoFrameResult", "ZELMsgAudioFrameResult"}) {
        center->registerListener(name, owner, [&](const std::shared_ptr<ZEL::Message>& message) {
            const std::lock_guard<std::mutex> lock(mutex);
            received[message->name()] = message->payload();
            messages.add();
        });
    }
    accounting.account(kCall, screen(kScreenBlack));  // not yet asked for
    accounting.setPublish(true);
    accounting.account({false, 0.0012344}, ZELVideoResult{9, kScreenGreen, kExposureNormal, true, false});
    accounting.account(kCall, ZELAudioResult{kAudioFilling, 0.5F, 1, 2, 1, 0, 1, 0});  // period still filling
    accounting.account(kCall, ZELAudioResult{kAudioComplete, 0.5F, 0xFFFFFFFFU, 2, 1, 0, 1, 0});
    ASSERT_TRUE(messages.waitFor(2));
    center->stop();
    EXPECT_EQ(messages.value(), 2);
    EXPECT_EQ(received["ZELMsgVideoFrameResult"], (ReportMap{{"detect_res", "0"},
                                                             {"screen_type", "2"},
                                                             {"is_block", "1"},
                                                             {"is_staticframe", "0"},
                                                             {"exposure_type", "0"},
                                                             {"process_time", "0.001234"}}));
    EXPECT_EQ(received["ZELMsgAudioFrameResult"], (ReportMap{{"detect_res", "1"},
                                                             {"voice_level_longtime", "-1"},
                                                             {"audio_level", "2"},
                                                             {"is_mute", "1"},
                                                             {"is_low_voicelevel", "0"},
                                                             {"is_high_voicelevel", "1"},
                                                             {"is_novoice_longtime", "0"},
                                                             {"process_time", "0.001234"}}));
}

TEST(ResultAccounting, PublishesNowhereOnceTheCentreIsGone) {
    auto center = std::make_shared<ZEL::MessageCenter>();
    ResultAccounting accounting(center);
    accounting.setPublish(true);
    center->stop();
    center.reset();
    accounting.account(kCall, screen(kScreenBlack));
    EXPECT_EQ(accounting.snapshot().counters.size(), 1U);
}

TEST(HeartbeatReport, OfAnIdleSessionHasExactlyTheSevenSessionKeys) {
    EXPECT_EQ(ZEL::HeartbeatReport().fields(-42, {}, {}), (ReportMap{{"zel_heartbeat_seq", "0"},
                                                                     {"zel_token", "-42"},
                                                                     {"zel_vframes", "0"},
                                                                     {"zel_vframes_time", "0.000000"},
                                                                     {"zel_aframes", "0"},
                                                                     {"zel_aframes_time", "0.000000"},
                                                                     {"zel_fail_count", "0"}}));
}

TEST(HeartbeatReport, ReportsRisesOfCountersAndLatestGauges) {
    ZEL::HeartbeatReport heartbeat;
    const auto next = [&heartbeat](const Counters& counters, const Counters& gauges) {
        ReportMap report = heartbeat.fields(1, {}, {counters, gauges});
        heartbeat.closePeriod({counters, gauges});
        return report;
    };
    EXPECT_EQ(next({{"black_cnt", 4}}, {{"audio_level", 70}}).at("zel_black_cnt"), "4");
    const ReportMap second = next({{"black_cnt", 9}, {"block_cnt", 0}}, {{"audio_level", 70}});
    EXPECT_EQ(second.at("zel_black_cnt"), "5");
    EXPECT_EQ(second.at("zel_block_cnt"), "0");
    EXPECT_EQ(second.at("zel_audio_level"), "70");
    const ReportMap quiet = next({{"black_cnt", 9}, {"block_cnt", 0}}, {{"audio_level", 65}});
    EXPECT_EQ(quiet.at("zel_black_cnt"), "0");
    EXPECT_EQ(quiet.at("zel_audio_level"), "65");
    EXPECT_EQ(quiet.at("zel_heartbeat_seq"), "2");
}

TEST(HeartbeatReport, OverTheWholeLifeHoldsTotalsAndRawCountersOnly) {
    ZEL::IntakeStat intake;
    intake.add<uint64_t>(&ZEL::AlgoStat::vframes, 3);
    intake.add(&ZEL::AlgoStat::vframes_time, 0.25);
    intake.addFailure();
    EXPECT_EQ(intake.closePeriod().vframes, 3U);
    EXPECT_EQ(intake.closePeriod().vframes, 0U);
    EXPECT_EQ(ZEL::HeartbeatReport::wholeLife(intake.total(), {{{"black_cnt", 9}}, {{"audio_level", 70}}}),
              (ReportMap{{"zel_vframes", "3"},
                         {"zel_vframes_time", "0.250000"},
                         {"zel_aframes", "0"},
                         {"zel_aframes_time", "0.000000"},
                         {"zel_fail_count", "1"},
                         {"zel_black_cnt", "9"}}));
}

}  // namespace

#include "serve/live_analysis.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/log_capture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using zel_monitor::ComplaintReason;
using zel_monitor::ItemComplaint;
using zel_monitor::MediaItem;

constexpr double kFrameS = 0.04;
constexpr size_t kSize = 64;

/// Frames that change and sound, analysed as they come.
class Live : public zel_monitor::AlarmSink {
  public:
    explicit Live(const zel_monitor::StreamSettings& settings)
        : book_("a", {}, settings.rules, *this), analysis_(settings, {}, book_, history_) {}

    void take(const zel_monitor::Alarm& alarm) override {
        told.push_back((alarm.isCleared() ? "-" : "+") + std::string(zel_monitor::alarmName(alarm.kind)));
        has_evidence = alarm.evidence.has_value();
    }

    /// One frame and its sound; of frames that are left out, one in `step` is examined.
    void play(int number, int step = 1, std::vector<ItemComplaint> complaints = {}) {
        const double time_s = number * kFrameS;
        const zel_monitor::Moment now{
            std::chrono::steady_clock::time_point(zel_monitor::steadySeconds(time_s)),
            std::chrono::system_clock::time_point(zel_monitor::wallSeconds(time_s))};
        for (size_t i = 0; i < luma_.size(); ++i) {
            luma_[i] = static_cast<uint8_t>(50 + i / kSize + static_cast<size_t>(number) * 7 % 60);
        }
        for (size_t i = 0; i < samples_.size(); ++i) {
            samples_[i] = i % 16 < 8 ? int16_t{2000} : int16_t{-2000};
        }
        MediaItem frame =
            zel_monitor::VideoFrame{.time = time_s,
                                    .duration = kFrameS,
                                    .planes = {.width = kSize,
                                               .height = kSize,
                                               .data = {luma_.data(), chroma_.data(), chroma_.data()},
                                               .stride = {kSize, kSize / 2, kSize / 2}},
                                    .frame = nullptr,
                                    .notes = {.complaints = std::move(complaints)}};
        analysis_.saw(frame, now);
        if (number % step == 0) {
            analysis_.feed(std::get<zel_monitor::VideoFrame>(frame), step > 1 ? step * kFrameS : 0.0);
        }
        MediaItem sound = zel_monitor::AudioFrame{.time = time_s,
                                                  .sample_rate = 8000,
                                                  .channels = 1,
                                                  .samples = static_cast<int>(samples_.size()),
                                                  .data = samples_.data(),
                                                  .buffer = nullptr};
        analysis_.saw(sound, now);
        analysis_.feed(std::get<zel_monitor::AudioFrame>(sound));
    }

    std::vector<std::string> told;
    bool has_evidence = false;  ///< of the last alarm

  private:
    const support::LogCapture quiet_;
    std::array<uint8_t, kSize * kSize> luma_{};
    std::array<uint8_t, kSize* kSize / 4> chroma_ = [] {
        std::array<uint8_t, kSize * kSize / 4> grey;
        grey.fill(128);
        return grey;
    }();
    std::array<int16_t, 320> samples_{};
    zel_monitor::AlarmBook book_;
    zel_monitor::History history_;
    zel_monitor::LiveAnalysis analysis_;
};

/// Stalls are told, and damage if wanted.
zel_monitor::StreamSettings withDamage(bool is_told) {
    zel_monitor::StreamSettings settings;
    settings.rules = zel_monitor::defaultAlarmRules();
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        settings.rules[indexOf(info.kind)].enabled =
            info.kind == ZEL::EventKind::kStall || (is_told && info.kind == ZEL::EventKind::kDamage);
    }
    return settings;
}

TEST(LiveAnalysis, TakesFramesThatWereLeftOutForNoGap) {
    Live live(withDamage(true));
    for (int i = 0; i < 400; ++i) {
        live.play(i, i < 100 || i > 300 ? 1 : 10);
    }
    EXPECT_THAT(live.told, IsEmpty());
}

TEST(LiveAnalysis, TellsDamageOfFramesAlsoIfTheyAreLeftOutUnlessItIsOff) {
    for (const bool is_told : {true, false}) {
        Live live(withDamage(is_told));
        for (int i = 0; i < 200; ++i) {
            const ItemComplaint broken{ComplaintReason::kDecodingError, 0.0, kFrameS, 0.5};
            live.play(i, i < 40 ? 1 : 10, i == 55 ? std::vector{broken} : std::vector<ItemComplaint>{});
        }
        if (is_told) {
            EXPECT_THAT(live.told, ElementsAre("+damage", "-damage"));
            EXPECT_TRUE(live.has_evidence);
        } else {
            EXPECT_THAT(live.told, IsEmpty());
        }
    }
}

}  // namespace

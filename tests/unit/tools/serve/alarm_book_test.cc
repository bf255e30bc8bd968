#include "serve/alarm_book.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/backoff.h"
#include "serve/lag_meter.h"
#include "serve/play_out.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using zel_monitor::Alarm;
using zel_monitor::AlarmBook;
using zel_monitor::AlarmKind;
using zel_monitor::alarmName;
using zel_monitor::Cleared;
using zel_monitor::kNoSignal;
using zel_monitor::Moment;

constexpr AlarmKind kBlack = indexOf(ZEL::EventKind::kBlack);
constexpr AlarmKind kMute = indexOf(ZEL::EventKind::kMute);

class Heard : public zel_monitor::AlarmSink {
  public:
    void take(const Alarm& alarm) override { alarms.push_back(alarm); }

    /// "+black", "-black over" and so on, since the last call.
    std::vector<std::string> told() {
        std::vector<std::string> words;
        for (; told_ < alarms.size(); ++told_) {
            const Alarm& alarm = alarms[told_];
            const std::string name(alarmName(alarm.kind));
            words.push_back(alarm.isCleared() ? "-" + name + " " + std::string(nameOf(alarm.reason))
                                              : "+" + name);
        }
        return words;
    }

    std::vector<Alarm> alarms;

  private:
    size_t told_ = 0;
};

struct Booked {
    explicit Booked(double cooldown_s = 0.0)
        : book("news", {{"site", "north"}}, rulesWith(cooldown_s), heard) {}

    static zel_monitor::PerAlarmKind<zel_monitor::AlarmRule> rulesWith(double cooldown_s) {
        auto rules = zel_monitor::defaultAlarmRules();
        rules[kBlack].cooldown_s = cooldown_s;
        rules[kMute].enabled = false;
        return rules;
    }
    static Moment at(double s) {
        return {std::chrono::steady_clock::time_point(zel_monitor::steadySeconds(1000.0 + s)),
                std::chrono::system_clock::time_point(zel_monitor::wallSeconds(1e9 + s))};
    }

    Heard heard;
    AlarmBook book;
};

TEST(AlarmBook, FaultsOfOneMomentHaveIdsOfTheirOwn) {
    Booked b;
    for (int i = 0; i < 2; ++i) {
        b.book.begin(kBlack, 0.5, {}, Booked::at(10.0));
        b.book.end(kBlack, 0.0, Cleared::kOver, Booked::at(10.0));
    }
    ASSERT_EQ(b.heard.alarms.size(), 4U);
    EXPECT_NE(b.heard.alarms[0].id, b.heard.alarms[2].id);
}

TEST(AlarmBook, RaisesAndClearsOnceWithTheTimesOfTheFault) {
    Booked b;
    b.book.begin(kBlack, 0.5, {.detail = "why", .evidence = ZEL::Evidence{0.99, 0.98}}, Booked::at(10.0));
    b.book.begin(kBlack, 0.6, {.detail = "why"}, Booked::at(10.1));
    b.book.begin(kMute, 1.0, {}, Booked::at(10.0));  // not asked for
    b.book.tick(Booked::at(11.0));
    EXPECT_NEAR(b.book.tallies(Booked::at(12.0))[kBlack].seconds, 2.5, 1e-6);
    b.book.measured(kBlack, ZEL::Evidence{0.985, 0.98});
    b.book.end(kBlack, 0.25, Cleared::kOver, Booked::at(13.0));
    b.book.end(kBlack, 0.25, Cleared::kOver, Booked::at(13.0));
    EXPECT_THAT(b.heard.told(), ElementsAre("+black", "-black over"));
    const Alarm& raised = b.heard.alarms[0];
    const Alarm& cleared = b.heard.alarms[1];
    EXPECT_EQ(raised.id, cleared.id);
    EXPECT_EQ(raised.detail, "why");
    EXPECT_EQ(alarmJson(raised)["evidence"]["value"], 0.99);
    EXPECT_EQ(alarmJson(cleared)["evidence"]["value"], 0.985);
    EXPECT_EQ(alertJson(cleared, {})["annotations"]["evidence"],
              "0.985 share of the frame that is black (limit 0.98)");
    EXPECT_EQ(raised.began, Booked::at(9.5).wall);
    EXPECT_EQ(cleared.began, raised.began);
    EXPECT_EQ(cleared.ended, Booked::at(12.75).wall);
    const auto tally = b.book.tallies(Booked::at(20.0))[kBlack];
    EXPECT_EQ(tally.raised, 1U);
    EXPECT_FALSE(tally.active);
    EXPECT_NEAR(tally.seconds, 3.5, 1e-6);  // never less than what was told while it was active
}

TEST(AlarmBook, TellsLaterWhatIsStillThereAfterGraceAndCoolDown) {
    Booked b(5.0);
    b.book.beginGrace(Booked::at(2.0).steady);
    b.book.begin(kBlack, 0.5, {}, Booked::at(0.5));
    b.book.end(kBlack, 0.0, Cleared::kOver, Booked::at(1.0));
    b.book.begin(kBlack, 0.5, {}, Booked::at(1.5));
    b.book.begin(kNoSignal, 3.0, {}, Booked::at(1.5));
    EXPECT_THAT(b.heard.told(), ElementsAre("+no-signal"));
    b.book.tick(Booked::at(2.0));
    b.book.end(kBlack, 0.0, Cleared::kOver, Booked::at(3.0));
    EXPECT_THAT(b.heard.told(), ElementsAre("+black", "-black over"));
    b.book.begin(kBlack, 0.5, {}, Booked::at(4.0));
    b.book.end(kBlack, 0.0, Cleared::kOver, Booked::at(5.0));
    b.book.begin(kBlack, 0.5, {}, Booked::at(6.0));
    b.book.tick(Booked::at(7.9));
    EXPECT_THAT(b.heard.told(), IsEmpty());
    b.book.tick(Booked::at(8.0));
    EXPECT_THAT(b.heard.told(), ElementsAre("+black"));
}

TEST(AlarmBook, ALostSignalEndsFaultsAndAClosedBookAll) {
    Booked b;
    b.book.begin(kBlack, 0.5, {}, Booked::at(0.0));
    b.book.endAll(Cleared::kSignalLost, Booked::at(3.0));
    b.book.begin(kNoSignal, 3.0, {}, Booked::at(3.0));
    b.book.end(kBlack, 0.0, Cleared::kDisconnected, Booked::at(4.0));
    b.book.begin(kBlack, 0.5, {}, Booked::at(5.0));
    EXPECT_THAT(b.heard.told(), ElementsAre("+black", "-black signal lost", "+no-signal", "+black"));
    b.book.close(Booked::at(6.0));
    b.book.begin(kBlack, 0.5, {}, Booked::at(7.0));
    b.book.tick(Booked::at(8.0));
    EXPECT_THAT(b.heard.told(), ElementsAre("-black stopped", "-no-signal stopped"));
}

TEST(Backoff, GrowsWithJitterToItsMostAndBeginsAnew) {
    zel_monitor::Backoff backoff(1.0, 5.0, 7);
    for (int round = 0; round < 2; ++round) {
        for (const double whole_s : {1.0, 2.0, 4.0, 5.0, 5.0}) {
            const double wait_s = backoff.next();
            EXPECT_GE(wait_s, whole_s / 2.0);
            EXPECT_LE(wait_s, whole_s);
        }
        backoff.reset();
    }
    zel_monitor::Backoff other(1.0, 5.0, 8);
    EXPECT_NE(backoff.next(), other.next());
}

TEST(LagMeter, TellsASlowReaderFromAnInputThatWaits) {
    zel_monitor::LagMeter slow;
    EXPECT_EQ(slow.update(0.0, 10.0, 1.0), 0.0);
    EXPECT_NEAR(slow.update(1.0, 11.5, 0.2), 0.5, 1e-9);  // 0.2 s for a frame: working, not waiting
    EXPECT_NEAR(slow.update(2.0, 12.2, 0.01), 0.2, 1e-9);
    zel_monitor::LagMeter bursts;  // segments of 6 s, each at once when it is there
    bursts.update(0.0, 10.0, 1.0);
    EXPECT_EQ(bursts.update(5.9, 10.1, 0.01), 0.0);
    EXPECT_EQ(bursts.update(6.0, 16.0, 5.9), 0.0);
    EXPECT_EQ(bursts.update(11.9, 16.1, 0.01), 0.0);
}

TEST(PlayOut, HoldsTheSignalWhileSegmentsLastAndTellsWhatWasLeftBehind) {
    zel_monitor::PlayOut segments;
    for (double s = 0.0; s < 6.0; s += 0.04) {
        segments.update(s, 10.0 + s / 100.0, s == 0.0 ? 2.0 : 0.001);
    }
    EXPECT_NEAR(segments.update(6.0, 10.06, 0.001), 16.0, 1e-9);
    EXPECT_FALSE(segments.isLive());  // all of it may be old
    EXPECT_NEAR(segments.update(6.04, 16.1, 6.0), 16.1, 1e-9);
    EXPECT_TRUE(segments.isLive());
    EXPECT_NEAR(segments.update(12.0, 16.2, 0.001), 22.06, 1e-9);

    zel_monitor::PlayOut steady;  // its clock is a thousandth faster than ours
    for (int i = 0; i < 100'000; ++i) {
        const double now_s = i * 0.04;
        ASSERT_LT(steady.update(now_s * 1.001, now_s, 0.03), now_s + 0.5);
        ASSERT_TRUE(steady.isLive());
    }
}

}  // namespace

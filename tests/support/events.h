#ifndef ZEL_TESTS_SUPPORT_EVENTS_H_
#define ZEL_TESTS_SUPPORT_EVENTS_H_

#include <zel/events/event.h>
#include <zel/events/listener.h>

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace support {

inline auto isEvent(ZEL::EventKind kind, double start, double end, bool open = false) {
    using testing::AllOf;
    using testing::DoubleNear;
    using testing::Field;
    return AllOf(Field("kind", &ZEL::Event::kind, kind), Field("open_at_end", &ZEL::Event::open_at_end, open),
                 Field("span", &ZEL::Event::span,
                       AllOf(Field("start", &ZEL::TimeSpan::start_s, DoubleNear(start, 1e-6)),
                             Field("end", &ZEL::TimeSpan::end_s, DoubleNear(end, 1e-6)))));
}

/// Keeps what a listener hears, and expects of every kind that it is raised before it is cleared, once each.
class EventRecorder : public ZEL::EventListener {
  public:
    struct Raise {
        ZEL::EventKind kind;
        double start_s;
        double noticed_s;
    };
    struct Gap {
        ZEL::StreamTrack track;
        ZEL::TimeSpan span;
    };

    void onSuspected(ZEL::EventKind kind) override { ++suspected[indexOf(kind)]; }
    void onRaised(ZEL::EventKind kind, double start_s, double noticed_s) override {
        EXPECT_FALSE(open[indexOf(kind)]) << infoOf(kind).name << " is raised twice at " << start_s;
        EXPECT_GT(suspected[indexOf(kind)], 0) << infoOf(kind).name;
        EXPECT_LE(start_s, noticed_s);
        open[indexOf(kind)] = true;
        raised.push_back({kind, start_s, noticed_s});
    }
    void onCleared(const ZEL::Event& event) override {
        EXPECT_TRUE(open[indexOf(event.kind)]) << infoOf(event.kind).name << " was not raised";
        open[indexOf(event.kind)] = false;
        (event.counts() ? events : thinned).push_back(event);
    }
    void onGap(ZEL::StreamTrack track, ZEL::TimeSpan span) override { gaps.push_back({track, span}); }
    void onFrame(const ZEL::FrameMeasurement& frame) override { frames.push_back(frame); }

    std::vector<ZEL::Event> eventsOf(ZEL::EventKind kind) const {
        std::vector<ZEL::Event> found;
        for (const ZEL::Event& event : events) {
            if (event.kind == kind) {
                found.push_back(event);
            }
        }
        return found;
    }

    std::vector<Raise> raised;
    std::vector<ZEL::Event> events;   ///< those that count
    std::vector<ZEL::Event> thinned;  ///< those that do not
    std::vector<Gap> gaps;
    std::vector<ZEL::FrameMeasurement> frames;
    ZEL::PerEventKind<int> suspected{};
    ZEL::PerEventKind<bool> open{};
};

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_EVENTS_H_

#include <zel/events/kinds.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <functional>
#include <gst/audio/audio.h>
#include <gst/check/gstharness.h>
#include <gst/video/video.h>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/random.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr GstClockTime kFrame = GST_SECOND / 25;

/// One element between a source and a sink of the test's own, and what it posted on its bus.
class Pipe {
  public:
    Pipe(const char* element, const std::string& caps)
        : harness_(gst_harness_new(element)), bus_(gst_bus_new()) {
        gst_element_set_bus(harness_->element, bus_);
        setCaps(caps);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() {
        gst_element_set_bus(harness_->element, nullptr);
        gst_object_unref(bus_);
        gst_harness_teardown(harness_);
    }

    void setCaps(const std::string& caps) { gst_harness_set_src_caps_str(harness_, caps.c_str()); }
    void send(GstEvent* event) { EXPECT_TRUE(gst_harness_push_event(harness_, event)); }
    void sendUpstream(GstEvent* event) { gst_harness_push_upstream_event(harness_, event); }
    template <typename Value>
    void set(const char* property, Value value) {
        g_object_set(harness_->element, property, value, nullptr);
    }

    /// Sends a buffer, of which the very same comes out.
    void push(GstBuffer* buffer, GstClockTime pts, GstClockTime duration) {
        GST_BUFFER_PTS(buffer) = pts;
        GST_BUFFER_DURATION(buffer) = duration;
        ASSERT_EQ(gst_harness_push(harness_, buffer), GST_FLOW_OK);
        GstBuffer* const out = gst_harness_try_pull(harness_);
        ASSERT_EQ(out, buffer);
        gst_buffer_unref(out);
    }

    using Message = std::unique_ptr<GstStructure, decltype(&gst_structure_free)>;
    /// What was posted since the last call and has this name.
    std::vector<Message> take(const std::string& name) {
        std::vector<Message> messages;
        while (GstMessage* const message = gst_bus_pop_filtered(bus_, GST_MESSAGE_ELEMENT)) {
            const GstStructure* const told = gst_message_get_structure(message);
            if (gst_structure_has_name(told, name.c_str())) {
                messages.emplace_back(gst_structure_copy(told), &gst_structure_free);
            }
            gst_message_unref(message);
        }
        return messages;
    }

    /// The same as words: "+black@1.00" was raised, "-black@1.00+2.00" was cleared.
    std::vector<std::string> events() {
        std::vector<std::string> words;
        while (GstMessage* const message = gst_bus_pop_filtered(bus_, GST_MESSAGE_ELEMENT)) {
            const GstStructure* const told = gst_message_get_structure(message);
            const std::string kind = textOf(told, "kind") + "@" + seconds(told, "running-time");
            if (gst_structure_has_name(told, "zel-event-raised")) {
                words.push_back("+" + kind);
            } else if (gst_structure_has_name(told, "zel-event-cleared")) {
                words.push_back("-" + kind + "+" + seconds(told, "duration"));
            }
            gst_message_unref(message);
        }
        return words;
    }

    static std::string textOf(const GstStructure* told, const char* field) {
        const char* const text = gst_structure_get_string(told, field);
        return text != nullptr ? text : "";
    }
    static std::string seconds(const GstStructure* told, const char* field) {
        guint64 time = GST_CLOCK_TIME_NONE;
        if (gst_structure_get_uint64(told, field, &time) == FALSE || !GST_CLOCK_TIME_IS_VALID(time)) {
            return "none";
        }
        const std::string text = std::to_string(static_cast<double>(time) / GST_SECOND);
        return text.substr(0, text.find('.') + 3);
    }

  private:
    GstHarness* const harness_;
    GstBus* const bus_;
};

std::string videoCaps(const std::string& format = "I420", const std::string& size = "width=64,height=48") {
    return "video/x-raw,format=" + format + "," + size + ",framerate=25/1";
}

/// A film of noise and of black frames, whatever the caps.
class Film : public Pipe {
  public:
    explicit Film(const std::string& caps = videoCaps(), const char* element = "zelvideo")
        : Pipe(element, caps) {
        use(caps);
    }

    void use(const std::string& caps) {
        GstCaps* const parsed = gst_caps_from_string(caps.c_str());
        EXPECT_TRUE(gst_video_info_from_caps(&info_, parsed));
        gst_caps_unref(parsed);
        setCaps(caps);
    }

    void black(int frames) { show(frames, true); }
    void noise(int frames) { show(frames, false); }
    void skip(GstClockTime time) { pts_ += time; }
    void seekTo(GstClockTime pts) { pts_ = pts; }

  private:
    void show(int frames, bool black) {
        for (int i = 0; i < frames; ++i, pts_ += kFrame) {
            GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, info_.size, nullptr);
            gst_buffer_memset(buffer, 0, 128, info_.size);
            const auto luma = static_cast<gsize>(GST_VIDEO_INFO_PLANE_STRIDE(&info_, 0) * info_.height);
            GstMapInfo map;
            ASSERT_TRUE(gst_buffer_map(buffer, &map, GST_MAP_WRITE));
            for (gsize at = 0; at < luma; ++at) {
                map.data[at] = black ? 16 : random_.byte();
            }
            gst_buffer_unmap(buffer, &map);
            push(buffer, pts_, kFrame);
        }
    }

    GstVideoInfo info_{};
    GstClockTime pts_ = 0;
    support::Random random_{7};
};

TEST(ZelVideo, TellsEventsOfEveryFormatAndPassesItsBuffersOn) {
    for (const char* format : {"I420", "NV12", "YV12", "NV21"}) {
        for (const char* size : {"width=64,height=48", "width=65,height=49"}) {
            Film film(videoCaps(format, size));
            film.noise(25);
            film.black(50);
            EXPECT_THAT(film.events(), ElementsAre("+black@1.00")) << format;
            film.noise(25);
            EXPECT_THAT(film.events(), ElementsAre("-black@1.00+2.00")) << format;
        }
    }
}

TEST(ZelVideo, ClearsWhatIsOpenAtTheEndAndAtAFlushAfterWhichTimeBeginsAnew) {
    Film film;
    film.black(50);
    film.send(gst_event_new_flush_start());
    film.send(gst_event_new_flush_stop(TRUE));
    EXPECT_THAT(film.events(), ElementsAre("+black@0.00", "-black@0.00+2.00"));
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    segment.start = segment.time = 100 * GST_SECOND;
    film.send(gst_event_new_segment(&segment));
    film.seekTo(99 * GST_SECOND);  // what comes before the seek's aim is decoded, and shown to nobody
    film.noise(25);
    film.noise(25);
    film.black(25);
    film.send(gst_event_new_eos());
    const auto told = film.take("zel-event-cleared");
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(Pipe::seconds(told[0].get(), "running-time"), "1.00");
    EXPECT_EQ(Pipe::seconds(told[0].get(), "stream-time"), "101.00");
    gboolean open = FALSE;
    double value = 0.0;
    double limit = 1.0;
    EXPECT_TRUE(gst_structure_get(told[0].get(), "open-at-end", G_TYPE_BOOLEAN, &open, "value", G_TYPE_DOUBLE,
                                  &value, "limit", G_TYPE_DOUBLE, &limit, nullptr));
    EXPECT_TRUE(open);
    EXPECT_GT(value, limit);
    EXPECT_THAT(Pipe::textOf(told[0].get(), "unit"), HasSubstr("share"));
}

TEST(ZelVideo, GoesOnWithTheEventWhenCapsChange) {
    Film film;
    film.noise(25);
    film.black(25);
    film.use(videoCaps("NV12", "width=96,height=64"));
    film.black(25);
    film.noise(25);
    EXPECT_THAT(film.events(), ElementsAre("+black@1.00", "-black@1.00+2.00"));
}

TEST(ZelVideo, TellsAGapInTheTimestampsAndNothingOfFramesThatComeLate) {
    Film film;
    film.noise(25);
    film.skip(3 * GST_SECOND);
    film.sendUpstream(gst_event_new_qos(GST_QOS_TYPE_UNDERFLOW, 9.0, 100 * GST_SECOND, 0));
    film.noise(25);  // each of which still comes out
    EXPECT_THAT(film.events(), ElementsAre("+stall@1.00", "-stall@1.00+3.00"));
}

TEST(ZelVideo, PropertiesSayWhatIsToldAndWhen) {
    Film film;
    film.set("black-min", 5.0);
    film.noise(25);
    film.black(50);
    EXPECT_THAT(film.events(), IsEmpty());
    film.set("black-min", 1.0);
    film.black(1);
    EXPECT_THAT(film.events(), ElementsAre("+black@1.00"));
    film.set("black", FALSE);
    film.noise(25);  // what was raised is cleared all the same
    film.black(50);
    film.noise(25);
    EXPECT_THAT(film.events(), ElementsAre("-black@1.00+2.04"));
}

TEST(ZelVideo, PropertiesMayChangeOnAnotherThreadWhileItRuns) {
    Film film;
    std::atomic<bool> over = false;
    std::thread setter([&] {
        for (int i = 0; !over; ++i) {
            film.set("black-min", i % 2 == 0 ? 0.5 : 1.0);
            film.set("heartbeat-interval", 1U);
        }
    });
    film.noise(25);
    film.black(100);
    film.noise(25);
    over = true;
    setter.join();
    EXPECT_THAT(film.events(), ElementsAre("+black@1.00", "-black@1.00+4.00"));
}

TEST(ZelVideo, HeartbeatsCountFramesAndTellWhatIsOpen) {
    Film film;
    film.set("heartbeat-interval", 2U);
    film.noise(25);
    film.black(50);
    film.send(gst_event_new_eos());
    const auto told = film.take("zel-heartbeat");
    ASSERT_EQ(told.size(), 2U);
    guint64 buffers = 0;
    guint raised = 0;
    guint black = 0;
    EXPECT_TRUE(gst_structure_get_uint64(told[0].get(), "buffers", &buffers));
    EXPECT_TRUE(gst_structure_get_uint(
        gst_value_get_structure(gst_structure_get_value(told[0].get(), "raised")), "black", &raised));
    EXPECT_TRUE(gst_structure_get_uint(
        gst_value_get_structure(gst_structure_get_value(told[1].get(), "verdicts")), "black", &black));
    EXPECT_EQ(buffers, 50U);
    EXPECT_EQ(raised, 1U);
    EXPECT_EQ(black, 25U);
    EXPECT_EQ(gst_value_list_get_size(gst_structure_get_value(told[0].get(), "open")), 1U);
    EXPECT_EQ(Pipe::seconds(told[1].get(), "duration"), "1.00");
}

TEST(Elements, HavePropertiesForEveryKindOfTheTableThatTheyCanTell) {
    for (const auto& [element, source] :
         {std::pair("zelvideo", ZEL::EventSource::kVideo), std::pair("zelaudio", ZEL::EventSource::kAudio)}) {
        GstElement* const made = gst_element_factory_make(element, nullptr);
        ASSERT_NE(made, nullptr);
        for (const ZEL::EventKindInfo& kind : ZEL::eventKinds()) {
            const std::string name(kind.name);
            const bool expected = kind.source == source || kind.kind == ZEL::EventKind::kStall;
            EXPECT_EQ(g_object_class_find_property(G_OBJECT_GET_CLASS(made), name.c_str()) != nullptr,
                      expected)
                << name;
            if (expected) {
                gboolean told = FALSE;
                gdouble min_s = -1.0;
                g_object_get(made, name.c_str(), &told, (name + "-min").c_str(), &min_s, nullptr);
                EXPECT_EQ(told != FALSE, kind.tier == ZEL::EventTier::kFault) << name;
                EXPECT_EQ(min_s, kind.rule.min_s) << name;
            }
        }
        gst_object_unref(made);
    }
}

constexpr int kRate = 48000;

/// Sends `tenths` tenths of a second of two channels.
template <typename Sample>
void play(Pipe& pipe, int from, int tenths, const std::function<double(int)>& wave) {
    for (int piece = from; piece < from + tenths; ++piece) {
        std::vector<Sample> samples(kRate / 10 * 2);
        for (size_t i = 0; i < samples.size(); ++i) {
            const double value = wave(piece * kRate / 10 + static_cast<int>(i / 2));
            samples[i] = std::is_floating_point_v<Sample> ? static_cast<Sample>(value)
                                                          : static_cast<Sample>(value * 32767.0);
        }
        const gsize bytes = samples.size() * sizeof(Sample);
        GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, bytes, nullptr);
        gst_buffer_fill(buffer, 0, samples.data(), bytes);
        pipe.push(buffer, static_cast<GstClockTime>(piece) * GST_SECOND / 10, GST_SECOND / 10);
    }
}

template <typename Sample>
std::vector<std::string> heardOf(const char* format) {
    Pipe pipe("zelaudio", std::string("audio/x-raw,format=") + format +
                              ",layout=interleaved,rate=48000,channels=2,channel-mask=(bitmask)3");
    const auto tone = [](double level) {
        return [level](int at) { return std::clamp(level * std::sin(at * 0.05), -1.0, 1.0); };
    };
    play<Sample>(pipe, 0, 20, tone(0.3));
    play<Sample>(pipe, 20, 20, tone(0.0));
    play<Sample>(pipe, 40, 20, tone(0.3));
    play<Sample>(pipe, 60, 20, tone(4.0));
    play<Sample>(pipe, 80, 30, tone(0.3));
    pipe.send(gst_event_new_eos());
    return pipe.events();
}

TEST(ZelAudio, HearsTheSameInWholeAndInFloatingPointSamples) {
    const std::vector<std::string> whole = heardOf<int16_t>(GST_AUDIO_NE(S16));
    EXPECT_THAT(whole, ElementsAre("+mute@2.00", "-mute@2.00+2.00", HasSubstr("+clipping@6.0"),
                                   HasSubstr("-clipping@6.0")));
    EXPECT_EQ(heardOf<float>(GST_AUDIO_NE(F32)), whole);
}

}  // namespace

int main(int argc, char** argv) {
    gst_init(&argc, &argv);
    ::testing::InitGoogleTest(&argc, argv);
    const int failed = RUN_ALL_TESTS();
    gst_deinit();
    return failed;
}

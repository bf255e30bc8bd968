#include "track_watch.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <string>
#include <utility>

#include "debug.h"

#define GST_CAT_DEFAULT zel_debug

namespace ZELGst {
namespace {

/// Running time in nanoseconds. What began before the first buffer began with it.
GstClockTime clockTime(double seconds) {
    return static_cast<GstClockTime>(std::llround(std::max(seconds, 0.0) * GST_SECOND));
}

double secondsOf(GstClockTime time) {
    return GST_CLOCK_TIME_IS_VALID(time) ? static_cast<double>(time) / GST_SECOND : 0.0;
}

std::string nameOf(ZEL::EventKind kind) {
    return std::string(ZEL::infoOf(kind).name);
}

/// What the detectors say of a frame, kind by kind.
struct Verdict {
    ZEL::EventKind kind;
    bool (*holds)(const ZELAlgo::ZELVideoResult& result);
};
using Result = ZELAlgo::ZELVideoResult;
constexpr Verdict kVerdicts[] = {
    {ZEL::EventKind::kBlack,
     [](const Result& result) { return result.screen_type == ZELAlgo::kScreenBlack; }},
    {ZEL::EventKind::kGreen,
     [](const Result& result) { return result.screen_type == ZELAlgo::kScreenGreen; }},
    {ZEL::EventKind::kBlock, [](const Result& result) { return result.is_block; }},
    {ZEL::EventKind::kFreeze, [](const Result& result) { return result.is_staticframe; }},
    {ZEL::EventKind::kUnderexposed,
     [](const Result& result) { return result.exposure_type == ZELAlgo::kExposureUnder; }},
    {ZEL::EventKind::kOverexposed,
     [](const Result& result) { return result.exposure_type == ZELAlgo::kExposureOver; }},
};

}  // namespace

TrackWatch::TrackWatch(GstElement* element, ZEL::StreamTrack track)
    : element_(element), track_(track), kinds_(kindsOf(track)), properties_(track) {
    gst_segment_init(&segment_, GST_FORMAT_UNDEFINED);
}

TrackWatch::~TrackWatch() = default;

void TrackWatch::video(const ZELAlgo::ZELVideoPlanes& frame, GstBuffer* buffer, const GstSegment& segment,
                       GstClockTime stated) {
    const auto condition = GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_CORRUPTED)
                               ? ZEL::FrameCondition::kDamaged
                               : ZEL::FrameCondition::kWhole;
    examine(buffer, segment, secondsOf(stated), [&](double time_s, double duration_s) {
        return analyser_->feedVideo(frame, time_s, duration_s, condition);
    });
}

void TrackWatch::audio(const ZELAlgo::ZELAudioFrame& frame, GstBuffer* buffer, const GstSegment& segment) {
    const double length_s = static_cast<double>(frame.samples) / frame.sample_rate;
    examine(buffer, segment, length_s,
            [&](double time_s, double /*duration_s*/) { return analyser_->feedAudio(frame, time_s); });
}

template <typename Feed>
void TrackWatch::examine(GstBuffer* buffer, const GstSegment& segment, double stated_s, Feed feed) {
    try {
        gst_segment_copy_into(&segment, &segment_);
        applySettings();
        const std::optional<double> time_s = timeOf(buffer);
        if (!time_s) {
            return;
        }
        if (analyser_ == nullptr) {
            ZEL::EventListener& listener = *this;
            const ZEL::StreamTracks tracks{.video = track_ == ZEL::StreamTrack::kVideo,
                                           .audio = track_ == ZEL::StreamTrack::kAudio};
            analyser_ = std::make_unique<ZEL::EventAnalyser>(
                listener, ZEL::AnalyserOptions{.tracks = tracks, .rules = settings_.rules});
            beat_.start_s = *time_s;
        }
        const GstClockTime duration = GST_BUFFER_DURATION(buffer);
        const double duration_s = GST_CLOCK_TIME_IS_VALID(duration) ? secondsOf(duration) : stated_s;
        if (feed(*time_s, duration_s)) {
            ++beat_.buffers;
        } else {
            skip();
        }
        next_s_ = *time_s + duration_s;
        if (settings_.heartbeat_s > 0 && next_s_ - beat_.start_s >= settings_.heartbeat_s) {
            beat(next_s_);
        }
    } catch (const std::exception& error) {  // the stream goes on, whatever becomes of its watch
        skip();
        analyser_.reset();
        open_ = {};
        GST_ELEMENT_WARNING(element_, LIBRARY, FAILED, ("The quality of the stream is examined anew"),
                            ("%s", error.what()));
    }
    post();
}

/// Running time, which no seek and no joint of two streams makes jump; buffers without a timestamp follow the
/// one before.
std::optional<double> TrackWatch::timeOf(GstBuffer* buffer) const {
    if (!GST_BUFFER_PTS_IS_VALID(buffer) || segment_.format != GST_FORMAT_TIME) {
        return next_s_;
    }
    const guint64 running = gst_segment_to_running_time(&segment_, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
    return GST_CLOCK_TIME_IS_VALID(running) ? std::optional(secondsOf(running)) : std::nullopt;
}

void TrackWatch::applySettings() {
    if (properties_.takeChanged(settings_) && analyser_ != nullptr) {
        for (const ZEL::EventKind kind : kinds_) {
            analyser_->setRule(kind, settings_.rules[ZEL::indexOf(kind)]);
        }
    }
}

void TrackWatch::end() {
    if (analyser_ != nullptr) {
        try {
            analyser_->endOfStream();
            if (settings_.heartbeat_s > 0) {
                beat(next_s_);
            }
        } catch (const std::exception& error) {
            GST_ERROR_OBJECT(element_, "the end of the stream was not told: %s", error.what());
        }
        analyser_.reset();
        open_ = {};
        post();
    }
    next_s_ = 0.0;
}

guint64 TrackWatch::streamTime(GstClockTime running_time) const {
    const guint64 position =
        segment_.format == GST_FORMAT_TIME
            ? gst_segment_position_from_running_time(&segment_, GST_FORMAT_TIME, running_time)
            : GST_CLOCK_TIME_NONE;
    return GST_CLOCK_TIME_IS_VALID(position)
               ? gst_segment_to_stream_time(&segment_, GST_FORMAT_TIME, position)
               : GST_CLOCK_TIME_NONE;
}

TrackWatch::Structure TrackWatch::eventStructure(const char* name, ZEL::EventKind kind,
                                                 double start_s) const {
    const GstClockTime running_time = clockTime(start_s);
    return Structure(gst_structure_new(
        name, "kind", G_TYPE_STRING, nameOf(kind).c_str(), "tier", G_TYPE_STRING,
        std::string(ZEL::nameOf(ZEL::infoOf(kind).tier)).c_str(), "running-time", G_TYPE_UINT64, running_time,
        "stream-time", G_TYPE_UINT64, streamTime(running_time), nullptr));
}

void TrackWatch::onRaised(ZEL::EventKind kind, double start_s, double noticed_s) {
    const size_t index = ZEL::indexOf(kind);
    if (!settings_.told[index]) {
        return;
    }
    open_[index] = true;
    ++beat_.raised[index];
    Structure raised = eventStructure("zel-event-raised", kind, start_s);
    gst_structure_set(raised.get(), "noticed", G_TYPE_UINT64, clockTime(noticed_s), nullptr);
    waiting_.push_back(std::move(raised));
}

void TrackWatch::onCleared(const ZEL::Event& event) {
    if (!std::exchange(open_[ZEL::indexOf(event.kind)], false)) {
        return;
    }
    Structure cleared = eventStructure("zel-event-cleared", event.kind, event.span.start_s);
    const GstClockTime begin = clockTime(event.span.start_s);
    const GstClockTime end = clockTime(event.span.end_s);
    gst_structure_set(cleared.get(), "duration", G_TYPE_UINT64, end > begin ? end - begin : 0, "share",
                      G_TYPE_DOUBLE, event.share, "open-at-end", G_TYPE_BOOLEAN,
                      event.open_at_end ? TRUE : FALSE, "counts", G_TYPE_BOOLEAN,
                      event.counts() ? TRUE : FALSE, nullptr);
    if (event.evidence) {
        gst_structure_set(cleared.get(), "value", G_TYPE_DOUBLE, event.evidence->value, "limit",
                          G_TYPE_DOUBLE, event.evidence->limit, "unit", G_TYPE_STRING,
                          std::string(ZEL::infoOf(event.kind).unit).c_str(), nullptr);
    }
    waiting_.push_back(std::move(cleared));
}

void TrackWatch::onFrame(const ZEL::FrameMeasurement& frame) {
    for (const Verdict& verdict : kVerdicts) {
        beat_.verdicts[ZEL::indexOf(verdict.kind)] += verdict.holds(frame.verdicts) ? 1U : 0U;
    }
}

void TrackWatch::onSilencePeriod(ZEL::TimeSpan /*period*/, const ZELAlgo::ZELAudioResult& result) {
    beat_.verdicts[ZEL::indexOf(ZEL::EventKind::kMute)] += result.is_mute;
}

void TrackWatch::onVoicePeriod(ZEL::TimeSpan /*period*/, const ZELAlgo::ZELAudioResult& result) {
    beat_.verdicts[ZEL::indexOf(ZEL::EventKind::kLowVoice)] += result.is_low_voicelevel;
    beat_.verdicts[ZEL::indexOf(ZEL::EventKind::kHighVoice)] += result.is_high_voicelevel;
    beat_.verdicts[ZEL::indexOf(ZEL::EventKind::kNoVoice)] += result.is_novoice_longtime;
    beat_.last_second = result;
}

void TrackWatch::beat(double time_s) {
    const GstClockTime running_time = clockTime(time_s);
    const Structure raised(gst_structure_new_empty("raised"));
    const Structure verdicts(gst_structure_new_empty("verdicts"));
    GValue open = G_VALUE_INIT;
    g_value_init(&open, GST_TYPE_LIST);
    for (const ZEL::EventKind kind : kinds_) {
        const size_t index = ZEL::indexOf(kind);
        const std::string name = nameOf(kind);
        gst_structure_set(raised.get(), name.c_str(), G_TYPE_UINT, beat_.raised[index], nullptr);
        if (beat_.verdicts[index] > 0) {
            gst_structure_set(verdicts.get(), name.c_str(), G_TYPE_UINT, beat_.verdicts[index], nullptr);
        }
        if (open_[index]) {
            GValue value = G_VALUE_INIT;
            g_value_init(&value, G_TYPE_STRING);
            g_value_set_string(&value, name.c_str());
            gst_value_list_append_and_take_value(&open, &value);
        }
    }
    Structure heartbeat(gst_structure_new(
        "zel-heartbeat", "sequence", G_TYPE_UINT64, beats_++, "running-time", G_TYPE_UINT64, running_time,
        "stream-time", G_TYPE_UINT64, streamTime(running_time), "duration", G_TYPE_UINT64,
        clockTime(time_s - beat_.start_s), "buffers", G_TYPE_UINT64, beat_.buffers, "skipped", G_TYPE_UINT64,
        beat_.skipped, "raised", GST_TYPE_STRUCTURE, raised.get(), "verdicts", GST_TYPE_STRUCTURE,
        verdicts.get(), nullptr));
    gst_structure_take_value(heartbeat.get(), "open", &open);
    if (beat_.last_second) {
        gst_structure_set(heartbeat.get(), "level", G_TYPE_UINT, beat_.last_second->audio_level,
                          "voice-level", G_TYPE_UINT, beat_.last_second->voice_level_longtime, "voice-share",
                          G_TYPE_DOUBLE, static_cast<double>(beat_.last_second->voice_scale_longtime),
                          nullptr);
    }
    waiting_.push_back(std::move(heartbeat));
    beat_ = {.start_s = time_s};
}

void TrackWatch::post() {
    for (Structure& structure : std::exchange(waiting_, {})) {
        gst_element_post_message(element_,
                                 gst_message_new_element(GST_OBJECT(element_), structure.release()));
    }
}

}  // namespace ZELGst

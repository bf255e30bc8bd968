#ifndef ZEL_PLUGINS_GSTREAMER_TRACK_WATCH_H_
#define ZEL_PLUGINS_GSTREAMER_TRACK_WATCH_H_

#include <zel/algo/algo_types.h>
#include <zel/events/analyser.h>

#include <cstdint>
#include <gst/gst.h>
#include <memory>
#include <optional>
#include <vector>

#include "settings.h"

namespace ZELGst {

/// Watches the one track that passes through an element: frames with their buffers in, messages on the bus
/// out. README.md describes the messages. Streaming thread only, but for its properties.
class TrackWatch : private ZEL::EventListener {
  public:
    /// `element` owns the watch.
    TrackWatch(GstElement* element, ZEL::StreamTrack track);
    ~TrackWatch() override;

    Properties& properties() { return properties_; }

    /// Examines what a buffer holds, at the buffer's running time in `segment`; `stated` is how long it lasts
    /// if the buffer does not say. What lies outside of the segment is shown to nobody, and left out. Nothing
    /// is thrown, and what cannot be examined is counted.
    void video(const ZELAlgo::ZELVideoPlanes& frame, GstBuffer* buffer, const GstSegment& segment,
               GstClockTime stated);
    void audio(const ZELAlgo::ZELAudioFrame& frame, GstBuffer* buffer, const GstSegment& segment);
    /// A buffer that could not even be read.
    void skip() { ++beat_.skipped; }

    /// The stream is over, or its time begins anew: clears what is open and sends the last heartbeat. What
    /// comes after is another stream.
    void end();

  private:
    struct StructureFree {
        void operator()(GstStructure* structure) const { gst_structure_free(structure); }
    };
    using Structure = std::unique_ptr<GstStructure, StructureFree>;

    /// What a heartbeat tells of its period.
    struct Beat {
        double start_s = 0.0;
        guint64 buffers = 0;
        guint64 skipped = 0;
        ZEL::PerEventKind<guint> raised{};
        ZEL::PerEventKind<guint> verdicts{};                   ///< of the detectors, one by one
        std::optional<ZELAlgo::ZELAudioResult> last_second{};  ///< of sound
    };

    void onRaised(ZEL::EventKind kind, double start_s, double noticed_s) override;
    void onCleared(const ZEL::Event& event) override;
    void onFrame(const ZEL::FrameMeasurement& frame) override;
    void onSilencePeriod(ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& result) override;
    void onVoicePeriod(ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& result) override;

    template <typename Feed>
    void examine(GstBuffer* buffer, const GstSegment& segment, double stated_s, Feed feed);
    std::optional<double> timeOf(GstBuffer* buffer) const;
    void applySettings();
    void beat(double time_s);
    guint64 streamTime(GstClockTime running_time) const;
    Structure eventStructure(const char* name, ZEL::EventKind kind, double start_s) const;
    void post();

    GstElement* const element_;
    const ZEL::StreamTrack track_;
    const std::vector<ZEL::EventKind> kinds_;
    Properties properties_;
    Settings settings_;
    GstSegment segment_{};
    std::unique_ptr<ZEL::EventAnalyser> analyser_;  // none before the first frame of a stream
    double next_s_ = 0.0;                           // where the last frame ended
    ZEL::PerEventKind<bool> open_{};                // raises that were told
    Beat beat_;
    guint64 beats_ = 0;
    std::vector<Structure>
        waiting_;  // messages, posted when the analyser is done: who hears them may call back
};

}  // namespace ZELGst

#endif  // ZEL_PLUGINS_GSTREAMER_TRACK_WATCH_H_

#ifndef ZEL_TOOLS_SERVE_LIVE_ANALYSIS_H_
#define ZEL_TOOLS_SERVE_LIVE_ANALYSIS_H_

#include <zel/events/analyser.h>

#include <optional>

#include "input/live_damage.h"
#include "input/media_item.h"
#include "input/per_track.h"
#include "serve/alarm_book.h"
#include "serve/history.h"
#include "serve/settings.h"

namespace zel_monitor {

/// Analyses one stretch of a live stream without interruption: its faults to the alarms, its measurements to
/// the history. One thread at a time.
class LiveAnalysis : public ZEL::EventListener {
  public:
    /// What is referred to outlives this object.
    LiveAnalysis(const StreamSettings& settings, ZEL::StreamTracks tracks, AlarmBook& alarms,
                 History& history);

    /// The next item has come: what is wrong with its data. Before it is fed, and also if it is not.
    void saw(const MediaItem& item, Moment now);
    /// Frames of up to `left_out_s` seconds that follow may be left out.
    void feed(const VideoFrame& frame, double left_out_s = 0.0);
    void feed(const AudioFrame& sound);
    /// Nothing more comes; what is still there is cleared for this reason.
    void end(Cleared reason, Moment now);

    std::optional<double> luma() const { return luma_; }
    /// Mean absolute sample value, 0 to 32768, in the last tenth of a second.
    std::optional<double> level() const { return level_; }

    void onRaised(ZEL::EventKind kind, double start_s, double noticed_s) override;
    void onCleared(const ZEL::Event& event) override;
    void onSilencePeriod(ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& result) override;
    void onVoicePeriod(ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& result) override;

  private:
    std::string detailOf(ZEL::EventKind kind) const;

    AlarmBook& alarms_;
    History& history_;
    const bool tells_damage_;
    Moment now_{};                   ///< of the call at hand
    std::optional<Cleared> ending_;  ///< why, once it is over
    ZEL::PerEventKind<bool> raised_{};
    std::optional<double> luma_;
    std::optional<double> level_;
    PerTrack<double> reached_s_{};  ///< by the times of the items
    ZEL::EventAnalyser analyser_;
    LiveDamage damage_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_LIVE_ANALYSIS_H_

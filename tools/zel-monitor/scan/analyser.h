#ifndef ZEL_TOOLS_SCAN_ANALYSER_H_
#define ZEL_TOOLS_SCAN_ANALYSER_H_

#include <zel/algo/algo_facade.h>

#include <cstdint>
#include <optional>

#include "events/event_maker.h"
#include "events/gaps.h"
#include "input/media_item.h"
#include "scan/audio_periods.h"
#include "scan/timeline.h"

namespace zel_monitor {

/// Silence is found to a tenth of a second. Speech has pauses, so it is judged by the second.
inline constexpr double kSilencePeriodS = 0.1;
inline constexpr double kVoicePeriodS = 1.0;

/// The library's defaults but for what the rules for events take the place of: every picture like the one
/// before it is told at once, and sound is judged in periods of `audio_period_s`.
ZELAlgo::ZELAlgoConfig scanConfig(double audio_period_s);

/// Follows an analysis picture by picture.
class AnalysisListener : public ZEL::EventListener {
  public:
    /// `picture` begins to show at `time_s` and stays valid until the next one.
    virtual void onPicture(const Picture& picture, double time_s) = 0;
    virtual void onSilencePeriod(ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& result) = 0;
    virtual void onVoicePeriod(ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& result) = 0;
};

/// Runs the detectors on every picture and every audio period of one stream. One thread at a time.
class Analyser {
  public:
    Analyser(const ZEL::EventRules& rules, ZEL::StreamTracks tracks, AnalysisListener& listener);

    void take(Picture picture);
    void take(Sound sound);
    /// The stream is over. `declared_s` is how long it said it was.
    void finish(std::optional<double> declared_s);

    /// How far the analysis has come, in stream time.
    double reached() const;

  private:
    struct Shown {
        Picture picture;
        double start_s;
        double stated_s;  // how long the stream says that it lasts
        ZELAlgo::ZELVideoResult result;
    };
    void show(Picture picture, double start_s);
    void hear(const Sound& sound, double start_s);
    void settle(double end_s);
    bool isSlide(double length_s) const;
    double ownLength(double next_s) const;
    bool isGap(ZEL::TimeSpan span) const;
    void tellMissingStart(ZEL::StreamTrack late);
    void tellMissingEnd();

    AnalysisListener& listener_;
    ZEL::EventMaker maker_;
    double stall_s_;
    ZELAlgo::AlgoFacade detector_;
    std::optional<AudioPeriods> silence_;
    std::optional<AudioPeriods> voice_;
    std::optional<Shown> shown_;
    ZEL::StreamTracks tracks_;
    TrackClock video_clock_;
    TrackClock audio_clock_;
    Timeline<Picture> video_line_;
    Timeline<Sound> audio_line_;
    std::optional<ZEL::TimeSpan> video_;  // from the first picture's start to the last one's end
    std::optional<ZEL::TimeSpan> audio_;
    double shortest_s_;  // of the pictures' stated lengths
    uint64_t pictures_ = 0;
    uint64_t slides_ = 0;  // those that lasted too long for a film, as stated or as it came
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SCAN_ANALYSER_H_

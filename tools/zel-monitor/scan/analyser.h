#ifndef ZEL_TOOLS_SCAN_ANALYSER_H_
#define ZEL_TOOLS_SCAN_ANALYSER_H_

#include <zel/algo/algo_facade.h>

#include <cstdint>
#include <optional>

#include "media_item.h"
#include "scan/audio_periods.h"
#include "scan/event_maker.h"

namespace zel_monitor::scan {

/// Silence is found to a tenth of a second. Speech has pauses, so it is judged by the second.
inline constexpr double kSilencePeriodS = 0.1;
inline constexpr double kVoicePeriodS = 1.0;

/// The library's defaults but for what the rules for events take the place of: every picture like the one
/// before it is told at once, and sound is judged in periods of `audio_period_s`.
ZELAlgo::ZELAlgoConfig scanConfig(double audio_period_s);

/// Follows an analysis picture by picture.
class AnalysisListener : public EventListener {
  public:
    /// `picture` begins to show at `time_s` and stays valid until the next one.
    virtual void onPicture(const Picture& picture, double time_s) = 0;
    virtual void onSilencePeriod(Span period, const ZELAlgo::ZELAudioResult& result) = 0;
    virtual void onVoicePeriod(Span period, const ZELAlgo::ZELAudioResult& result) = 0;
};

/// Makes stream time out of one track's timestamps: they never run backwards, and gaps are told.
class TrackClock {
  public:
    /// Where an item that carries the timestamp `time_s` begins in stream time.
    double place(double time_s);
    /// Where the track would go on if nothing were missing.
    double expected() const { return expected_; }
    void expectNext(double time_s) { expected_ = time_s; }

  private:
    double shift_ = 0.0;  // added to what the stream says since it last jumped back
    double last_ = 0.0;
    double expected_ = 0.0;
    bool any_ = false;
};

/// Runs the detectors on every picture and every audio period of one stream. One thread at a time.
class Analyser {
  public:
    /// `frame_rate` is what the stream says of itself; 0 if it says nothing.
    Analyser(const EventRules& rules, double frame_rate, AnalysisListener& listener);

    void take(Picture picture);
    void take(const Sound& sound);
    /// The stream is over. `declared_s` is how long it said it was.
    void finish(std::optional<double> declared_s);

    /// How far the analysis has come, in stream time.
    double reached() const;

  private:
    struct Shown {
        Picture picture;
        double start_s;
        ZELAlgo::ZELVideoResult result;
    };
    void settle(double end_s);
    double lengthOfLast() const;

    AnalysisListener& listener_;
    EventMaker maker_;
    double stall_s_;
    ZELAlgo::AlgoFacade video_;
    std::optional<AudioPeriods> silence_;
    std::optional<AudioPeriods> voice_;
    std::optional<Shown> shown_;
    double usual_s_;  // from one picture to the next, as long as there is no gap
    TrackClock video_clock_;
    TrackClock audio_clock_;
    uint64_t pictures_ = 0;
};

}  // namespace zel_monitor::scan

#endif  // ZEL_TOOLS_SCAN_ANALYSER_H_

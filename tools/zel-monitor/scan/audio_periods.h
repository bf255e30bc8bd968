#ifndef ZEL_TOOLS_SCAN_AUDIO_PERIODS_H_
#define ZEL_TOOLS_SCAN_AUDIO_PERIODS_H_

#include <zel/algo/algo_facade.h>
#include <zel/events/event.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "input/media_item.h"

namespace zel_monitor {

/// Feeds sound of one sample rate to the audio detector and gives the verdict of every period.
///
/// The detector is fed its own 10 ms chunks one at a time: it leaves a chunk of zeros at once, whatever else
/// it was given, so that longer blocks of digital silence would fall behind the stream.
class AudioPeriods {
  public:
    using Sink = std::function<void(ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& result)>;

    AudioPeriods(const ZELAlgo::ZELAlgoConfig& config, int sample_rate);

    /// Takes in a block that starts at `time_s` of the stream; of several channels their mean is heard.
    void feed(const Sound& sound, double time_s, const Sink& sink);

    /// Sound is missing before `time_s`: the period at hand begins there.
    void skipTo(double time_s);

    int sampleRate() const { return sample_rate_; }

  private:
    ZELAlgo::AlgoFacade facade_;
    int sample_rate_;
    size_t chunk_;                   // samples in 10 ms
    std::vector<int16_t> pending_;   // less than a chunk, then up to one
    std::optional<double> start_s_;  // of the period at hand, once there is sound in it
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SCAN_AUDIO_PERIODS_H_

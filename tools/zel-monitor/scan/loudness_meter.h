#ifndef ZEL_TOOLS_SCAN_LOUDNESS_METER_H_
#define ZEL_TOOLS_SCAN_LOUDNESS_METER_H_

#include <cstddef>
#include <cstdint>
#include <ebur128.h>
#include <limits>
#include <memory>
#include <optional>

#include "report/report.h"

namespace zel_monitor {

/// Measures how loud the sound of one input is, by EBU R 128. Its rate and channels may change; what cannot
/// be measured (as a rate of a few Hz) is left out.
class LoudnessMeter {
  public:
    /// The next block: `frames` samples of each channel, interleaved.
    void add(const int16_t* samples, size_t frames, unsigned channels, unsigned long sample_rate);

    /// Of all that was added; nothing if nothing was.
    std::optional<Loudness> loudness();

  private:
    struct Destroy {
        void operator()(ebur128_state* state) const;
    };

    bool begin(unsigned channels, unsigned long sample_rate);
    void look();
    void takePeaks();

    std::unique_ptr<ebur128_state, Destroy> state_;
    unsigned channels_ = 0;
    unsigned long sample_rate_ = 0;
    size_t since_look_ = 0;  // samples of each channel
    double heard_s_ = 0.0;   // without a change of rate or channels
    double short_term_max_ = -std::numeric_limits<double>::infinity();
    double peak_ = 0.0;  // of full scale
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SCAN_LOUDNESS_METER_H_

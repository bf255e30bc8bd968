#include "scan/loudness_meter.h"

#include <algorithm>
#include <cmath>

namespace zel_monitor {
namespace {

constexpr size_t kLooksPerSecond = 10;  // at the loudness of the last three seconds
constexpr double kShortTermS = 3.0;

/// Silence is minus infinity, which is no number for a report.
std::optional<double> finite(double value) {
    return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

}  // namespace

void LoudnessMeter::Destroy::operator()(ebur128_state* state) const {
    ebur128_destroy(&state);
}

void LoudnessMeter::add(const int16_t* samples, size_t frames, unsigned channels, unsigned long sample_rate) {
    if (!begin(channels, sample_rate)) {
        return;
    }
    const size_t step = std::max<size_t>(1, sample_rate / kLooksPerSecond);
    while (frames > 0) {
        const size_t count = std::min(frames, step - since_look_);
        ebur128_add_frames_short(state_.get(), samples, count);
        samples += count * channels;
        frames -= count;
        since_look_ += count;
        heard_s_ += static_cast<double>(count) / static_cast<double>(sample_rate);
        if (since_look_ == step) {
            look();
        }
    }
}

std::optional<Loudness> LoudnessMeter::loudness() {
    if (!state_) {
        return std::nullopt;
    }
    takePeaks();
    double integrated = 0.0;
    const bool known = ebur128_loudness_global(state_.get(), &integrated) == EBUR128_SUCCESS;
    return Loudness{.integrated_lufs = known ? finite(integrated) : std::nullopt,
                    .short_term_max_lufs = finite(short_term_max_),
                    .true_peak_dbtp = finite(20.0 * std::log10(peak_))};
}

/// Whether the state is one for this format. What was heard in another stays in the integrated loudness.
bool LoudnessMeter::begin(unsigned channels, unsigned long sample_rate) {
    if (channels == channels_ && sample_rate == sample_rate_) {
        return state_ != nullptr;
    }
    if (!state_) {
        state_.reset(
            ebur128_init(channels, sample_rate, EBUR128_MODE_I | EBUR128_MODE_S | EBUR128_MODE_TRUE_PEAK));
    } else {
        takePeaks();
        if (ebur128_change_parameters(state_.get(), channels, sample_rate) != EBUR128_SUCCESS) {
            return false;
        }
    }
    channels_ = channels;
    sample_rate_ = sample_rate;
    since_look_ = 0;
    heard_s_ = 0.0;
    return state_ != nullptr;
}

void LoudnessMeter::look() {
    since_look_ = 0;
    double lufs = 0.0;
    if (heard_s_ >= kShortTermS - 1e-6 &&
        ebur128_loudness_shortterm(state_.get(), &lufs) == EBUR128_SUCCESS) {
        short_term_max_ = std::max(short_term_max_, lufs);
    }
}

void LoudnessMeter::takePeaks() {
    for (unsigned channel = 0; channel < channels_; ++channel) {
        double peak = 0.0;
        if (ebur128_true_peak(state_.get(), channel, &peak) == EBUR128_SUCCESS) {
            peak_ = std::max(peak_, peak);
        }
    }
}

}  // namespace zel_monitor

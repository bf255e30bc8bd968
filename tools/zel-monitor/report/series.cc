#include "report/series.h"

namespace zel_monitor {

void Series::add(double time_s, double value) {
    if (!(time_s >= 0.0)) {
        return;
    }
    while (time_s / step_s_ >= static_cast<double>(most_steps_)) {
        halve();
    }
    const auto i = static_cast<size_t>(time_s / step_s_);
    if (i >= steps_.size()) {
        steps_.resize(i + 1);
    }
    steps_[i].sum += value;
    ++steps_[i].count;
}

std::optional<double> Series::at(size_t i) const {
    const Step& step = steps_.at(i);
    return step.count > 0 ? std::optional(step.sum / step.count) : std::nullopt;
}

void Series::halve() {
    for (size_t i = 0; i < steps_.size(); ++i) {
        const Step step = steps_[i];
        steps_[i] = {};
        steps_[i / 2].sum += step.sum;
        steps_[i / 2].count += step.count;
    }
    steps_.resize((steps_.size() + 1) / 2);
    step_s_ *= 2.0;
}

}  // namespace zel_monitor

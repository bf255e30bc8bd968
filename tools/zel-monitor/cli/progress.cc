#include "cli/progress.h"

#include <algorithm>
#include <fmt/format.h>

#include "cli/standard_streams.h"
#include "cli/time_text.h"

namespace zel_monitor {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr size_t kBarOfFiles = 24;
constexpr size_t kBarOfStream = 12;  // all fits 80 columns
constexpr milliseconds kFirst{500};
constexpr milliseconds kStatusEvery{200};
constexpr milliseconds kLineEvery{10'000};
constexpr double kSpeedWindowS = 2.0;

/// Stream time to the second: "h:mm:ss".
std::string coarseClock(double seconds) {
    const std::string text = clockText(seconds);
    return text.substr(0, text.find('.'));
}

std::string barText(double share, size_t width) {
    const auto full = static_cast<size_t>(share * static_cast<double>(width));
    return fmt::format("[{}{}] ", std::string(full, '#'), std::string(width - full, '.'));
}

}  // namespace

std::string progressText(const ProgressState& state, ProgressOf what, bool bar) {
    const bool stream = what == ProgressOf::kStream;
    const bool known = state.length_s && *state.length_s > 0.0;
    const double share =
        std::clamp(known ? state.position_s / *state.length_s : state.inputs_share, 0.0, 1.0);
    std::string text;
    if (known || state.inputs > 1) {
        text += bar ? barText(share, stream ? kBarOfStream : kBarOfFiles) : "";
        text += fmt::format("{:3.0f}% ", share * 100.0);
    }
    text += coarseClock(state.position_s);
    if (known) {
        text += '/' + coarseClock(*state.length_s);
    }
    text += fmt::format(", {:.{}f}x", state.speed, stream ? 2 : 1);
    if (stream) {
        return text + fmt::format(", {} video, {} audio frames", state.video_frames, state.audio_frames);
    }
    if (share > 0.0) {
        text += fmt::format(", {} to go", coarseClock(state.elapsed_s * (1.0 - share) / share));
    }
    text += fmt::format(", {} event{}", state.events, state.events == 1 ? "" : "s");
    if (state.inputs > 1) {
        text += fmt::format(", input {} of {}", std::min(state.inputs_done + 1, state.inputs), state.inputs);
    }
    return text;
}

Progress::Progress(Console& console, ProgressOf what, size_t inputs)
    : console_(console), what_(what), slots_(inputs) {
    if (what == ProgressOf::kFiles || (what == ProgressOf::kStream && console.showsStatus())) {
        thread_ = std::thread([this] { run(); });
    }
}

Progress::~Progress() {
    if (!thread_.joinable()) {
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    ended_.notify_all();
    thread_.join();
    console_.status("");
}

void Progress::run() {
    const bool live = console_.showsStatus();
    std::unique_lock lock(mutex_);
    milliseconds wait = kFirst;
    while (!ended_.wait_for(lock, wait, [this] { return stopping_; })) {
        const std::string text = progressText(state(steady_clock::now()), what_, live);
        if (live) {
            console_.status(text);
        } else {
            console_.aside([&] { writeError(text + '\n'); });
        }
        wait = live ? kStatusEvery : kLineEvery;
    }
}

ProgressState Progress::state(TimePoint now) {
    ProgressState all;
    all.inputs = slots_.size();
    all.elapsed_s = std::chrono::duration<double>(now - start_).count();
    all.length_s = 0.0;
    for (const Slot& slot : slots_) {
        const double position_s = slot.position_s;
        const double length_s = slot.done ? position_s : slot.length_s.load();
        all.position_s += position_s;
        all.events += slot.events;
        all.video_frames += slot.video_frames;
        all.audio_frames += slot.audio_frames;
        all.inputs_done += slot.done ? size_t{1} : size_t{0};
        if (slot.done) {
            all.inputs_share += 1.0;
        } else if (length_s > 0.0) {
            all.inputs_share += std::min(position_s / length_s, 1.0);
        }
        if (length_s <= 0.0 && !slot.done) {
            all.length_s.reset();  // and stays unknown
        } else if (all.length_s) {
            *all.length_s += length_s;
        }
    }
    all.inputs_share /= static_cast<double>(std::max<size_t>(slots_.size(), 1));
    measureSpeed(all);
    return all;
}

/// Of a stream over the last seconds, so that one sees it falter.
void Progress::measureSpeed(ProgressState& state) {
    const double since_s = state.elapsed_s - mark_.elapsed_s;
    if (what_ == ProgressOf::kFiles) {
        speed_ = since_s > 0.0 ? state.position_s / since_s : 0.0;
    } else if (since_s >= kSpeedWindowS || (speed_ == 0.0 && since_s > 0.0)) {
        speed_ = (state.position_s - mark_.position_s) / since_s;
        mark_ = state;
    }
    state.speed = speed_;
}

}  // namespace zel_monitor

#include "cli/progress.h"

#include <algorithm>
#include <fmt/format.h>
#include <unistd.h>

#include "cli/standard_streams.h"
#include "cli/time_text.h"

namespace zel_monitor {
namespace {

using std::chrono::milliseconds;

constexpr size_t kBarWidth = 24;
constexpr milliseconds kFirst{500};
constexpr milliseconds kBarEvery{200};
constexpr milliseconds kLineEvery{10'000};

/// Stream time to the second: "h:mm:ss".
std::string coarseClock(double seconds) {
    const std::string text = clockText(seconds);
    return text.substr(0, text.find('.'));
}

}  // namespace

std::string progressText(const ProgressState& state, size_t bar_width) {
    const bool known = state.length_s && *state.length_s > 0.0;
    const double share =
        std::clamp(known ? state.position_s / *state.length_s : state.inputs_share, 0.0, 1.0);
    const double speed = state.elapsed_s > 0.0 ? state.position_s / state.elapsed_s : 0.0;
    std::string text;
    if (known || state.inputs > 1) {
        if (bar_width > 0) {
            const auto full = static_cast<size_t>(share * static_cast<double>(bar_width));
            text = fmt::format("[{}{}] ", std::string(full, '#'), std::string(bar_width - full, '.'));
        }
        text += fmt::format("{:3.0f}% ", share * 100.0);
    }
    text += coarseClock(state.position_s);
    if (known) {
        text += '/' + coarseClock(*state.length_s);
    }
    text += fmt::format(", {:.1f}x", speed);
    if (share > 0.0) {
        text += fmt::format(", {} to go", coarseClock(state.elapsed_s * (1.0 - share) / share));
    }
    text += fmt::format(", {} event{}", state.events, state.events == 1 ? "" : "s");
    if (state.inputs > 1) {
        text += fmt::format(", input {} of {}", std::min(state.inputs_done + 1, state.inputs), state.inputs);
    }
    return text;
}

Progress::Progress(size_t inputs, bool quiet) : slots_(inputs), terminal_(isatty(STDERR_FILENO) == 1) {
    if (!quiet) {
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
        clearBar();
    }
    ended_.notify_all();
    thread_.join();
}

void Progress::withoutBar(const std::function<void()>& print) {
    const std::lock_guard lock(mutex_);
    clearBar();
    print();
}

void Progress::run() {
    std::unique_lock lock(mutex_);
    milliseconds wait = kFirst;
    while (!ended_.wait_for(lock, wait, [this] { return stopping_; })) {
        if (terminal_) {
            // A bar that wraps could not be drawn over.
            writeError('\r' + progressText(state(), kBarWidth).substr(0, terminalColumns() - 1) + "\x1b[K");
            bar_shown_ = true;
        } else {
            writeError(progressText(state(), 0) + '\n');
        }
        wait = terminal_ ? kBarEvery : kLineEvery;
    }
}

ProgressState Progress::state() const {
    ProgressState all;
    all.inputs = slots_.size();
    all.elapsed_s = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    all.length_s = 0.0;
    for (const Slot& slot : slots_) {
        const double position_s = slot.position_s;
        const double length_s = slot.done ? position_s : slot.length_s.load();
        all.position_s += position_s;
        all.events += slot.events;
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
    all.inputs_share /= static_cast<double>(slots_.size());
    return all;
}

void Progress::clearBar() {
    if (bar_shown_) {
        writeError("\r\x1b[K");
        bar_shown_ = false;
    }
}

}  // namespace zel_monitor

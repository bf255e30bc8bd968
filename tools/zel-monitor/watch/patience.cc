#include "watch/patience.h"

#include <fmt/format.h>
#include <utility>

#include "cli/file_names.h"

namespace zel_monitor {
namespace {

constexpr std::chrono::milliseconds kLook{100};

double secondsSince(std::chrono::steady_clock::time_point start, std::chrono::steady_clock::time_point now) {
    return std::chrono::duration<double>(now - start).count();
}

}  // namespace

Patience::Patience(Console& console, const std::string& name, const std::atomic<bool>& stop)
    : console_(console), name_(printable(name)), stop_(stop) {
    thread_ = std::thread([this] { run(); });
}

Patience::~Patience() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        ending_ = true;
    }
    ended_.notify_all();
    thread_.join();
}

void Patience::begin(std::optional<double> timeout_s) {
    const std::lock_guard<std::mutex> lock(mutex_);
    since_ = std::chrono::steady_clock::now();
    timeout_s_ = timeout_s;
}

bool Patience::end() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (std::exchange(told_, false) && !given_up_.load()) {
        const double waited_s = secondsSince(*since_, std::chrono::steady_clock::now());
        console_.error(fmt::format("{}: goes on after {:.0f} s", name_, waited_s));
    }
    since_.reset();
    return timed_out_;
}

void Patience::reset() {
    const std::lock_guard<std::mutex> lock(mutex_);
    timed_out_ = false;
    given_up_.store(stop_.load());
}

void Patience::run() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!ended_.wait_for(lock, kLook, [this] { return ending_; })) {
        look(std::chrono::steady_clock::now());
    }
}

void Patience::look(TimePoint now) {
    if (stop_.load()) {
        given_up_.store(true);
    }
    if (!since_ || given_up_.load()) {
        return;
    }
    const double waited_s = secondsSince(*since_, now);
    if (timeout_s_ && waited_s >= *timeout_s_) {
        timed_out_ = true;
        given_up_.store(true);
    } else if (waited_s >= kToldAfterS && !std::exchange(told_, true)) {
        console_.error(fmt::format("{}: nothing has come for {:g} s; waiting", name_, kToldAfterS));
    }
}

}  // namespace zel_monitor

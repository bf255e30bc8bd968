#include "cli/stop_signal.h"

#include <algorithm>
#include <array>
#include <climits>
#include <csignal>
#include <unistd.h>

namespace zel_monitor {

/// A name that the signal handler may read at any time.
struct RemovalEntry {
    std::atomic<bool> taken = false;
    std::atomic<bool> valid = false;
    std::array<char, PATH_MAX> path{};
};

namespace {

std::atomic<bool> stop_wanted = false;
std::atomic<bool> told_before = false;
static_assert(std::atomic<bool>::is_always_lock_free, "written by a signal handler");

std::array<RemovalEntry, 4> entries;

std::atomic<unsigned> hangups = 0;
static_assert(std::atomic<unsigned>::is_always_lock_free, "written by a signal handler");

extern "C" void noteHangup(int /*signal*/) {
    hangups.fetch_add(1);
}

extern "C" void noteStopSignal(int signal) {
    stop_wanted.store(true);
    if (signal == SIGHUP || !told_before.exchange(true)) {
        return;
    }
    for (const RemovalEntry& entry : entries) {
        if (entry.valid.load()) {
            unlink(entry.path.data());
        }
    }
    std::signal(signal, SIG_DFL);
    std::raise(signal);  // takes effect when the handler returns
}

}  // namespace

const std::atomic<bool>& watchStopSignals() {
    struct sigaction action = {};  // no SA_RESTART: a read of a pipe must return
    action.sa_handler = &noteStopSignal;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    struct sigaction inherited = {};
    if (sigaction(SIGHUP, nullptr, &inherited) == 0 && inherited.sa_handler != SIG_IGN) {
        sigaction(SIGHUP, &action, nullptr);
    }
    return stop_wanted;
}

const std::atomic<unsigned>& watchHangups() {
    struct sigaction action = {};
    action.sa_handler = &noteHangup;
    action.sa_flags = SA_RESTART;
    sigaction(SIGHUP, &action, nullptr);
    return hangups;
}

void requestStop() {
    stop_wanted.store(true);
}

RemovedWhenKilled::RemovedWhenKilled(const std::string& path) {
    for (RemovalEntry& entry : entries) {
        if (path.size() < entry.path.size() && !entry.taken.exchange(true)) {
            entry_ = &entry;
            *std::copy(path.begin(), path.end(), entry.path.begin()) = '\0';
            entry.valid.store(true);
            return;
        }
    }
}

RemovedWhenKilled::~RemovedWhenKilled() {
    if (entry_ != nullptr) {
        entry_->valid.store(false);
        entry_->taken.store(false);
    }
}

}  // namespace zel_monitor

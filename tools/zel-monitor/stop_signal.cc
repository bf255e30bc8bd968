#include "stop_signal.h"

#include <csignal>

namespace zel_monitor {
namespace {

std::atomic<bool> stop_wanted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "written by a signal handler");

extern "C" void noteStopSignal(int /*signal*/) {
    stop_wanted.store(true);
}

}  // namespace

const std::atomic<bool>& watchStopSignals() {
    struct sigaction action = {};
    action.sa_handler = &noteStopSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND);  // and no SA_RESTART: a read of a pipe must return
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    return stop_wanted;
}

void requestStop() {
    stop_wanted.store(true);
}

}  // namespace zel_monitor

#include "serve/event_log.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "cli/standard_streams.h"
#include "report/report_json.h"
#include "serve/quiet_thread.h"

namespace zel_monitor {
namespace {

constexpr size_t kMostWaiting = 100'000;
constexpr std::chrono::seconds kLongestWait{1};

int openFile(const std::string& path) {
    return path.empty() ? STDOUT_FILENO : open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
}

}  // namespace

EventLog::EventLog(std::string path)
    : path_(std::move(path)), descriptor_(openFile(path_)), queue_(kMostWaiting) {
    if (descriptor_ < 0) {
        throw std::system_error(errno, std::generic_category(), path_);
    }
    thread_ = quietThread([this] { run(); });
}

EventLog::~EventLog() {
    queue_.close();
    thread_.join();
    if (!path_.empty()) {
        close(descriptor_);
    }
}

void EventLog::reopen() {
    reopen_.store(true);
}

void EventLog::run() {
    while (true) {
        const std::deque<Alarm> alarms = queue_.wait(std::chrono::steady_clock::now() + kLongestWait);
        if (reopen_.exchange(false) && !path_.empty()) {
            if (const int fresh = openFile(path_); fresh >= 0) {
                close(std::exchange(descriptor_, fresh));
            } else {
                complain(path_ + ": " + std::generic_category().message(errno) + "; the old file goes on");
            }
        }
        for (const Alarm& alarm : alarms) {
            write(alarm);
        }
        if (alarms.empty() && queue_.isClosed()) {
            return;
        }
    }
}

void EventLog::write(const Alarm& alarm) {
    const int error = writeAll(descriptor_, jsonText(alarmJson(alarm), false));
    if (error == 0) {
        return;
    }
    if (failed_.fetch_add(1) == 0) {
        complain((path_.empty() ? "standard output" : path_) + ": " + std::generic_category().message(error));
    }
    if (path_.empty()) {
        output_error_.store(error);
    }
}

}  // namespace zel_monitor

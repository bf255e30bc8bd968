#ifndef ZEL_TESTS_SUPPORT_LOG_CAPTURE_H_
#define ZEL_TESTS_SUPPORT_LOG_CAPTURE_H_

#include <zel/base/log.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "support/wait.h"

namespace support {

/// Collects the library's log messages while it lives.
class LogCapture {
  public:
    LogCapture() {
        ZEL::setLogSink(
            [](const char* text, size_t length, void* context) {
                auto* const self = static_cast<LogCapture*>(context);
                const std::lock_guard<std::mutex> lock(self->mutex_);
                self->messages_.emplace_back(text, length);
                self->grown_.notify_all();
            },
            this);
    }
    ~LogCapture() { ZEL::setLogSink(nullptr, nullptr); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<std::string> messages() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return messages_;
    }

    size_t count(const std::string& message) const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return static_cast<size_t>(std::count(messages_.begin(), messages_.end(), message));
    }

    bool waitFor(const std::string& message) const {
        std::unique_lock<std::mutex> lock(mutex_);
        return grown_.wait_for(lock, kPatience, [&] {
            return std::find(messages_.begin(), messages_.end(), message) != messages_.end();
        });
    }

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable grown_;
    std::vector<std::string> messages_;
};

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_LOG_CAPTURE_H_

#ifndef ZEL_TESTS_SUPPORT_RECORDING_HOST_H_
#define ZEL_TESTS_SUPPORT_RECORDING_HOST_H_

#include <zel/zel.h>

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/wait.h"

namespace support {

/// A host for the exports: answers the switches and keeps what is uploaded. The library's process-wide
/// callbacks have no user data, so there is one host for the process; each test begins with reset().
class RecordingHost {
  public:
    struct Event {
        std::string page;
        int id;
        std::string args[3];
        ReportMap fields;
    };

    /// Registers the process-wide callbacks at the first call.
    static RecordingHost& get() {
        static auto* const host = new RecordingHost;
        return *host;
    }

    void reset() {
        set_tlm_upload_callback(&upload);
        throwing_ = false;
        const std::lock_guard<std::mutex> lock(mutex_);
        bools_.clear();
        ints_.clear();
        events_.clear();
    }

    void setSwitch(const std::string& key, bool value) {
        const std::lock_guard<std::mutex> lock(mutex_);
        bools_[key] = value;
    }

    void setNumber(const std::string& key, int value) {
        const std::lock_guard<std::mutex> lock(mutex_);
        ints_[key] = value;
    }

    /// Every callback of the process throws from now on; an upload is kept all the same.
    void startThrowing() { throwing_ = true; }

    std::vector<Event> events() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return events_;
    }

    bool waitForEvents(size_t at_least) const {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, kPatience, [&] { return events_.size() >= at_least; });
    }

  private:
    RecordingHost() {
        set_cobalt_bool_callback([](const char* key) {
            throwIfAsked();
            const std::lock_guard<std::mutex> lock(get().mutex_);
            return get().bools_[key];
        });
        set_cobalt_int_callback([](const char* key) {
            throwIfAsked();
            const std::lock_guard<std::mutex> lock(get().mutex_);
            const auto entry = get().ints_.find(key);
            return entry != get().ints_.end() ? entry->second : -1;
        });
    }

    static void upload(const char* page, int event_id, const char* arg1, const char* arg2, const char* arg3,
                       ReportMap* fields) {
        {
            const std::lock_guard<std::mutex> lock(get().mutex_);
            get().events_.push_back({page, event_id, {arg1, arg2, arg3}, *fields});
        }
        get().changed_.notify_all();
        throwIfAsked();
    }

    static void throwIfAsked() {
        if (get().throwing_) {
            throw std::runtime_error("the host cannot");
        }
    }

    std::atomic<bool> throwing_{false};
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::map<std::string, bool> bools_;
    std::map<std::string, int> ints_;
    std::vector<Event> events_;
};

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_RECORDING_HOST_H_

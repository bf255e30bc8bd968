#ifndef ZEL_TOOLS_WATCH_HOST_H_
#define ZEL_TOOLS_WATCH_HOST_H_

#include <zel/zel.h>

#include <cstdint>
#include <functional>
#include <vector>

#include "input/media_item.h"

namespace zel_monitor {

struct HostSettings {
    uint32_t interval;  ///< seconds between heartbeats
    bool audio;         ///< what "EnableAudioAlgo" answers
};

/// One stream monitored through the C interface. The library's callbacks carry no user data, so a process
/// has one host at a time.
class Host {
  public:
    /// Takes every uploaded report, one at a time, on the library's threads and on the one that stops.
    using ReportHandler = std::function<void(const ReportMap&)>;

    Host(const HostSettings& settings, ReportHandler handler);
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    /// No report arrives any more when it returns.
    ~Host();

    void start();
    /// Delivers the ending heartbeat and the final report before it returns.
    void stop();

    bool feed(const Picture& picture);
    bool feed(const Sound& sound);

  private:
    ZELHandle* handle_;
    std::vector<uint8_t> packed_;  ///< the picture being fed
    int64_t next_picture_ = 0;
    int64_t next_sound_ = 0;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_WATCH_HOST_H_

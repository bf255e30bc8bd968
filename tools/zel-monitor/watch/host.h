#ifndef ZEL_TOOLS_WATCH_HOST_H_
#define ZEL_TOOLS_WATCH_HOST_H_

#include <zel/session/session.h>
#include <zel/zel.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
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

    bool feed(const Picture& frame);
    bool feed(const Sound& audio);

    /// How many frames were fed, of audio in the packets in which they were.
    struct Fed {
        uint64_t video = 0;
        uint64_t audio = 0;
    };
    Fed fed() const { return fed_; }

    /// Frames that were fed and not examined, in all; none before the first report. Any thread.
    std::optional<ZEL::QueueDrops> drops() const;

  private:
    /// Learns the session's id from the first report that tells it, and hands on.
    void take(const ReportMap& report);

    ReportHandler handler_;
    std::atomic<int64_t> session_id_{0};
    ZELHandle* handle_;
    std::vector<uint8_t> packed_;  ///< the frame being fed
    Fed fed_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_WATCH_HOST_H_

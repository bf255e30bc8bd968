#ifndef ZEL_TOOLS_SERVE_CHANNEL_H_
#define ZEL_TOOLS_SERVE_CHANNEL_H_

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "cli/backoff.h"
#include "input/media_source.h"
#include "report/thumbnail.h"
#include "serve/alarm_book.h"
#include "serve/history.h"
#include "serve/lag_meter.h"
#include "serve/live_analysis.h"
#include "serve/settings.h"
#include "serve/stream_status.h"

namespace zel_monitor {

/// Monitors one stream on a thread of its own, connecting again and again, until it is destroyed.
class Channel {
  public:
    /// `sink` outlives this object.
    Channel(const StreamSettings& settings, AlarmSink& sink);
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;
    /// Clears what is active. Waits until the input lets go; see finished().
    ~Channel();

    const StreamSettings& settings() const { return settings_; }

    /// To be called about ten times a second, on any thread but the stream's: it tells time-outs and the
    /// loss of the signal, whatever the stream's thread is caught in.
    void tick(Moment now);

    /// Ends it soon, without waiting. From now on it raises nothing.
    void requestStop();
    /// Whether the destructor need not wait.
    bool finished() const { return finished_.load(); }

    StreamStatus status(Moment now) const;
    const History& history() const { return history_; }

    /// The newest small frame as a JPEG, null if there is none yet. Frames are made, one a second, for some
    /// seconds after each call.
    std::shared_ptr<const std::string> thumbnail(Moment now);

  private:
    using TimePoint = std::chrono::steady_clock::time_point;
    struct Reading;

    void run();
    /// One connection from its opening to its end; true if frames came for long enough to call it good.
    bool connect();
    void follow(MediaSource& source);
    void take(Reading& reading, MediaItem& item, double took_s);
    void feed(Reading& reading, const VideoFrame& frame, double lag_s, Moment now);
    bool noteSignal(const Reading& reading, double shown_in_s, Moment now);
    void makeThumbnail(const VideoFrame& frame, Moment now);
    void setState(StreamState state, const std::string& reason);
    bool stopping() const { return stop_.load(); }
    /// False if it was cut short by a stop.
    bool waitUntil(TimePoint due);
    std::string lossDetail() const;  // with mutex_ held

    const StreamSettings settings_;
    AlarmBook alarms_;
    History history_;
    Backoff backoff_;               // the thread's
    Thumbnailer thumbnailer_{320};  // the thread's
    std::atomic<bool> stop_{false};
    std::atomic<bool> interrupted_{false};  ///< ends the input's reads
    std::atomic<bool> finished_{false};

    mutable std::mutex mutex_;  // guards all below
    std::condition_variable stopped_;
    StreamStatus status_;
    std::optional<TimePoint> deadline_;  ///< after which the input is given up
    bool timed_out_ = false;
    TimePoint last_item_;     ///< when the last one that came is to be shown
    TimePoint signal_since_;  ///< when frames began to come again
    bool signal_lost_ = false;
    TimePoint thumbnail_wanted_until_;
    TimePoint thumbnail_made_;
    std::shared_ptr<const std::string> thumbnail_;

    std::thread thread_;  // last: uses every field above
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_CHANNEL_H_

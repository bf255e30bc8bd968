#ifndef ZEL_SRC_PC_SESSION_PC_H_
#define ZEL_SRC_PC_SESSION_PC_H_

#include <zel/session/session.h>
#include <zel/zel.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <sys/types.h>

#include "base/mutex.h"
#include "base/turn.h"
#include "pc/host_services.h"
#include "pc/timer_pc.h"
#include "session/frame_pool.h"

namespace ZEL {

/// One video frame as the host hands it over: I420 without gaps.
struct VideoInput {
    const uint8_t* data;
    int32_t width;
    int32_t height;
    int64_t index;
};

/// One audio frame as the host hands it over; `samples` counts per channel.
struct AudioInput {
    const uint8_t* data;
    uint64_t samples;
    int32_t bytes_per_sample;
    int32_t sample_rate;
    int32_t channels;
    int64_t index;
};

}  // namespace ZEL

/// The desktop's wrapper around a core session: checks and copies what the host feeds, runs the heartbeat.
/// Held by a shared_ptr. Any thread may call any operation.
class ZELSessionPc : public ZEL::IZELSessionListener, public std::enable_shared_from_this<ZELSessionPc> {
  public:
    using EventCallback = void (*)(uint32_t code, uint64_t a, uint64_t b, const char* text);

    explicit ZELSessionPc(const ZEL::HostServices& host);
    ZELSessionPc(const ZELSessionPc&) = delete;
    ZELSessionPc& operator=(const ZELSessionPc&) = delete;
    /// Ends the core session. A timer that still runs finds the session gone at its next tick.
    ~ZELSessionPc() override;

    /// Gives the session the core it works with, before anything else is called. A second one is refused.
    void attachCore(std::shared_ptr<ZEL::ZELSession> core);

    /// Always false.
    bool start();
    void stop();
    bool feed_video_frame(const ZEL::VideoInput& input);
    bool feed_audio_frame(const ZEL::AudioInput& input);
    /// Always all bits set.
    uint64_t get_session_id() const;
    /// The core session's report over its whole life.
    ReportMap endReport() const;

    void setHeartBeatCallback(HeartBeatCallback callback);
    void setHeartBeatDetailCallback(HeartBeatDetailCallback callback);
    void setTimerSwitchListener(HeartBeatTimerSwitchListener listener);
    void setInterval(int32_t seconds);
    void setUserState(ReportMap user_state);
    /// Who hears about the core session's events, if it is made the core's listener; an extension point.
    void setEventCallback(EventCallback callback);

    /// One heartbeat: the core's report and the host's own fields go to the host's upload. One at a time.
    void heartBeat();

    /// What calls the host for this stream beside feeds and starts takes this turn: heartbeats and stops. So
    /// nobody is called after a stop, and numbers go up in what is uploaded.
    ZEL::Turn& turn() { return heartbeats_->turn; }

    /// The host gives up its handle: waits for a heartbeat on another thread, and there will be no more. Not
    /// to be called by somebody whom that heartbeat waits for.
    void retire();

    /// False in a child of the process that made the session: the threads that serve it are not there.
    bool isInItsProcess() const;

    void onSessionEvent(uint32_t code, uint64_t a, uint64_t b, std::string text) override;

  private:
    /// A heartbeat that is on its way to the host.
    struct Heartbeat {
        ReportMap report;
        ReportMap extra_fields;
        bool sent = false;
    };

    /// Outlives the session: a timer that nobody has stopped goes on.
    struct Heartbeats {
        ZEL::Turn turn;
        std::atomic<bool> retired{false};
    };

    bool heartbeatAllowed() const;
    void startTimer();
    /// True if there was a timer.
    bool stopTimer();
    void stopCore();
    void askForExtraFields(Heartbeat& heartbeat);
    void send(ReportMap report, ReportMap extra_fields) const;
    /// Sends the heartbeat that called the host, who has come back here meanwhile: it must not come after
    /// what is sent now.
    void sendInterrupted();

    const pid_t process_;
    const ZEL::HostServices& host_;
    const std::shared_ptr<Heartbeats> heartbeats_ = std::make_shared<Heartbeats>();
    Heartbeat* asking_ = nullptr;  ///< the heartbeat whose callback runs; whoever has the turn
    uint32_t ends_ = 0;            ///< stops that came to their end; whoever has the turn
    std::shared_ptr<ZEL::ZELSession> impl_;
    const std::shared_ptr<ZEL::FramePool> pool_;
    std::atomic<bool> listeners_registered_{false};
    std::atomic<EventCallback> event_callback_{nullptr};
    std::atomic<HeartBeatCallback> heart_beat_callback_{nullptr};
    std::atomic<HeartBeatDetailCallback> heart_beat_detail_callback_{nullptr};
    std::atomic<HeartBeatTimerSwitchListener> timer_switch_listener_{nullptr};
    std::atomic<double> last_heartbeat_time_{0.0};
    std::atomic<int32_t> interval_{0};
    ZEL::Mutex mutex_;
    std::shared_ptr<ZELPCTimer> timer_ ZEL_GUARDED_BY(mutex_);
    ReportMap user_state_ ZEL_GUARDED_BY(mutex_);
};

/// A tick of the timer: one heartbeat, or a line in the log if the session is gone.
void heart_beat_callback(const std::weak_ptr<ZELSessionPc>& session);

#endif  // ZEL_SRC_PC_SESSION_PC_H_

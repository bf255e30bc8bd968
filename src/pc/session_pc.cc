#include "pc/session_pc.h"

#include <cstring>
#include <limits>
#include <new>
#include <unistd.h>
#include <utility>

#include "base/clock.h"
#include "base/log_format.h"
#include "base/text.h"
#include "pc/host_call.h"
#include "session/task_queue.h"

namespace {

constexpr uint32_t kFormatI420 = 2;
constexpr uint64_t kMostBytes = std::numeric_limits<int32_t>::max();
/// The queued video frames, the one in work and the one being fed.
constexpr size_t kPooledBuffers = ZEL::TaskQueue::kSharedBound + 2;

/// Bytes of an audio frame, or more than kMostBytes if it does not fit.
uint64_t audioBytes(uint64_t samples, int32_t channels) {
    const uint64_t bytes_per_step = static_cast<uint64_t>(channels) * sizeof(int16_t);
    return samples <= kMostBytes ? samples * bytes_per_step : kMostBytes + 1;
}

}  // namespace

ZELSessionPc::ZELSessionPc(const ZEL::HostServices& host)
    : process_(getpid()), host_(host), pool_(std::make_shared<ZEL::FramePool>(kPooledBuffers)) {}

ZELSessionPc::~ZELSessionPc() {
    ZEL_LOG_PC("ZELSessionPc::~ZELSessionPc", 55, "ZELSessionPc delloc\n");
    if (impl_ != nullptr) {
        // The message centre would keep an unstopped core, and its thread, for ever.
        impl_->unregisterMessageListeners();
        impl_->stop();
    }
}

void ZELSessionPc::attachCore(std::shared_ptr<ZEL::ZELSession> core) {
    if (impl_ != nullptr) {
        ZEL_LOG_PC("ZELSessionPc::ZELSessionPc", 43, "_impl exist ?\n");
        return;
    }
    impl_ = std::move(core);
    impl_->setCollectorsDisabled(true);
    impl_->setAlgoConfig(ZELAlgo::ZELAlgoConfig());
}

bool ZELSessionPc::start() {
    ZEL_LOG_PC("ZELSessionPc::start", 149, "ZELSessionPc start!!!\n");
    if (impl_ == nullptr) {
        ZEL_LOG_PC("ZELSessionPc::start", 171, "ZELSessionPc::start _impl is null\n");
        return false;
    }
    // Intended: once in the session's life, also when it is started again after a stop.
    if (!listeners_registered_.exchange(true)) {
        try {
            impl_->registerMessageListeners();
        } catch (...) {
            listeners_registered_ = false;
            throw;
        }
    }
    stopTimer();
    if (heartbeatAllowed()) {
        startTimer();
    }
    try {
        impl_->start();
    } catch (...) {
        stopTimer();  // what has not started sends no heartbeats
        throw;
    }
    return false;
}

bool ZELSessionPc::heartbeatAllowed() const {
    bool allowed = false;
    if (const HeartBeatTimerSwitchListener ask = timer_switch_listener_.load()) {
        ZEL::callHost("timer switch", [&] { allowed = ask(); });
    }
    return allowed && interval_ >= 1;
}

void ZELSessionPc::startTimer() {
    const int32_t extra_initial = host_.switches.readInt("ExtraInitialHeartBeatInterval");
    // Intended: the "initial" interval holds for every tick, not only the first.
    const int32_t period = extra_initial >= 1 ? extra_initial : interval_.load();
    last_heartbeat_time_ = ZEL::now();
    const std::weak_ptr<ZELSessionPc> self = shared_from_this();
    const auto running = std::make_shared<ZELPCTimer::RunningFlag>();
    auto tick = [self, running, heartbeats = heartbeats_] {
        const ZEL::Turn::Held turn(heartbeats->turn);
        if (running->isSet()) {  // may have been cleared while others had the turn
            heart_beat_callback(heartbeats->retired ? std::weak_ptr<ZELSessionPc>() : self);
        }
    };
    auto timer = std::make_shared<ZELPCTimer>(period, ZELPCTimer::Mode::kDetached, std::move(tick), running);
    const ZEL::MutexLock lock(mutex_);
    timer_.swap(timer);
    if (timer != nullptr) {  // another thread has started the session at the same time
        timer->stop();
    }
}

bool ZELSessionPc::stopTimer() {
    std::shared_ptr<ZELPCTimer> timer;
    {
        const ZEL::MutexLock lock(mutex_);
        timer.swap(timer_);
    }
    if (timer != nullptr) {
        timer->stop();
    }
    return timer != nullptr;
}

void ZELSessionPc::stop() {
    if (impl_ == nullptr) {
        ZEL_LOG_PC("ZELSessionPc::stop", 265, "ZELSessionPc::stop _impl is null\n");
        return;
    }
    const ZEL::Turn::Held turn(heartbeats_->turn);
    const bool had_timer = stopTimer();
    const uint32_t ends = ends_;
    try {
        sendInterrupted();
        // Whoever answers for the switch may stop the stream as well; after that no heartbeat is sent.
        if (had_timer && !host_.switches.readBool("DisableEndingTimer") && ends == ends_) {
            heart_beat_callback(shared_from_this());
        }
    } catch (...) {  // no memory for the ending heartbeat
        stopCore();
        throw;
    }
    stopCore();
}

void ZELSessionPc::stopCore() {
    if (!host_.switches.readBool("DisableFixListenerCleaning")) {
        impl_->unregisterMessageListeners();
    }
    impl_->stop();
    ++ends_;
    ZEL_LOG_PC("ZELSessionPc::stop", 263, "ZELSessionPc stop!!!!\n");
}

void ZELSessionPc::retire() {
    const ZEL::Turn::Held turn(heartbeats_->turn);
    heartbeats_->retired = true;
}

bool ZELSessionPc::isInItsProcess() const {
    return process_ == getpid();
}

bool ZELSessionPc::feed_video_frame(const ZEL::VideoInput& input) {
    constexpr const char* kFunction = "ZELSessionPc::feed_video_frame";
    ZEL_LOG_PC(kFunction, 188, "ZELSessionPC feed_video_frame\n");
    if (input.data == nullptr || input.index < 0 || input.width <= 0 || input.height <= 0) {
        return false;
    }
    const uint64_t bytes = ZEL::i420Bytes(input.width, input.height);
    std::unique_ptr<uint8_t[]> copy = bytes <= kMostBytes ? pool_->take(bytes) : nullptr;
    if (copy == nullptr) {
        return false;
    }
    std::memcpy(copy.get(), input.data, bytes);
    ZEL_LOG_PC(kFunction, 199, "index ====== %d yuv data adress === %p\n", static_cast<int32_t>(input.index),
               static_cast<void*>(copy.get()));
    auto frame =
        std::make_shared<ZEL::VideoFrame>(kFormatI420, std::move(copy), input.width, input.height, pool_);
    ZEL_LOG_PC(kFunction, 201, "ZELSessionPC start  feed_video_frame\n");
    if (impl_ == nullptr) {
        ZEL_LOG_PC(kFunction, 206, "please init _impl, _impl is null\n");
        return false;
    }
    return impl_->feedVideoFrame(std::move(frame), input.index);
}

bool ZELSessionPc::feed_audio_frame(const ZEL::AudioInput& input) {
    constexpr const char* kFunction = "ZELSessionPc::feed_audio_frame";
    if (!host_.switches.readBool("EnableAudioAlgo")) {
        return true;
    }
    if (input.data == nullptr || input.samples == 0 || input.sample_rate <= 0 || input.channels <= 0 ||
        input.index < 0) {
        ZEL_LOG_PC(kFunction, 225, "the parameters passed in do not meet the requirements,please check\n");
        return false;
    }
    if (input.bytes_per_sample != sizeof(int16_t)) {
        ZEL_LOG_PC(kFunction, 240, "bytes_per_sample is %d\n", input.bytes_per_sample);
        return false;
    }
    const uint64_t bytes = audioBytes(input.samples, input.channels);
    std::unique_ptr<int16_t[]> copy(bytes <= kMostBytes ? new (std::nothrow) int16_t[bytes / sizeof(int16_t)]
                                                        : nullptr);
    if (copy == nullptr || impl_ == nullptr) {
        return false;
    }
    std::memcpy(copy.get(), input.data, bytes);
    auto frame = std::make_shared<ZEL::AudioFrame>(0, std::move(copy), static_cast<uint32_t>(input.samples),
                                                   input.sample_rate, input.channels);
    return impl_->feedAudioFrame(std::move(frame), input.index);
}

uint64_t ZELSessionPc::get_session_id() const {
    if (impl_ == nullptr) {
        ZEL_LOG_PC("ZELSessionPc::get_session_id", 182, "ZELSessionPc::_impl is null\n");
    }
    // Intended: hosts learn the id from the report field "zel_token".
    return std::numeric_limits<uint64_t>::max();
}

ReportMap ZELSessionPc::endReport() const {
    return impl_ != nullptr ? impl_->getAccumulativeInfo() : ReportMap();
}

void ZELSessionPc::setHeartBeatCallback(HeartBeatCallback callback) {
    heart_beat_callback_ = callback;
}

void ZELSessionPc::setHeartBeatDetailCallback(HeartBeatDetailCallback callback) {
    heart_beat_detail_callback_ = callback;
}

void ZELSessionPc::setTimerSwitchListener(HeartBeatTimerSwitchListener listener) {
    timer_switch_listener_ = listener;
}

void ZELSessionPc::setInterval(int32_t seconds) {
    interval_ = seconds;
}

void ZELSessionPc::setUserState(ReportMap user_state) {
    const ZEL::MutexLock lock(mutex_);
    user_state_.swap(user_state);
}

void ZELSessionPc::setEventCallback(EventCallback callback) {
    event_callback_ = callback;
}

void ZELSessionPc::heartBeat() {
    const ZEL::Turn::Held turn(heartbeats_->turn);
    sendInterrupted();
    const double now = ZEL::now();
    Heartbeat heartbeat;
    heartbeat.report.emplace("zel_time_interval", ZEL::fixedText(now - last_heartbeat_time_, 4));
    ReportMap internal_stat;
    impl_->getHeartbeatInfo(internal_stat);  // the last step that may fail: a period that it closed is sent
    last_heartbeat_time_ = now;
    ZEL_LOG_PC("heart_beat_callback", 115, "heart_beat_callback internal_stat mid\n");
    heartbeat.report.merge(internal_stat);  // a key that is there keeps its value, here and below
    askForExtraFields(heartbeat);
    if (!heartbeat.sent) {
        send(std::move(heartbeat.report), std::move(heartbeat.extra_fields));
    }
}

void ZELSessionPc::askForExtraFields(Heartbeat& heartbeat) {
    struct Asking {  // ends also with a thread that is cancelled in the callback
        Heartbeat*& current;
        ~Asking() { current = nullptr; }
    };
    asking_ = &heartbeat;
    const Asking asking{asking_};
    ZEL::callHost("heartbeat", [this, &heartbeat] {
        if (const HeartBeatDetailCallback detail = heart_beat_detail_callback_.load()) {
            detail(&heartbeat.extra_fields, &heartbeat.report);
        } else if (const HeartBeatCallback plain = heart_beat_callback_.load()) {
            plain(&heartbeat.extra_fields);
        }
    });
}

void ZELSessionPc::sendInterrupted() {
    if (Heartbeat* const heartbeat = std::exchange(asking_, nullptr)) {
        ReportMap report = heartbeat->report;  // copies: the callback still has the maps
        ReportMap extra_fields = heartbeat->extra_fields;
        heartbeat->sent = true;
        send(std::move(report), std::move(extra_fields));
    }
}

void ZELSessionPc::send(ReportMap report, ReportMap extra_fields) const {
    report.merge(extra_fields);
    host_.upload.upload(std::move(report));
}

void ZELSessionPc::onSessionEvent(uint32_t code, uint64_t a, uint64_t b, std::string text) {
    if (const EventCallback callback = event_callback_.load()) {
        ZEL::callHost("event", [&] { callback(code, a, b, text.c_str()); });
    }
}

void heart_beat_callback(const std::weak_ptr<ZELSessionPc>& session) {
    ZEL_LOG_PC("heart_beat_callback", 95, "heart_beat_callback begin\n");
    if (const std::shared_ptr<ZELSessionPc> alive = session.lock()) {
        alive->heartBeat();
    } else {
        ZEL::zel_log(" sessionpc is has released \n");
    }
}

#include <zel/message/message.h>
#include <zel/session/session.h>

#include <array>
#include <atomic>
#include <optional>
#include <utility>

#include "base/clock.h"
#include "base/mutex.h"
#include "base/thread_name.h"
#include "session/algo_stat.h"
#include "session/drop_counts.h"
#include "session/heartbeat_report.h"
#include "session/result_accounting.h"
#include "session/session_collectors.h"
#include "session/session_hooks.h"
#include "session/session_worker.h"
#include "session/task_queue.h"

namespace ZEL {

struct ZELSession::Parts {
    Parts(std::weak_ptr<MessageCenter> message_center, int64_t session_id)
        : center(message_center), accounting(std::move(message_center)), drops(session_id) {}

    bool enqueue(ZELTask task, uint64_t AlgoStat::*frames, double AlgoStat::*time)
        ZEL_EXCLUDES(lifecycle_mutex);

    const std::string name = "ZELSession-" + std::to_string(threadId());
    const std::weak_ptr<MessageCenter> center;
    /// Kept ready: unsubscribing, which a destructor does, must not ask for memory.
    const std::array<std::string, 2> frame_result_messages{"ZELMsgVideoFrameResult",
                                                           "ZELMsgAudioFrameResult"};
    TaskQueue queue;
    ResultAccounting accounting;
    IntakeStat intake;
    DropCounts drops;
    SessionCollectors collectors;
    std::atomic<bool> collectors_disabled{false};

    Mutex lifecycle_mutex;  // feeds against start, stop and the end; before every other lock
    bool stopped ZEL_GUARDED_BY(lifecycle_mutex) = false;
    ZELAlgo::ZELAlgoConfig config ZEL_GUARDED_BY(lifecycle_mutex);
    std::shared_ptr<IZELResultListener> result_listener ZEL_GUARDED_BY(lifecycle_mutex);
    SessionWorker worker ZEL_GUARDED_BY(lifecycle_mutex){queue, accounting, drops};

    Mutex listener_mutex;
    std::shared_ptr<IZELSessionListener> listener ZEL_GUARDED_BY(listener_mutex);

    Mutex report_mutex;
    HeartbeatReport report ZEL_GUARDED_BY(report_mutex);
};

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes a reference of its own
ZELSession::ZELSession(std::shared_ptr<MessageCenter> center)
    : parts_(std::make_unique<Parts>(std::move(center), getSessionId())) {}

ZELSession::~ZELSession() {
    const MutexLock lock(parts_->lifecycle_mutex);
    parts_->worker.stop();
    if (const auto forget = sessionHooks().forget_session) {
        forget(getSessionId());
    }
}

bool ZELSession::start() {
    const MutexLock lock(parts_->lifecycle_mutex);
    if (parts_->worker.running()) {
        return true;
    }
    if (parts_->stopped) {
        while (const std::optional<ZELTask> left = parts_->queue.discardOne()) {
            parts_->drops.add(*left);
        }
        parts_->collectors.renewNamed();
    }
    parts_->worker.start(parts_->name, parts_->config, parts_->result_listener);
    parts_->stopped = false;
    return true;
}

void ZELSession::stop() {
    std::shared_ptr<IZELSessionListener> listener;  // dies last: it may be what keeps this session
    const MutexLock lock(parts_->lifecycle_mutex);
    parts_->stopped = true;
    parts_->worker.stop();
    if (parts_->collectors.clear()) {
        if (const auto purge = sessionHooks().purge_collectors) {
            purge();
        }
    }
    const MutexLock listener_lock(parts_->listener_mutex);
    listener.swap(parts_->listener);
}

void ZELSession::registerMessageListeners() {
    if (const std::shared_ptr<MessageCenter> center = parts_->center.lock()) {
        const std::shared_ptr<CObject> self = shared_from_this();
        try {
            for (const std::string& name : parts_->frame_result_messages) {
                // The centre holds `self` as the subscription's owner while it calls.
                center->registerListener(name, self,
                                         [this](const auto& message) { onFrameResult(*message); });
            }
        } catch (...) {  // half of the subscription would keep the session alive
            unregisterMessageListeners();
            throw;
        }
    }
}

void ZELSession::unregisterMessageListeners() {
    if (const std::shared_ptr<MessageCenter> center = parts_->center.lock()) {
        const std::shared_ptr<CObject> self = shared_from_this();
        for (const std::string& name : parts_->frame_result_messages) {
            center->unregisterListener(name, self);
        }
    }
}

void ZELSession::onFrameResult(const Message& message) {
    if (std::dynamic_pointer_cast<ZELSession>(message.target()) == nullptr) {
        return;
    }
    std::shared_ptr<IZELSessionListener> listener;
    {
        const MutexLock lock(parts_->listener_mutex);
        listener = parts_->listener;
    }
    if (listener != nullptr) {
        listener->onSessionEvent(0, 0, 0, std::string());
    }
}

bool ZELSession::feedVideoFrame(std::shared_ptr<VideoFrame> frame, int64_t index) {
    return frame != nullptr && frame->width > 0 && frame->height > 0 &&
           parts_->enqueue({std::move(frame), index}, &AlgoStat::vframes, &AlgoStat::vframes_time);
}

bool ZELSession::feedAudioFrame(std::shared_ptr<AudioFrame> frame, int64_t index) {
    return frame != nullptr && frame->sample_rate > 0 && frame->channels > 0 &&
           parts_->enqueue({std::move(frame), index}, &AlgoStat::aframes, &AlgoStat::aframes_time);
}

bool ZELSession::Parts::enqueue(ZELTask task, uint64_t AlgoStat::*frames, double AlgoStat::*time) {
    const MutexLock lock(lifecycle_mutex);
    intake.add<uint64_t>(frames, 1);
    const double begin = now();
    {
        const std::optional<ZELTask> dropped = queue.pushDropOldest(std::move(task));
        if (dropped) {
            drops.add(*dropped);
        }
    }  // letting go of the frame that made room is part of the time
    intake.add(time, now() - begin);
    return true;
}

QueueDrops ZELSession::getQueueDrops() const {
    return parts_->drops.get();
}

int64_t ZELSession::getSessionId() const {
    return static_cast<int64_t>(reinterpret_cast<intptr_t>(this));
}

void ZELSession::setAlgoConfig(const ZELAlgo::ZELAlgoConfig& config) {
    const MutexLock lock(parts_->lifecycle_mutex);
    parts_->config = config;
}

void ZELSession::setResultListener(std::shared_ptr<IZELResultListener> listener) {
    const MutexLock lock(parts_->lifecycle_mutex);
    parts_->result_listener.swap(listener);
}

void ZELSession::setCollectorsDisabled(bool disabled) {
    parts_->collectors_disabled = disabled;
}

void ZELSession::setPublishFrameResults(bool publish) {
    parts_->accounting.setPublish(publish);
}

void ZELSession::setSeparateAudioQueue(bool separate) {
    parts_->queue.setSeparateAudio(separate);
}

void ZELSession::setListener(std::shared_ptr<IZELSessionListener> listener) {
    const MutexLock lock(parts_->listener_mutex);
    parts_->listener.swap(listener);
}

bool ZELSession::collectAccumulativeData(const std::string& name,
                                         const std::map<std::string, int64_t>* values) {
    const std::shared_ptr<ZELInfoCollector> collector = parts_->collectors.find(name);
    if (collector == nullptr || values == nullptr) {
        return false;
    }
    collector->addAccumulativeData(*values);
    return true;
}

bool ZELSession::collectSerialData(const std::string& name, const std::string& key,
                                   const std::vector<float>& samples) {
    const std::shared_ptr<ZELInfoCollector> collector = parts_->collectors.find(name);
    if (collector == nullptr) {
        return false;
    }
    collector->addSerialData(key, samples);
    return true;
}

std::shared_ptr<ZELInfoCollector> ZELSession::addCollector(const std::string& name) {
    return parts_->collectors.add(name);
}

void ZELSession::getHeartbeatInfo(ReportMap& report) {
    const MutexLock lock(parts_->report_mutex);
    EventSnapshot now_seen = parts_->accounting.snapshot();
    const AlgoStat period = parts_->intake.closePeriod();
    try {
        ReportMap fields = parts_->report.fields(getSessionId(), period, now_seen);
        parts_->collectors.collectInto(report, !parts_->collectors_disabled);
        fields.merge(report);  // the session's own values win; from here on nothing can fail
        report.swap(fields);
    } catch (...) {
        parts_->intake.reopenPeriod(period);
        throw;
    }
    parts_->report.closePeriod(std::move(now_seen));
}

ReportMap ZELSession::getAccumulativeInfo() {
    const MutexLock lock(parts_->report_mutex);
    return HeartbeatReport::wholeLife(parts_->intake.total(), parts_->accounting.snapshot());
}

}  // namespace ZEL

#include <zel/monitor/health_assessment.h>
#include <zel/monitor/manager.h>

#include <utility>

#include "base/log_format.h"
#include "base/mutex.h"
#include "session/session_hooks.h"

namespace ZEL {

/// Members go in reverse order: what reports to the centre goes before it.
struct ZELManager::State {
    const std::shared_ptr<MessageCenter> message_center = std::make_shared<MessageCenter>();
    std::map<int64_t, std::weak_ptr<ZELInfoCollector>> collectors ZEL_GUARDED_BY(mutex);
    Mutex mutex;  // after a session's own locks, never before; not held while a session or monitor runs
    std::map<int64_t, std::weak_ptr<ZELSession>> sessions ZEL_GUARDED_BY(mutex);
    bool started = false;                // nothing sets it so far
    const void* stat_adapter = nullptr;  // nor this
    std::shared_ptr<ConfigAdapter> config_adapter;
    bool data_monitor_disabled = false;
    std::vector<std::shared_ptr<ZELDataMonitor>> monitors;

    std::shared_ptr<ZELSession> findSession(int64_t session_id);
    void forward(void (ZELDataMonitor::*report_to)(uint64_t, ReportMap), uint64_t source,
                 const ReportMap& report);
};

std::shared_ptr<ZELSession> ZELManager::State::findSession(int64_t session_id) {
    const MutexLock lock(mutex);
    const auto found = sessions.find(session_id);
    return found != sessions.end() ? found->second.lock() : nullptr;
}

void ZELManager::State::forward(void (ZELDataMonitor::*report_to)(uint64_t, ReportMap), uint64_t source,
                                const ReportMap& report) {
    if (data_monitor_disabled) {
        return;
    }
    for (const std::shared_ptr<ZELDataMonitor>& monitor : monitors) {
        (monitor.get()->*report_to)(source, report);
    }
}

ZELManager& ZELManager::getInstance() {
    static ZELManager* const instance = [] {
        auto manager = std::make_unique<ZELManager>();
        setSessionHooks({.forget_session = [](int64_t id) { getInstance().unregisterSession(id); },
                         .purge_collectors = [] { getInstance().purgeCollectors(); }});
        return manager.release();  // never destroyed: sessions may outlive static destructors
    }();
    return *instance;
}

ZELManager::ZELManager() : state_(std::make_unique<State>()) {}

ZELManager::~ZELManager() {
    state_->message_center->stop();
}

std::shared_ptr<MessageCenter> ZELManager::getMessageCenter() {
    return state_->message_center;
}

void ZELManager::setConfigAdapter(std::shared_ptr<ConfigAdapter> adapter) {
    state_->config_adapter = adapter;
    ZELHA::getInstance().setConfigAdapter(std::move(adapter));
}

void ZELManager::initDataMonitors() {
    if (state_->config_adapter == nullptr) {
        return;
    }
    state_->data_monitor_disabled = state_->config_adapter->getBool("DisableDataMonitor", false);
    if (!state_->data_monitor_disabled) {
        state_->monitors.push_back(std::make_shared<ZELPlayerDataMonitor>());
    }
}

bool ZELManager::start() {
    if (state_->started) {
        zel_log("ZEL: %s\n", "WARN: start() is already started");
        return false;
    }
    if (state_->stat_adapter == nullptr) {
        zel_log("ZEL: %s\n", "WARN: stat_adapter_ not set before start()");
    }
    return true;  // intended: a second start is answered like the first
}

void ZELManager::reportPeriodic(uint64_t source, ReportMap report) {
    state_->forward(&ZELDataMonitor::reportPeriodic, source, report);
}

void ZELManager::reportPlaybackEnd(uint64_t source, ReportMap report) {
    state_->forward(&ZELDataMonitor::reportPlaybackEnd, source, report);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes a reference of its own
void ZELManager::registerSession(std::shared_ptr<ZELSession> session) {
    if (session == nullptr) {
        return;
    }
    const MutexLock lock(state_->mutex);
    state_->sessions[session->getSessionId()] = session;
}

void ZELManager::unregisterSession(int64_t session_id) {
    const MutexLock lock(state_->mutex);
    state_->sessions.erase(session_id);
}

bool ZELManager::collectAccumulativeDataForSession(int64_t session_id, const std::string& name,
                                                   const std::map<std::string, int64_t>* values) {
    const std::shared_ptr<ZELSession> session = state_->findSession(session_id);
    return session != nullptr && session->collectAccumulativeData(name, values);
}

bool ZELManager::collectSerialDataForSession(int64_t session_id, const std::string& name,
                                             const std::string& key, const std::vector<float>& samples) {
    const std::shared_ptr<ZELSession> session = state_->findSession(session_id);
    return session != nullptr && session->collectSerialData(name, key, samples);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes a reference of its own
bool ZELManager::registerCollector(int64_t key, std::shared_ptr<ZELInfoCollector> collector) {
    if (collector == nullptr) {
        return false;
    }
    const MutexLock lock(state_->mutex);
    state_->collectors[key] = collector;
    return true;
}

bool ZELManager::aliasCollector(int64_t new_key, int64_t existing_key) {
    const MutexLock lock(state_->mutex);
    const auto found = state_->collectors.find(existing_key);
    if (found == state_->collectors.end()) {
        return false;
    }
    state_->collectors[new_key] = found->second;
    return true;
}

void ZELManager::purgeCollectors() {
    const MutexLock lock(state_->mutex);
    std::erase_if(state_->collectors, [](const auto& entry) { return entry.second.expired(); });
}

// Intended, in both operations below: they look at a copy of the registry, and false says nothing.

bool ZELManager::collectSerialDataByKey(int64_t key, const std::string& entry_key,
                                        const std::vector<float>& samples) {
    const MutexLock lock(state_->mutex);
    auto collectors = state_->collectors;
    if (const std::shared_ptr<ZELInfoCollector> collector = collectors[key].lock()) {
        collector->addSerialData(entry_key, samples);
    }
    return false;
}

bool ZELManager::collectAccumulativeDataByKey(int64_t key, const std::map<std::string, int64_t>* values) {
    const MutexLock lock(state_->mutex);
    auto collectors = state_->collectors;
    const std::shared_ptr<ZELInfoCollector> collector = collectors[key].lock();
    if (collector != nullptr && values != nullptr) {
        collector->addAccumulativeData(*values);
    }
    return false;
}

}  // namespace ZEL

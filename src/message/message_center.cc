#include <zel/message/message_center.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <list>
#include <map>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include "base/log_format.h"
#include "base/mutex.h"
#include "base/started_thread.h"

namespace ZEL {
namespace {

struct Listener {
    std::shared_ptr<CObject> owner;
    MessageCenter::Callback callback;
};

bool isNamed(const std::shared_ptr<Message>& message) {
    return message != nullptr && !message->name().empty();
}

}  // namespace

/// Lock order: queue, then listeners. The delivery thread holds both while a callback runs.
struct MessageCenter::State {
    Mutex listeners_mutex;
    /// Lists, from which entries are taken without memory: sessions unsubscribe as they die.
    std::map<std::string, std::list<Listener>> listeners ZEL_GUARDED_BY(listeners_mutex);
    Mutex queue_mutex;
    std::list<std::shared_ptr<Message>> queue ZEL_GUARDED_BY(queue_mutex);
    std::condition_variable_any queue_changed;
    std::atomic<bool> stopped = false;
    Mutex join_mutex;
    std::thread worker;
    /// The centre that the calling thread delivers for, if it is a delivery thread.
    static thread_local const State* delivering_for;

    bool add(const std::string& name, Listener listener);
    void run();
    void deliver(Message& message);
    void deliverTo(const Listener& listener, Message& message);
};

bool MessageCenter::State::add(const std::string& name, Listener listener) {
    if (name.empty() || listener.owner == nullptr || listener.callback == nullptr) {
        return false;
    }
    std::list<Listener> added;
    added.push_back(std::move(listener));
    const MutexLock lock(listeners_mutex);
    std::list<Listener>& entries = listeners[name];
    // Intended: a stopped centre is noticed only where there is a list to search.
    if (std::any_of(entries.begin(), entries.end(),
                    [&](const Listener& entry) { return stopped || entry.owner == added.front().owner; })) {
        return false;
    }
    entries.splice(entries.end(), added);
    return true;
}

thread_local const MessageCenter::State* MessageCenter::State::delivering_for = nullptr;

void MessageCenter::State::run() {
    delivering_for = this;
    while (!stopped) {
        // Let go of outside the lock: a message may be its target's last owner, whose destructor may call the
        // centre or wait for somebody who does.
        std::list<std::shared_ptr<Message>> delivered;
        const MutexLock lock(queue_mutex);
        while (queue.empty() && !stopped) {
            queue_changed.wait(queue_mutex);
        }
        for (const std::shared_ptr<Message>& message : queue) {  // grows while callbacks call receiveNoLock
            if (stopped) {
                return;
            }
            deliver(*message);
        }
        delivered.swap(queue);
    }
}

void MessageCenter::State::deliver(Message& message) {
    const MutexLock lock(listeners_mutex);
    const auto found = listeners.find(message.name());
    if (found == listeners.end()) {
        return;
    }
    for (const Listener& listener : found->second) {
        deliverTo(listener, message);
    }
}

void MessageCenter::State::deliverTo(const Listener& listener, Message& message) {
    Callback callback;
    std::shared_ptr<Message> copy;
    try {
        // Intended: the payload is moved, so the first listener alone receives it. The callback runs as a
        // copy, so that each delivery starts from what was registered.
        callback = listener.callback;
        copy = std::make_shared<Message>(message.name(), std::exchange(message.payload_, {}), listener.owner);
    } catch (const std::bad_alloc&) {
        zel_log("ZEL: %s\n", "WARN: no memory to deliver a message");
        return;
    }
    callback(std::move(copy));  // intended: what it throws ends the process
}

MessageCenter::MessageCenter() : state_(std::make_unique<State>()) {
    state_->worker =
        startThread([] { return ThreadName("MPMessageCenter"); }, [state = state_.get()] { state->run(); });
}

MessageCenter::~MessageCenter() = default;

void MessageCenter::registerListener(const std::string& name, std::shared_ptr<CObject> owner,
                                     Callback callback) {
    state_->add(name, {std::move(owner), std::move(callback)});
}

void MessageCenter::registerListenerLogged(const std::string& name, std::shared_ptr<CObject> owner,
                                           Callback callback) {
    if (state_->add(name, {std::move(owner), std::move(callback)})) {
        zel_log("registerListener %s", name.c_str());
    }
}

int32_t MessageCenter::unregisterListener(const std::string& name, const std::shared_ptr<CObject>& owner) {
    std::list<Listener> removed;  // outlives the lock: what a callback holds may call the centre as it dies
    const MutexLock lock(state_->listeners_mutex);
    const auto found = state_->listeners.find(name);
    if (found != state_->listeners.end()) {
        std::list<Listener>& entries = found->second;
        for (auto entry = entries.begin(); entry != entries.end();) {
            const auto current = entry++;
            if (current->owner == owner) {
                removed.splice(removed.end(), entries, current);
            }
        }
        if (entries.empty()) {
            state_->listeners.erase(found);
        }
    }
    return -1;  // intended, also when something was removed
}

void MessageCenter::publish(std::shared_ptr<Message> message) {
    if (state_->stopped || !isNamed(message)) {
        return;
    }
    {
        const MutexLock lock(state_->queue_mutex);
        state_->queue.push_back(std::move(message));
    }
    state_->queue_changed.notify_one();
}

void MessageCenter::receiveNoLock(std::shared_ptr<Message> message) {
    zel_log("[MessageCenter] receiveNoLock: %s", message != nullptr ? message->name().c_str() : "");
    if (state_->stopped || !isNamed(message)) {
        return;
    }
    state_->queue_mutex.assertHeld();  // by the delivery that called the callback that called us
    state_->queue.push_back(std::move(message));
    state_->queue_changed.notify_one();
}

void MessageCenter::stop() {
    state_->stopped = true;
    if (State::delivering_for == state_.get()) {
        throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
    }
    { const MutexLock lock(state_->queue_mutex); }  // the worker sees the flag before it waits, or is waiting
    state_->queue_changed.notify_one();
    {
        const MutexLock lock(state_->join_mutex);
        if (state_->worker.joinable()) {
            state_->worker.join();
        }
    }
    // Let go of outside the locks: an owner's destructor may call the centre.
    std::map<std::string, std::list<Listener>> listeners;
    std::list<std::shared_ptr<Message>> queue;
    {
        const MutexLock queue_lock(state_->queue_mutex);
        const MutexLock listeners_lock(state_->listeners_mutex);
        listeners.swap(state_->listeners);
        queue.swap(state_->queue);
    }
}

}  // namespace ZEL

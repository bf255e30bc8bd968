#ifndef ZEL_MESSAGE_MESSAGE_CENTER_H_
#define ZEL_MESSAGE_MESSAGE_CENTER_H_

#include <zel/base/c_object.h>
#include <zel/message/message.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace ZEL {

/// Publish and subscribe inside one process: messages are queued and handed to the listeners of their name,
/// in publish order, on the centre's one thread ("MPMessageCenter").
///
/// Every function may be called from any thread that is not running a callback. A callback runs while the
/// centre is locked, so it may call receiveNoLock and nothing else here; publishers wait meanwhile. A
/// callback that throws ends the process.
class MessageCenter {
  public:
    using Callback = std::function<void(std::shared_ptr<Message>)>;

    /// Starts the delivery thread. Throws std::system_error if there is none to be had.
    MessageCenter();
    MessageCenter(const MessageCenter&) = delete;
    MessageCenter& operator=(const MessageCenter&) = delete;

    /// stop() must have been called: a centre that still delivers ends the process.
    ~MessageCenter();

    /// Calls `callback` for every message called `name`. `owner` identifies the subscription, is kept alive
    /// by it and becomes the target of each delivered message. Listeners of one name are called in the order
    /// of their registration; the first receives the payload, the others an empty one. An owner subscribes
    /// once per name: its later callbacks are ignored, as are an empty name, owner or callback.
    void registerListener(const std::string& name, std::shared_ptr<CObject> owner, Callback callback);

    /// registerListener, with a log line for a subscription that was added.
    void registerListenerLogged(const std::string& name, std::shared_ptr<CObject> owner, Callback callback);

    /// Ends the owner's subscription to `name`, if there is one. When it returns, the callback is not running
    /// and will not be called again. Always answers -1.
    int32_t unregisterListener(const std::string& name, const std::shared_ptr<CObject>& owner);

    /// Queues a message. Null, a message without a name and anything after stop() are dropped.
    void publish(std::shared_ptr<Message> message);

    /// publish for callbacks, which run while the queue is locked. The message is delivered in the same go.
    void receiveNoLock(std::shared_ptr<Message> message);

    /// Ends delivery for good: returns when the running callback is done, forgets listeners and undelivered
    /// messages. On the delivery thread it throws std::system_error (resource deadlock) instead of waiting
    /// for itself; delivery ends all the same, and another thread must call stop() before the centre goes.
    void stop();

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace ZEL

#endif  // ZEL_MESSAGE_MESSAGE_CENTER_H_

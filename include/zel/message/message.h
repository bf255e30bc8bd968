#ifndef ZEL_MESSAGE_MESSAGE_H_
#define ZEL_MESSAGE_MESSAGE_H_

#include <zel/base/c_object.h>
#include <zel/zel.h>

#include <memory>
#include <string>

namespace ZEL {

/// A named record of text fields, always held by std::shared_ptr. A published message has no target; each
/// copy that reaches a listener carries the listener's owner. Whoever publishes a message gives it away:
/// delivery takes its payload.
class Message : public CObject {
  public:
    /// A message without a target.
    explicit Message(std::string name, ReportMap payload = {});

    /// A message to or about `target`. Throws std::bad_weak_ptr if that object is gone.
    Message(std::string name, ReportMap payload, std::weak_ptr<CObject> target);

    /// What listeners register for.
    const std::string& name() const { return name_; }
    /// The fields; empty in all copies but the first listener's, and in a message that was delivered.
    const ReportMap& payload() const { return payload_; }

    /// The object that this message is for; null while the message is being published.
    std::shared_ptr<CObject> target() const { return target_; }

  private:
    friend class MessageCenter;  // takes the payload on delivery

    const std::string name_;
    ReportMap payload_;
    const std::shared_ptr<CObject> target_;
};

}  // namespace ZEL

#endif  // ZEL_MESSAGE_MESSAGE_H_

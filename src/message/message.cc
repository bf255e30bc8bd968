#include <zel/message/message.h>

#include <utility>

namespace ZEL {

Message::Message(std::string name, ReportMap payload)
    : name_(std::move(name)), payload_(std::move(payload)) {}

Message::Message(std::string name, ReportMap payload, std::weak_ptr<CObject> target)
    : name_(std::move(name)), payload_(std::move(payload)), target_(std::move(target)) {}

}  // namespace ZEL

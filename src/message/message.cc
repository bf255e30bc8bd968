#include <zel/message/message.h>

#include <utility>

namespace ZEL {

Message::Message(std::string name, ReportMap payload)
    : name_(std::move(name)), payload_(std::move(payload)) {}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes a reference of its own
Message::Message(std::string name, ReportMap payload, std::weak_ptr<CObject> target)
    : name_(std::move(name)), payload_(std::move(payload)), target_(target) {}

}  // namespace ZEL

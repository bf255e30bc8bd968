// The message centre with any sequence of subscriptions, messages and callbacks that send on: each
// subscription hears its name's messages in the order in which they were published, the first one with their
// fields, and nothing after its end.
#include <zel/base/log.h>
#include <zel/message/message_center.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "fuzz/bytes.h"

namespace {

using fuzz::Bytes;

struct Owner : ZEL::CObject {
    int64_t last = -1;                    ///< number of the last message heard; delivery thread only
    std::atomic<bool> subscribed{false};  ///< cleared when unregisterListener has returned
};

constexpr size_t kNames = 3;
constexpr size_t kOwners = 4;

std::string nameOf(size_t name) {
    return std::string(name * 20, 'n');  // the first one is empty: such messages are dropped
}

void hear(Owner& owner, ZEL::MessageCenter& center, bool sends_on, const ZEL::Message& message) {
    MUST_HOLD(owner.subscribed);
    MUST_HOLD(message.target().get() == &owner);
    const auto number = message.payload().find("number");
    if (number == message.payload().end()) {
        return;  // another one has the fields
    }
    if (number->second != "sent on") {
        const int64_t heard = std::stoll(number->second);
        MUST_HOLD(heard > owner.last);
        owner.last = heard;
        if (sends_on) {
            center.receiveNoLock(std::make_shared<ZEL::Message>(nameOf(2), ReportMap{{"number", "sent on"}}));
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
    ZEL::MessageCenter center;
    std::array<std::array<std::shared_ptr<Owner>, kNames>, kOwners> owners;
    int64_t published = 0;
    Bytes bytes(data, size);
    while (!bytes.empty()) {
        const uint8_t step = bytes.next();
        const size_t name = step / 8 % kNames;
        std::shared_ptr<Owner>& owner = owners[step / 32 % kOwners][name];
        if (step % 8 < 2 && owner == nullptr) {
            owner = std::make_shared<Owner>();
            owner->subscribed = true;
            center.registerListener(nameOf(name), owner, [&center, step, self = owner.get()](const auto& m) {
                hear(*self, center, step % 8 == 1, *m);
            });
        } else if (step % 8 == 2 && owner != nullptr) {
            MUST_HOLD(center.unregisterListener(nameOf(name), owner) == -1);
            owner->subscribed = false;
            MUST_HOLD(owner.use_count() == 1);
            owner.reset();
        } else if (step == 255) {
            center.stop();
        } else {
            center.publish(std::make_shared<ZEL::Message>(
                nameOf(name), ReportMap{{"number", std::to_string(published++)}}));
        }
    }
    center.stop();
    for (const auto& row : owners) {
        for (const auto& owner : row) {
            MUST_HOLD(owner == nullptr || owner.use_count() == 1);
        }
    }
    return 0;
}

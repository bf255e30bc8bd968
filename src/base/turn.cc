#include "base/turn.h"

#include "base/mutex.h"

namespace ZEL {
namespace {

constinit Mutex all_turns;

}  // namespace

thread_local Turn::Visitor Turn::this_thread;

Turn::Held::Held(Turn& turn) : taken_(turn.take()) {}

Turn::Held::~Held() {
    if (taken_ != nullptr) {
        taken_->giveBack();
    }
}

Turn* Turn::take() {
    const MutexLock lock(all_turns);
    while (holder_ != nullptr) {
        if (leadsTo(this_thread)) {
            return nullptr;
        }
        this_thread.wanted = this;
        free_.wait(all_turns);
        this_thread.wanted = nullptr;
    }
    holder_ = &this_thread;
    return this;
}

void Turn::giveBack() {
    const MutexLock lock(all_turns);
    holder_ = nullptr;
    free_.notify_one();  // under the lock: the turn may end as soon as somebody else has had it
}

bool Turn::leadsTo(const Visitor& visitor) const {
    for (const Turn* turn = this; turn != nullptr && turn->holder_ != nullptr; turn = turn->holder_->wanted) {
        if (turn->holder_ == &visitor) {
            return true;
        }
    }
    return false;
}

}  // namespace ZEL

#include "session/drop_counts.h"

#include <map>

#include "base/mutex.h"

namespace ZEL {
namespace {

struct Living {
    Mutex mutex;
    std::map<int64_t, const DropCounts*> counts ZEL_GUARDED_BY(mutex);
};

Living& living() {
    static auto* const instance = new Living;  // never destroyed: sessions may outlive static destructors
    return *instance;
}

}  // namespace

DropCounts::DropCounts(int64_t session_id) : session_id_(session_id) {
    const MutexLock lock(living().mutex);
    living().counts[session_id] = this;
}

DropCounts::~DropCounts() {
    const MutexLock lock(living().mutex);
    living().counts.erase(session_id_);
}

void DropCounts::add(const ZELTask& dropped) {
    const bool video = std::holds_alternative<std::shared_ptr<VideoFrame>>(dropped.frame);
    (video ? video_ : audio_).fetch_add(1, std::memory_order_relaxed);
}

QueueDrops DropCounts::get() const {
    return {.video = video_.load(std::memory_order_relaxed), .audio = audio_.load(std::memory_order_relaxed)};
}

std::optional<QueueDrops> queueDropsOfSession(int64_t session_id) {
    const MutexLock lock(living().mutex);  // keeps the counts alive while they are read
    const auto found = living().counts.find(session_id);
    return found != living().counts.end() ? std::optional(found->second->get()) : std::nullopt;
}

}  // namespace ZEL

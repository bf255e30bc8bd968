#include "session/frame_pool.h"

#include <new>
#include <utility>

namespace ZEL {

FramePool::FramePool(size_t most_kept) : most_kept_(most_kept) {
    free_.reserve(most_kept);
}

std::unique_ptr<uint8_t[]> FramePool::take(size_t bytes) {
    {
        const MutexLock lock(mutex_);
        if (bytes != bytes_) {
            free_.clear();
            bytes_ = bytes;
        }
        if (!free_.empty()) {
            std::unique_ptr<uint8_t[]> buffer = std::move(free_.back());
            free_.pop_back();
            return buffer;
        }
    }
    return std::unique_ptr<uint8_t[]>(new (std::nothrow) uint8_t[bytes]);
}

void FramePool::giveBack(std::unique_ptr<uint8_t[]> buffer, size_t bytes) {
    const MutexLock lock(mutex_);
    if (buffer != nullptr && bytes == bytes_ && free_.size() < most_kept_) {
        free_.push_back(std::move(buffer));
    }
}

size_t FramePool::kept() const {
    const MutexLock lock(mutex_);
    return free_.size();
}

}  // namespace ZEL

#ifndef ZEL_SRC_SESSION_FRAME_POOL_H_
#define ZEL_SRC_SESSION_FRAME_POOL_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "base/mutex.h"

namespace ZEL {

/// Bytes of an I420 frame of positive size; fits for every 32-bit width and height.
constexpr uint64_t i420Bytes(int32_t width, int32_t height) {
    return static_cast<uint64_t>(width) * static_cast<uint64_t>(height) * 3 / 2;
}

/// Video frame buffers of one stream that go round, so that a steady stream neither allocates nor touches
/// fresh pages. All buffers have one size; a request for another size releases the old ones. Any thread.
class FramePool {
  public:
    /// At most `most_kept` buffers wait for their next use.
    explicit FramePool(size_t most_kept);

    /// A buffer of `bytes` bytes with any content, or null if there is no memory.
    std::unique_ptr<uint8_t[]> take(size_t bytes);

    void giveBack(std::unique_ptr<uint8_t[]> buffer, size_t bytes);

    size_t kept() const;

  private:
    const size_t most_kept_;
    mutable Mutex mutex_;
    size_t bytes_ ZEL_GUARDED_BY(mutex_) = 0;
    std::vector<std::unique_ptr<uint8_t[]>> free_
        ZEL_GUARDED_BY(mutex_);  // last in, first out: still in cache
};

}  // namespace ZEL

#endif  // ZEL_SRC_SESSION_FRAME_POOL_H_

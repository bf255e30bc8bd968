#ifndef ZEL_TOOLS_INPUT_CONTAINER_BYTE_WINDOW_H_
#define ZEL_TOOLS_INPUT_CONTAINER_BYTE_WINDOW_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "input/container/byte_source.h"

namespace zel_monitor {

/// Reads an input from its beginning to its end, in large steps, for those who go through it in small ones.
class ByteWindow {
  public:
    /// Shows `ahead` bytes at least wherever there are as many. `read` outlives this object.
    ByteWindow(const ReadAt& read, size_t ahead) : read_(read), ahead_(ahead) {}

    /// What comes from `place` on, which never lies before where it lay the last time. Changed freely, but
    /// valid only until the next call.
    std::span<uint8_t> at(int64_t place) {
        auto skipped = std::min(bytes_.size(), static_cast<size_t>(place - from_));
        if (bytes_.size() - skipped < ahead_ && !at_end_) {
            bytes_ = readBytes(read_, place, ahead_ + kStepBytes);
            at_end_ = bytes_.size() < ahead_ + kStepBytes;
            from_ = place;
            skipped = 0;
        }
        return std::span(bytes_).subspan(skipped);
    }

  private:
    static constexpr size_t kStepBytes = size_t{256} << 10;

    const ReadAt& read_;
    size_t ahead_;
    std::vector<uint8_t> bytes_ = {};
    int64_t from_ = 0;
    bool at_end_ = false;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_CONTAINER_BYTE_WINDOW_H_

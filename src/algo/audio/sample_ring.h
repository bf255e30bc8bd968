#ifndef ZEL_SRC_ALGO_AUDIO_SAMPLE_RING_H_
#define ZEL_SRC_ALGO_AUDIO_SAMPLE_RING_H_

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace ZELAlgo {

/// First in, first out, in a fixed buffer.
class SampleRing {
  public:
    static constexpr size_t kCapacity = 24000;

    size_t freeSpace() const { return write_ < read_ ? read_ - write_ : kCapacity - write_ + read_; }
    size_t available() const { return write_ >= read_ ? write_ - read_ : kCapacity - read_ + write_; }

    /// Appends all of the samples, or none and returns false if they do not fit. Samples that fill the ring
    /// to the last place are accepted and lost: a full ring reads as an empty one. That is intended.
    bool write(const int16_t* samples, size_t count) {
        if (count > freeSpace()) {
            return false;
        }
        const size_t first = std::min(count, kCapacity - write_);
        std::copy_n(samples, first, storage_.begin() + static_cast<std::ptrdiff_t>(write_));
        std::copy_n(samples + first, count - first, storage_.begin());
        write_ = (write_ + count) % kCapacity;
        return true;
    }

    /// Takes the oldest samples out; there must be as many.
    void read(int16_t* samples, size_t count) {
        assert(count <= available());
        const size_t first = std::min(count, kCapacity - read_);
        std::copy_n(storage_.begin() + static_cast<std::ptrdiff_t>(read_), first, samples);
        std::copy_n(storage_.begin(), count - first, samples + first);
        read_ = (read_ + count) % kCapacity;
    }

  private:
    std::array<int16_t, kCapacity> storage_{};
    size_t read_ = 0;
    size_t write_ = 0;
};

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_AUDIO_SAMPLE_RING_H_

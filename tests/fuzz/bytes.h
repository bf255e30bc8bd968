#ifndef ZEL_TESTS_FUZZ_BYTES_H_
#define ZEL_TESTS_FUZZ_BYTES_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace fuzz {

/// An input, taken apart from its beginning; zeros follow its end.
class Bytes {
  public:
    Bytes(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    bool empty() const { return size_ == 0; }

    uint8_t next() {
        if (size_ == 0) {
            return 0;
        }
        --size_;
        return *data_++;
    }

    /// Small numbers of either sign.
    int32_t number() { return static_cast<int8_t>(next()); }

    uint32_t below(uint32_t bound) {
        const uint32_t high = next();
        return (high << 8U | next()) % bound;
    }

    /// Up to `longest` characters as they come.
    std::string text(size_t longest) {
        std::string text(next() % (longest + 1), '\0');
        for (char& character : text) {
            character = static_cast<char>(next());
        }
        return text;
    }

    std::vector<uint8_t> fill(size_t count) {
        std::vector<uint8_t> bytes(count);
        const uint8_t seed = next();
        const uint8_t step = next();
        for (size_t i = 0; i < count; ++i) {
            bytes[i] = static_cast<uint8_t>(seed + step * (i % 97));
        }
        return bytes;
    }

    /// The next `size` bytes, for somebody else.
    Bytes split(size_t size) {
        const size_t taken = size < size_ ? size : size_;
        const Bytes part(data_, taken);
        data_ += taken;
        size_ -= taken;
        return part;
    }

    size_t size() const { return size_; }

  private:
    const uint8_t* data_;
    size_t size_;
};

/// Ends the run as a finding if something that must hold does not.
inline void mustHold(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

}  // namespace fuzz

#define MUST_HOLD(condition) ::fuzz::mustHold(condition, #condition)

#endif  // ZEL_TESTS_FUZZ_BYTES_H_

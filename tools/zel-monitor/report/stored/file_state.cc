#include "report/stored/file_state.h"

#include <array>
#include <cstddef>
#include <fmt/format.h>
#include <fstream>
#include <memory>
#include <new>
#include <sys/stat.h>
#include <vector>

extern "C" {
#include <libavutil/mem.h>
#include <libavutil/sha.h>
}

namespace zel_monitor {
namespace {

class Sha256 {
  public:
    Sha256() : state_(av_sha_alloc()) {
        if (state_ == nullptr) {
            throw std::bad_alloc();
        }
        av_sha_init(state_.get(), kBits);
    }
    void add(const char* bytes, size_t count) {
        av_sha_update(state_.get(), reinterpret_cast<const uint8_t*>(bytes), count);
    }
    std::string hex() {
        std::array<uint8_t, kBits / 8> digest{};
        av_sha_final(state_.get(), digest.data());
        return fmt::format("{:02x}", fmt::join(digest, ""));
    }

  private:
    static constexpr int kBits = 256;
    struct Free {
        void operator()(AVSHA* state) const { av_free(state); }
    };
    std::unique_ptr<AVSHA, Free> state_;
};

}  // namespace

FileState stateOf(const std::string& name) {
    struct stat state = {};
    if (stat(name.c_str(), &state) != 0 || !S_ISREG(state.st_mode)) {
        return {};
    }
    constexpr int64_t kNanoseconds = 1'000'000'000;
    return {.bytes = static_cast<uint64_t>(state.st_size),
            .modified_ns = state.st_mtim.tv_sec * kNanoseconds + state.st_mtim.tv_nsec};
}

std::string sha256(std::string_view text) {
    Sha256 hash;
    hash.add(text.data(), text.size());
    return hash.hex();
}

std::optional<std::string> sha256OfFile(const std::string& name) {
    constexpr size_t kAtOnce = size_t{1} << 20U;
    std::ifstream file(name, std::ios::binary);
    std::vector<char> bytes(kAtOnce);
    Sha256 hash;
    while (file) {
        file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        hash.add(bytes.data(), static_cast<size_t>(file.gcount()));
    }
    return file.eof() && !file.bad() ? std::optional(hash.hex()) : std::nullopt;
}

}  // namespace zel_monitor

#include "input/polled_input.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace zel_monitor {
namespace {

constexpr int kBufferBytes = 32 * 1024;
constexpr int kLongestWaitMs = 100;

}  // namespace

class PolledInput::Descriptor {
  public:
    Descriptor(int number, bool owned, const std::atomic<bool>* interrupted)
        : number_(number), owned_(owned), interrupted_(interrupted) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (owned_) {
            close(number_);
        }
    }

    std::span<const uint8_t> beginning() const { return beginning_; }

    /// A named pipe that has not had a writer yet is not ready, unlike one whose last writer has gone.
    static int readInto(void* descriptor, uint8_t* buffer, int size) {
        auto& self = *static_cast<Descriptor*>(descriptor);
        pollfd input{.fd = self.number_, .events = POLLIN, .revents = 0};
        while (self.interrupted_ == nullptr || !self.interrupted_->load()) {
            if (poll(&input, 1, kLongestWaitMs) > 0) {
                const ssize_t bytes = read(self.number_, buffer, static_cast<size_t>(size));
                if (bytes >= 0) {
                    self.keepBeginning({buffer, static_cast<size_t>(bytes)});
                    return bytes > 0 ? static_cast<int>(bytes) : AVERROR_EOF;
                }
                if (errno != EINTR && errno != EAGAIN) {
                    return AVERROR(errno);
                }
            }
        }
        return AVERROR_EXIT;
    }

  private:
    void keepBeginning(std::span<const uint8_t> bytes) {
        const size_t kept = std::min(bytes.size(), PolledInput::kBeginningBytes - beginning_.size());
        beginning_.insert(beginning_.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(kept));
    }

    int number_;
    bool owned_;
    const std::atomic<bool>* interrupted_;
    std::vector<uint8_t> beginning_;
};

PolledInput::PolledInput(std::unique_ptr<Descriptor> descriptor) : descriptor_(std::move(descriptor)) {
    auto* const buffer = static_cast<uint8_t*>(orOutOfMemory(av_malloc(kBufferBytes)));
    context_.reset(orOutOfMemory(avio_alloc_context(buffer, kBufferBytes, 0, descriptor_.get(),
                                                    &Descriptor::readInto, nullptr, nullptr)));
}
PolledInput::PolledInput(PolledInput&&) noexcept = default;
PolledInput& PolledInput::operator=(PolledInput&&) noexcept = default;
PolledInput::~PolledInput() = default;

PolledInput PolledInput::standardInput(const std::atomic<bool>* interrupted) {
    return PolledInput(std::make_unique<Descriptor>(STDIN_FILENO, false, interrupted));
}

PolledInput PolledInput::file(const std::string& path, const std::atomic<bool>* interrupted) {
    const int number = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (number < 0) {
        throw FfmpegError(AVERROR(errno));
    }
    return PolledInput(std::make_unique<Descriptor>(number, true, interrupted));
}

std::span<const uint8_t> PolledInput::beginning() const {
    return descriptor_->beginning();
}

bool mustBePolled(const std::string& path) {
    std::error_code ignored;
    const auto type = std::filesystem::status(path, ignored).type();
    return type == std::filesystem::file_type::fifo || type == std::filesystem::file_type::character;
}

}  // namespace zel_monitor

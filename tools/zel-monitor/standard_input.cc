#include "standard_input.h"

#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace zel_monitor {
namespace {

constexpr int kBufferBytes = 32 * 1024;
constexpr int kLongestWaitMs = 100;

int readStandardInput(void* flag, uint8_t* buffer, int size) {
    const auto* const interrupted = static_cast<const std::atomic<bool>*>(flag);
    pollfd input{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
    while (interrupted == nullptr || !interrupted->load()) {
        if (poll(&input, 1, kLongestWaitMs) > 0) {
            const ssize_t bytes = read(STDIN_FILENO, buffer, static_cast<size_t>(size));
            if (bytes >= 0) {
                return bytes > 0 ? static_cast<int>(bytes) : AVERROR_EOF;
            }
            if (errno != EINTR && errno != EAGAIN) {
                return AVERROR(errno);
            }
        }
    }
    return AVERROR_EXIT;
}

}  // namespace

InputContext openStandardInput(const std::atomic<bool>* interrupted) {
    auto* const buffer = static_cast<uint8_t*>(orOutOfMemory(av_malloc(kBufferBytes)));
    return InputContext(
        orOutOfMemory(avio_alloc_context(buffer, kBufferBytes, 0, const_cast<std::atomic<bool>*>(interrupted),
                                         &readStandardInput, nullptr, nullptr)));
}

}  // namespace zel_monitor

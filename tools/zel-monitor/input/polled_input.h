#ifndef ZEL_TOOLS_INPUT_POLLED_INPUT_H_
#define ZEL_TOOLS_INPUT_POLLED_INPUT_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "input/ffmpeg_handles.h"

namespace zel_monitor {

/// Whether reading the file `path` may wait for whoever writes, as with a named pipe or a terminal.
bool mustBePolled(const std::string& path);

/// Bytes for FFmpeg from where they may be long in coming. FFmpeg's own reads would wait without end, as
/// would the opening of a named pipe that nobody writes to; here a read fails soon after `interrupted`, which
/// may be null, has become true, on whichever thread it waits.
class PolledInput {
  public:
    static PolledInput standardInput(const std::atomic<bool>* interrupted);
    /// Throws FfmpegError if `path` cannot be opened.
    static PolledInput file(const std::string& path, const std::atomic<bool>* interrupted);

    PolledInput(PolledInput&&) noexcept;
    PolledInput& operator=(PolledInput&&) noexcept;
    ~PolledInput();

    /// Stays with this object.
    AVIOContext* context() const { return context_.get(); }

    static constexpr size_t kBeginningBytes = 4096;
    /// The first bytes that were read, that many at most; FFmpeg does not keep them.
    std::span<const uint8_t> beginning() const;

  private:
    class Descriptor;
    struct FreeContext {
        void operator()(AVIOContext* context) const {
            av_freep(&context->buffer);
            avio_context_free(&context);
        }
    };
    explicit PolledInput(std::unique_ptr<Descriptor> descriptor);

    std::unique_ptr<Descriptor> descriptor_;
    std::unique_ptr<AVIOContext, FreeContext> context_;  // reads through the descriptor
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_POLLED_INPUT_H_

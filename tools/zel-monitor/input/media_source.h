#ifndef ZEL_TOOLS_INPUT_MEDIA_SOURCE_H_
#define ZEL_TOOLS_INPUT_MEDIA_SOURCE_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "cli/media_facts.h"
#include "input/media_item.h"

namespace zel_monitor {

/// An input that cannot be opened, read or decoded: "<input>: <FFmpeg's reason>".
class MediaError : public std::runtime_error {
  public:
    MediaError(const std::string& input, const std::string& reason, int code)
        : std::runtime_error(input + ": " + reason), code_(code) {}

    /// FFmpeg's error code, always negative.
    int code() const { return code_; }

  private:
    int code_;
};

struct MediaOptions {
    std::string format = {};  ///< forces an FFmpeg input format, such as "lavfi"; empty: found out
    std::string label = {};   ///< name to show instead of the input; empty: the input itself
    double duration = 0;      ///< seconds, for inputs that do not say it themselves; 0: not known either
    bool video = true;
    bool audio = true;
    /// Once it is true, blocking reads end, an opening fails and the source ends. It outlives the source.
    const std::atomic<bool>* interrupted = nullptr;
};

/// Decodes the best video and the best audio stream of a file, a pipe ("-") or a URL with the machine's
/// threads. Pictures and sounds come in the order of their times as far as the input's interleaving allows.
/// What a decoder refuses is counted and skipped. Display rotation is ignored. One thread at a time. Where
/// streams come and go, another one that takes over from the chosen one is followed.
class MediaSource {
  public:
    /// Opens `input`. Throws MediaError.
    explicit MediaSource(const std::string& input, const MediaOptions& options = {});
    MediaSource(MediaSource&&) noexcept;
    MediaSource& operator=(MediaSource&&) noexcept;
    ~MediaSource();

    const MediaFacts& facts() const;
    MediaCounts counts() const;

    /// The next picture or block of sound; none at the end and after an interruption. Throws MediaError, once
    /// and after everything that could be decoded, if the input broke off with an error or held nothing that
    /// could be decoded.
    std::optional<MediaItem> next();

    /// What of the pictures and the sound did not come out although nothing failed, in words: the input was
    /// cut off, or part of it could not be followed. None before the end.
    std::optional<std::string> shortfall() const;

  private:
    class Reader;
    std::unique_ptr<Reader> reader_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_MEDIA_SOURCE_H_

#ifndef ZEL_TOOLS_INPUT_MEDIA_SOURCE_H_
#define ZEL_TOOLS_INPUT_MEDIA_SOURCE_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

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

struct VideoFacts {
    std::string codec;
    std::string pixel_format;  ///< as decoded, FFmpeg's name
    int width;                 ///< as decoded, before an odd last column or row is left out
    int height;
    double frame_rate;   ///< pictures per second; 0 if the stream does not say
    bool still = false;  ///< said to be one picture, such as the cover of a song, and not the first of many
};

struct AudioFacts {
    std::string codec;
    int sample_rate;
    int channels;
};

/// What the input says of itself before anything is decoded.
struct MediaFacts {
    std::string input;  ///< the name to show to people
    std::string container;
    std::optional<double> duration;   ///< seconds from the first timestamp to the end of the chosen streams
    bool duration_estimated = false;  ///< guessed from the last timestamps, or from size and bit rate
    std::optional<VideoFacts> video;
    std::optional<AudioFacts> audio;
};

/// What has come out of the input so far.
struct MediaCounts {
    uint64_t bytes_read = 0;
    uint64_t pictures = 0;
    uint64_t sounds = 0;
    uint64_t damaged = 0;  ///< packets that a decoder refused, and frames that it marked as damaged
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

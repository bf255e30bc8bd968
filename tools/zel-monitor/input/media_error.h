#ifndef ZEL_TOOLS_INPUT_MEDIA_ERROR_H_
#define ZEL_TOOLS_INPUT_MEDIA_ERROR_H_

#include <stdexcept>
#include <string>
#include <utility>

#include "cli/incomplete.h"

namespace zel_monitor {

/// An input that cannot be opened, read or decoded: "<input>: <reason>".
class MediaError : public std::runtime_error {
  public:
    MediaError(const std::string& input, Shortfall shortfall, int code)
        : std::runtime_error(input + ": " + shortfall.detail),
          shortfall_(std::move(shortfall)),
          code_(code) {}

    Incomplete kind() const { return shortfall_.kind; }
    /// Without the input's name.
    const std::string& reason() const { return shortfall_.detail; }
    /// FFmpeg's error code, always negative.
    int code() const { return code_; }

  private:
    Shortfall shortfall_;
    int code_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_MEDIA_ERROR_H_

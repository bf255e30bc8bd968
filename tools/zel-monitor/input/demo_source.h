#ifndef ZEL_TOOLS_INPUT_DEMO_SOURCE_H_
#define ZEL_TOOLS_INPUT_DEMO_SOURCE_H_

#include <string>
#include <string_view>

#include "input/media_source.h"

namespace zel_monitor {

/// What one may give instead of a file's name to get the demo stream.
inline constexpr std::string_view kDemoInput = "demo:";

/// Opens `input`, or the built-in stream with known faults if it is kDemoInput. Throws MediaError.
MediaSource openInput(const std::string& input, MediaOptions options);

/// What the demo stream shows and plays at `position` seconds.
std::string demoCaption(double position);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_DEMO_SOURCE_H_

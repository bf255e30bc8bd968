#ifndef ZEL_TOOLS_INPUT_CONTAINER_DECLARED_LENGTH_H_
#define ZEL_TOOLS_INPUT_CONTAINER_DECLARED_LENGTH_H_

#include <optional>
#include <vector>

#include "input/ffmpeg_handles.h"

namespace zel_monitor {

/// How long an input says that it is.
struct DeclaredLength {
    double seconds;
    bool estimated;  ///< the container does not say; FFmpeg guessed
};

/// From `start`, in seconds on the input's own clock, to the declared end of the chosen streams; none if
/// nothing is known.
std::optional<DeclaredLength> declaredLength(const AVFormatContext& format, double start,
                                             const std::vector<const AVStream*>& chosen);

/// How long the stream is for certain, in seconds, where the container counts its frames or samples: AVI
/// (video), FLAC and MXF.
std::optional<double> countedLength(const AVFormatContext& format, const AVStream& stream);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_CONTAINER_DECLARED_LENGTH_H_

#ifndef ZEL_TOOLS_CLI_MEDIA_FACTS_H_
#define ZEL_TOOLS_CLI_MEDIA_FACTS_H_

#include <cstdint>
#include <optional>
#include <string>

namespace zel_monitor {

struct VideoFacts {
    std::string codec;
    std::string pixel_format;  ///< as decoded, FFmpeg's name
    int width;                 ///< as decoded, before an odd last column or row is left out
    int height;
    double frame_rate;   ///< frames per second; 0 if the stream does not say
    bool still = false;  ///< said to be one frame, such as the cover of a song, and not the first of many
};

struct AudioFacts {
    std::string codec;
    int sample_rate;
    int channels;
};

/// What the input says of itself before anything is decoded.
struct MediaFacts {
    std::string input;                ///< the name to show to people
    std::string container;            ///< FFmpeg's name
    std::optional<double> duration;   ///< seconds from the first timestamp to the end of the chosen streams
    bool duration_estimated = false;  ///< guessed from the last timestamps, or from size and bit rate
    std::optional<VideoFacts> video;
    std::optional<AudioFacts> audio;
};

/// What has come out of the input so far.
struct MediaCounts {
    uint64_t bytes_read = 0;
    uint64_t video_frames = 0;
    uint64_t audio_frames = 0;
    uint64_t damaged = 0;  ///< packets, frames and stretches of bytes, once for each thing wrong with them
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_MEDIA_FACTS_H_

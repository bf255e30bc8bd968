#ifndef ZEL_BENCH_ACCURACY_FILE_FRAMES_H_
#define ZEL_BENCH_ACCURACY_FILE_FRAMES_H_

#include <functional>
#include <string>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/rational.h>
}

namespace bench::accuracy {

/// Decoded pictures or sound, frame by frame.
struct FrameStream {
    AVRational time_base;
    std::function<AVFrame*()> next;  ///< null at the end; a frame is valid until the next call
};

// A file's frames, decoded by libavcodec alone; what it refuses is skipped. Throw std::runtime_error if the
// file cannot be read or has no such track.

FrameStream videoFrames(const std::string& file);
FrameStream soundFrames(const std::string& file);

}  // namespace bench::accuracy

#endif  // ZEL_BENCH_ACCURACY_FILE_FRAMES_H_

#ifndef ZEL_BENCH_ACCURACY_FILE_FRAMES_H_
#define ZEL_BENCH_ACCURACY_FILE_FRAMES_H_

#include <string>

#include "support/filter_source.h"

namespace bench::accuracy {

// A file's frames, decoded by FFmpeg's filters alone. Throw std::runtime_error if it cannot be read or has no
// such track.

support::FilterSource videoFrames(const std::string& file);  ///< as 4:2:0
support::FilterSource soundFrames(const std::string& file);

}  // namespace bench::accuracy

#endif  // ZEL_BENCH_ACCURACY_FILE_FRAMES_H_

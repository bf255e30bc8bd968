#ifndef ZEL_BENCH_ACCURACY_FRAME_VERDICTS_H_
#define ZEL_BENCH_ACCURACY_FRAME_VERDICTS_H_

#include <string>

namespace bench::accuracy {

inline constexpr const char* kFrameVerdictsHead =
    "| clip | frames | black | green | underexposed | overexposed | block | freeze |\n"
    "|---|--:|--:|--:|--:|--:|--:|--:|\n";

/// How many of a file's frames got each verdict of the detectors, as a row of a table. Throws
/// std::runtime_error if the file cannot be read.
std::string frameVerdicts(const std::string& name, const std::string& file);

}  // namespace bench::accuracy

#endif  // ZEL_BENCH_ACCURACY_FRAME_VERDICTS_H_

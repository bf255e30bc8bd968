#ifndef ZEL_BENCH_ACCURACY_REAL_RESULTS_H_
#define ZEL_BENCH_ACCURACY_REAL_RESULTS_H_

#include <string>
#include <vector>

#include "bench/accuracy/real_clips.h"
#include "bench/accuracy/rivals.h"
#include "bench/accuracy/scan_file.h"

namespace bench::accuracy {

/// What came of one real clip or a variant of it.
struct RealResult {
    const RealCase* tested = nullptr;
    Scanned ours;
    std::vector<Findings> rivals;  ///< with all their settings, of the kinds that are asked about
};

/// The results as Markdown: a summary by kind, finds by fault, and each miss and false alarm.
/// FFmpeg's detectors stand beside at their defaults, and with the setting that makes most of their answers
/// on these clips right.
std::string realResultText(const std::vector<RealResult>& results);

}  // namespace bench::accuracy

#endif  // ZEL_BENCH_ACCURACY_REAL_RESULTS_H_

#ifndef ZEL_BENCH_ACCURACY_RESULTS_H_
#define ZEL_BENCH_ACCURACY_RESULTS_H_

#include <optional>
#include <string>
#include <vector>

#include "bench/accuracy/corpus.h"
#include "bench/accuracy/rivals.h"
#include "bench/accuracy/scoring.h"

namespace bench::accuracy {

/// What came of one case.
struct Result {
    const Case* tested = nullptr;
    Score ours;
    std::optional<Score> rival;          ///< if FFmpeg has a detector of the kind
    std::vector<Blockiness> blockiness;  ///< of a block case, until `rival` is worked out
};

/// Gives the rival's scores of the block cases, by the threshold that serves it best on all of them, and that
/// threshold; none without block cases.
std::optional<double> scoreBlockiness(std::vector<Result>& results);

/// The results as Markdown: a table of kinds, then one of cases.
std::string resultText(const std::vector<Result>& results, std::optional<double> block_threshold);

}  // namespace bench::accuracy

#endif  // ZEL_BENCH_ACCURACY_RESULTS_H_

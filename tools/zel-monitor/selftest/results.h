#ifndef ZEL_TOOLS_SELFTEST_RESULTS_H_
#define ZEL_TOOLS_SELFTEST_RESULTS_H_

#include <optional>
#include <string>
#include <vector>

#include "selftest/corpus.h"
#include "selftest/rivals.h"
#include "selftest/scoring.h"

namespace zel_monitor::selftest {

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

}  // namespace zel_monitor::selftest

#endif  // ZEL_TOOLS_SELFTEST_RESULTS_H_

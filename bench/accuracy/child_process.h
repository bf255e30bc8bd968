#ifndef ZEL_BENCH_ACCURACY_CHILD_PROCESS_H_
#define ZEL_BENCH_ACCURACY_CHILD_PROCESS_H_

#include <string>
#include <vector>

namespace bench::accuracy {

/// Runs `words[0]`, looked for in the path, without standard input, and gives what it wrote to standard
/// output and standard error together. Throws std::runtime_error, with the end of that text, if it cannot be
/// run or fails.
std::string outputOf(const std::vector<std::string>& words);

}  // namespace bench::accuracy

#endif  // ZEL_BENCH_ACCURACY_CHILD_PROCESS_H_

#ifndef ZEL_BENCH_ACCURACY_CHILD_PROCESS_H_
#define ZEL_BENCH_ACCURACY_CHILD_PROCESS_H_

#include <string>
#include <vector>

namespace bench::accuracy {

/// Runs `words[0]`, looked for in the path, without standard input. Throws std::runtime_error if it cannot be
/// run, or fails, with the end of what it wrote.
void runProgram(const std::vector<std::string>& words);

}  // namespace bench::accuracy

#endif  // ZEL_BENCH_ACCURACY_CHILD_PROCESS_H_

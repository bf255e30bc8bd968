#ifndef ZEL_SRC_BASE_LOG_OUTPUT_H_
#define ZEL_SRC_BASE_LOG_OUTPUT_H_

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace ZEL {

/// Where log lines go when no sink is set. Writing never waits for whoever reads the lines, raises no signal
/// and changes nothing that other processes share: what is not taken at once is dropped, and the next line
/// that is taken tells how many were. Needs no memory. One thread at a time.
class LogOutput {
  public:
    /// What "ZEL_LOG" says: nothing or "stdout", "stderr", "off", or the path of a file to append to.
    static LogOutput fromEnvironment();
    static LogOutput chosenBy(const char* choice);

    /// Lines keep their place among what the host prints to `stream`, but for what it holds back in a buffer
    /// of more than a pipe takes at once.
    static constexpr LogOutput toStream(std::FILE* stream) { return {stream, -1}; }
    static constexpr LogOutput toDescriptor(int descriptor) { return {nullptr, descriptor}; }

    void write(std::string_view line);

  private:
    constexpr LogOutput(std::FILE* stream, int descriptor) : stream_(stream), descriptor_(descriptor) {}

    void writeToStream(std::string_view line);
    void writeTo(int descriptor, std::string_view line);
    void drop();

    std::FILE* stream_;
    int descriptor_;  ///< below 0: none
    uint64_t dropped_ = 0;
    bool line_broken_ = false;  ///< only a part of the last line was taken
    std::chrono::steady_clock::time_point next_try_{};
};

}  // namespace ZEL

#endif  // ZEL_SRC_BASE_LOG_OUTPUT_H_

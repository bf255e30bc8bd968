#include "bench/accuracy/child_process.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace bench::accuracy {
namespace {

constexpr size_t kShownOnFailure = 600;

/// What the child gets as standard input, output and error.
class ChildFiles {
  public:
    explicit ChildFiles(int output) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions_, output, STDERR_FILENO);
    }
    ChildFiles(const ChildFiles&) = delete;
    ChildFiles& operator=(const ChildFiles&) = delete;
    ~ChildFiles() { posix_spawn_file_actions_destroy(&actions_); }

    const posix_spawn_file_actions_t* get() const { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_{};
};

std::string readAll(int file) {
    std::string text;
    std::array<char, 65536> part{};
    for (;;) {
        const ssize_t count = read(file, part.data(), part.size());
        if (count > 0) {
            text.append(part.data(), static_cast<size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            return text;
        }
    }
}

}  // namespace

void runProgram(const std::vector<std::string>& words) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));  // not written to
    }
    arguments.push_back(nullptr);
    pid_t child = 0;
    const int error =
        posix_spawnp(&child, arguments[0], ChildFiles(ends[1]).get(), nullptr, arguments.data(), environ);
    close(ends[1]);
    const std::string text = error == 0 ? readAll(ends[0]) : "";
    close(ends[0]);
    if (error != 0) {
        throw std::runtime_error(words[0] + ": " + std::generic_category().message(error));
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw std::runtime_error(
            words[0] + " failed: " + text.substr(text.size() - std::min(text.size(), kShownOnFailure)));
    }
}

}  // namespace bench::accuracy

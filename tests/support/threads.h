#ifndef ZEL_TESTS_SUPPORT_THREADS_H_
#define ZEL_TESTS_SUPPORT_THREADS_H_

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <unistd.h>

#include "support/wait.h"

namespace support {

/// How many threads of this process have this name, of which Linux keeps 15 bytes.
inline int threadsNamed(const std::string& name) {
    int count = 0;
    std::error_code gone;  // threads come and go
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", gone)) {
        std::string is;
        std::getline(std::ifstream(task.path() / "comm"), is);
        count += is == name ? 1 : 0;
    }
    return count;
}

inline bool waitForThreads(const std::string& name, int count) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (threadsNamed(name) != count) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

/// Returns when the thread waits for something, or is gone.
inline void waitUntilItWaits(pid_t thread) {
    const std::string path = "/proc/self/task/" + std::to_string(thread) + "/stat";
    while (true) {
        std::string stat;
        std::getline(std::ifstream(path), stat);
        const size_t name_end = stat.rfind(')');
        if (name_end == std::string::npos || stat.at(name_end + 2) != 'R') {
            return;
        }
        std::this_thread::yield();
    }
}

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_THREADS_H_

#include "cli/log_file.h"

#include <zel/base/log.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <system_error>

extern "C" {
#include <libavutil/log.h>
}

#include "cli/standard_streams.h"

namespace zel_monitor {
namespace {

/// Never closed: detached threads of the library may log while the process ends.
std::FILE* log_file = nullptr;
std::string log_name;
std::atomic<int> log_error = 0;  ///< of the first line that was not taken

void noteLogError() {
    int none = 0;
    log_error.compare_exchange_strong(none, errno);
}

void writeToLog(const char* text, size_t length, void* /*context*/) {
    if (std::fwrite(text, 1, length, log_file) != length) {
        noteLogError();
    }
}

void drop(const char* /*text*/, size_t /*length*/, void* /*context*/) {}

void writeFfmpegLine(void* context, int level, const char* format, va_list arguments) {
    if (level > AV_LOG_WARNING) {
        return;
    }
    static std::mutex mutex;
    static int print_prefix = 1;
    const std::lock_guard<std::mutex> lock(mutex);
    std::array<char, 1024> line;
    av_log_format_line2(context, level, format, arguments, line.data(), static_cast<int>(line.size()),
                        &print_prefix);
    writeToLog(line.data(), std::strlen(line.data()), nullptr);
}

}  // namespace

void redirectLogs(const std::string& path) {
    if (path.empty()) {
        ZEL::setLogSink(&drop, nullptr);
        av_log_set_level(AV_LOG_QUIET);
        return;
    }
    log_file = std::fopen(path.c_str(), "w");
    if (log_file == nullptr) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    log_name = path;
    ZEL::setLogSink(&writeToLog, nullptr);
    av_log_set_callback(&writeFfmpegLine);
}

void requireLogs() {
    if (log_file == nullptr) {
        return;
    }
    if (std::fflush(log_file) != 0) {
        noteLogError();
    }
    if (const int error = log_error.load(); error != 0) {
        throw OutputError(error, log_name);
    }
}

}  // namespace zel_monitor

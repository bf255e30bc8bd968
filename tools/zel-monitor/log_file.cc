#include "log_file.h"

#include <zel/base/log.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <mutex>
#include <system_error>

extern "C" {
#include <libavutil/log.h>
}

namespace zel_monitor {
namespace {

/// Never closed: detached threads of the library may log while the process ends.
std::FILE* log_file = nullptr;

void writeToLog(const char* text, size_t length, void* /*context*/) {
    std::fwrite(text, 1, length, log_file);
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
    std::fputs(line.data(), log_file);
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
    ZEL::setLogSink(&writeToLog, nullptr);
    av_log_set_callback(&writeFfmpegLine);
}

}  // namespace zel_monitor

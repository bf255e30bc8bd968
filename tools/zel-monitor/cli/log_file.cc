#include "cli/log_file.h"

#include <zel/base/log.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <mutex>
#include <string_view>
#include <system_error>
#include <utility>

extern "C" {
#include <libavutil/log.h>
}

#include "cli/log_thinner.h"
#include "cli/standard_streams.h"
#include "cli/time_text.h"

namespace zel_monitor {
namespace {

/// Lines come on any thread, also on detached ones of the library while the process ends, so this is never
/// destroyed.
class LogFile {
  public:
    explicit LogFile(std::string name) : name_(std::move(name)), file_(std::fopen(name_.c_str(), "a")) {
        if (file_ == nullptr) {
            throw std::system_error(errno, std::generic_category(), name_);
        }
    }

    void write(std::string_view line) {
        const std::lock_guard<std::mutex> lock(mutex_);
        writeLine(line);
    }

    /// Some of FFmpeg's lines come in pieces.
    void writePiece(std::string_view piece) {
        const std::lock_guard<std::mutex> lock(mutex_);
        piece_ += piece;
        for (size_t end = piece_.find('\n'); end != std::string::npos; end = piece_.find('\n')) {
            writeLine(std::string_view(piece_).substr(0, end));
            piece_.erase(0, end + 1);
        }
    }

    void reopen() {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (std::FILE* const fresh = std::fopen(name_.c_str(), "a")) {
            flush();
            std::fclose(std::exchange(file_, fresh));
        } else {
            error_ = errno;
        }
    }

    void require() {
        const std::lock_guard<std::mutex> lock(mutex_);
        flush();
        if (error_ != 0) {
            throw OutputError(error_, name_);
        }
    }

  private:
    void writeLine(std::string_view line) {
        while (!line.empty() && (line.back() == '\n' || line.back() == ' ')) {
            line.remove_suffix(1);
        }
        const auto text = thinner_.take(line, std::chrono::steady_clock::now());
        if (!text || text->empty()) {
            return;
        }
        const std::string stamped = utcText(std::chrono::system_clock::now()) + ' ' + *text + '\n';
        if (std::fwrite(stamped.data(), 1, stamped.size(), file_) != stamped.size()) {
            noteError();
        }
    }

    void flush() {
        if (std::fflush(file_) != 0) {
            noteError();
        }
    }

    /// Of the first line that was not taken.
    void noteError() { error_ = error_ != 0 ? error_ : errno; }

    std::mutex mutex_;  // guards all below
    const std::string name_;
    std::FILE* file_;
    std::string piece_;
    LogThinner thinner_;
    int error_ = 0;
};

LogFile* log_file = nullptr;

void writeToLog(const char* text, size_t length, void* /*context*/) {
    log_file->write({text, length});
}

void drop(const char* /*text*/, size_t /*length*/, void* /*context*/) {}

void writeFfmpegLine(void* context, int level, const char* format, va_list arguments) {
    if (level > AV_LOG_WARNING) {
        return;
    }
    thread_local int print_prefix = 1;
    std::array<char, 1024> line;
    av_log_format_line2(context, level, format, arguments, line.data(), static_cast<int>(line.size()),
                        &print_prefix);
    log_file->writePiece(line.data());
}

}  // namespace

void redirectLogs(const std::string& path) {
    if (path.empty()) {
        ZEL::setLogSink(&drop, nullptr);
        av_log_set_level(AV_LOG_QUIET);
        return;
    }
    log_file = new LogFile(path);
    ZEL::setLogSink(&writeToLog, nullptr);
    av_log_set_callback(&writeFfmpegLine);
}

void reopenLogs() {
    if (log_file != nullptr) {
        log_file->reopen();
    }
}

void requireLogs() {
    if (log_file != nullptr) {
        log_file->require();
    }
}

}  // namespace zel_monitor

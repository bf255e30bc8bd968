#include "base/log_output.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <stdio_ext.h>
#include <unistd.h>

#include "base/write_at_once.h"

namespace ZEL {
namespace {

/// How long a receiver that took nothing is left alone, so that a host whose output nobody reads does not
/// pay for every line.
constexpr std::chrono::milliseconds kPause{1};

iovec pieceOf(std::string_view text) {
    return {const_cast<char*>(text.data()), text.size()};  // which is only read
}

/// What the host has printed stands before a line that is written past its stream. False if that would have
/// to be waited for.
bool flushHostsText(std::FILE* stream, int descriptor) {
    const size_t pending = __fpending(stream);
    if (pending == 0 || pending > PIPE_BUF) {
        return true;
    }
    if (!hasRoom(descriptor)) {
        return false;
    }
    const WriteSignalsHeld held;
    if (fflush_unlocked(stream) != 0) {
        held.discardRaised();
    }
    return true;
}

/// Descriptor for appending, none of the standard three, or -1 with errno.
int openFile(const char* path) {
    const int opened = open(path, O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0644);
    if (opened < 0 || opened > STDERR_FILENO) {
        return opened;
    }
    const int moved = fcntl(opened, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(opened);
    return moved;
}

/// Keeps what the host's last call left there.
class ErrnoKept {
  public:
    ErrnoKept() = default;
    ~ErrnoKept() { errno = value_; }
    ErrnoKept(const ErrnoKept&) = delete;
    ErrnoKept& operator=(const ErrnoKept&) = delete;

  private:
    const int value_ = errno;
};

}  // namespace

LogOutput LogOutput::fromEnvironment() {
    return chosenBy(secure_getenv("ZEL_LOG"));
}

LogOutput LogOutput::chosenBy(const char* choice) {
    const ErrnoKept kept;
    const std::string_view name = choice != nullptr ? choice : "";
    if (name == "off") {
        return toDescriptor(-1);
    }
    if (name == "stderr") {
        return toDescriptor(STDERR_FILENO);
    }
    LogOutput standard = toStream(stdout);
    if (name.empty() || name == "stdout") {
        return standard;
    }
    const int file = openFile(choice);
    if (file >= 0) {
        return toDescriptor(file);
    }
    std::array<char, 512> complaint{};
    std::snprintf(complaint.data(), complaint.size(), "ZEL: WARN: cannot write the log to %.400s: %s\n",
                  choice, strerrordesc_np(errno));
    standard.write(complaint.data());
    return standard;
}

void LogOutput::write(std::string_view line) {
    const ErrnoKept kept;
    if (dropped_ > 0 && std::chrono::steady_clock::now() < next_try_) {
        ++dropped_;
    } else if (stream_ != nullptr) {
        writeToStream(line);
    } else if (descriptor_ >= 0) {
        writeTo(descriptor_, line);
    }
}

void LogOutput::writeToStream(std::string_view line) {
    const int descriptor = fileno(stream_);
    if (descriptor < 0 || receiverOf(descriptor) == Receiver::kFile) {  // nobody to wait for
        const WriteSignalsHeld held;
        if (std::fwrite(line.data(), 1, line.size(), stream_) < line.size()) {
            held.discardRaised();
        }
        return;
    }
    // Not into the stream's buffer: the host would have to wait for our lines when it prints or ends.
    if (ftrylockfile(stream_) != 0) {  // the host is printing, and may have to wait
        writeTo(descriptor, line);
        return;
    }
    if (flushHostsText(stream_, descriptor)) {
        writeTo(descriptor, line);
    } else {
        drop();
    }
    funlockfile(stream_);
}

void LogOutput::writeTo(int descriptor, std::string_view line) {
    std::array<char, 64> notice{};
    int notice_bytes = 0;
    if (dropped_ > 0) {
        notice_bytes =
            std::snprintf(notice.data(), notice.size(), "%sZEL: WARN: %llu log lines were dropped\n",
                          line_broken_ ? "\n" : "", static_cast<unsigned long long>(dropped_));
    }
    const std::string_view before(notice.data(), static_cast<size_t>(notice_bytes));
    const std::array<iovec, 2> pieces{pieceOf(before), pieceOf(line)};
    const ssize_t result = writeAtOnce(descriptor, receiverOf(descriptor), pieces);
    const size_t written = result > 0 ? static_cast<size_t>(result) : 0;
    if (written >= before.size()) {
        dropped_ = 0;
        line_broken_ = false;
    }
    if (written < before.size() + line.size()) {
        line_broken_ = line_broken_ || written > 0;
        drop();
    }
}

void LogOutput::drop() {
    ++dropped_;
    next_try_ = std::chrono::steady_clock::now() + kPause;
}

}  // namespace ZEL

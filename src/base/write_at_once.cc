#include "base/write_at_once.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <numeric>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ZEL {
namespace {

/// SIGTTOU stops a background process; a thread that blocks it may write to the terminal.
constexpr int kWriteSignals[] = {SIGPIPE, SIGXFSZ, SIGTTOU};

int pieceCount(std::span<const iovec> pieces) {
    return static_cast<int>(pieces.size());
}

/// For systems whose writes cannot be told not to wait: through a descriptor of our own, whose flags nobody
/// shares. It is closed at once, since a reader waits for the end of all writers.
ssize_t writeReopened(int descriptor, std::span<const iovec> pieces) {
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "/proc/self/fd/%d", descriptor);
    const int own = open(name.data(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (own >= 0) {
        const ssize_t written = writev(own, pieces.data(), pieceCount(pieces));
        close(own);
        return written;
    }
    // The system keeps us from opening it, as for a pipe that belongs to another user.
    const size_t bytes = std::accumulate(pieces.begin(), pieces.end(), size_t{0},
                                         [](size_t sum, const iovec& piece) { return sum + piece.iov_len; });
    return bytes <= PIPE_BUF && hasRoom(descriptor) ? writev(descriptor, pieces.data(), pieceCount(pieces))
                                                    : -1;
}

}  // namespace

WriteSignalsHeld::WriteSignalsHeld() {
    sigemptyset(&ours_);
    for (const int signal : kWriteSignals) {
        sigaddset(&ours_, signal);
    }
    pthread_sigmask(SIG_BLOCK, &ours_, &before_);
    if (sigismember(&before_, SIGPIPE) == 1 || sigismember(&before_, SIGXFSZ) == 1) {
        sigset_t pending;  // what the host holds back itself
        sigpending(&pending);
        for (const int signal : kWriteSignals) {
            if (sigismember(&pending, signal) == 1) {
                sigdelset(&ours_, signal);
            }
        }
    }
}

WriteSignalsHeld::~WriteSignalsHeld() {
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void WriteSignalsHeld::discardRaised() const {
    const timespec now{};
    while (sigtimedwait(&ours_, nullptr, &now) > 0) {
    }
}

Receiver receiverOf(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) {
        return Receiver::kNone;
    }
    if (S_ISSOCK(status.st_mode)) {
        return Receiver::kSocket;
    }
    return S_ISREG(status.st_mode) || S_ISBLK(status.st_mode) ? Receiver::kFile : Receiver::kOther;
}

bool hasRoom(int descriptor) {
    pollfd question{descriptor, POLLOUT, 0};
    return poll(&question, 1, 0) == 1 && question.revents == POLLOUT;
}

ssize_t writeAtOnce(int descriptor, Receiver receiver, std::span<const iovec> pieces) {
    if (receiver == Receiver::kNone) {
        return -1;
    }
    if (receiver == Receiver::kSocket) {
        msghdr message{};
        message.msg_iov = const_cast<iovec*>(pieces.data());  // which sendmsg only reads
        message.msg_iovlen = pieces.size();
        return sendmsg(descriptor, &message, MSG_DONTWAIT | MSG_NOSIGNAL);
    }
    const WriteSignalsHeld held;
    ssize_t written = -1;
    if (receiver == Receiver::kFile) {
        written = writev(descriptor, pieces.data(), pieceCount(pieces));
    } else {
        written = pwritev2(descriptor, pieces.data(), pieceCount(pieces), -1, RWF_NOWAIT);
        if (written < 0 && (errno == EOPNOTSUPP || errno == ENOSYS || errno == EINVAL)) {
            written = writeReopened(descriptor, pieces);
        }
    }
    if (written < 0) {
        held.discardRaised();
    }
    return written;
}

}  // namespace ZEL

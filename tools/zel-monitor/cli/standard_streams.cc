#include "cli/standard_streams.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "cli/file_names.h"

namespace zel_monitor {

void occupyStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) == -1 && errno == EBADF) {
            open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);  // gets the lowest free number
        }
    }
}

int writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<size_t>(written));
        } else if (errno == EAGAIN) {  // another program has made it so that a write does not wait
            pollfd output{.fd = descriptor, .events = POLLOUT, .revents = 0};
            if (poll(&output, 1, -1) < 0 && errno != EINTR) {
                return errno;
            }
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

void writeOutput(std::string_view text) {
    if (const int error = writeAll(STDOUT_FILENO, text); error != 0) {
        throw OutputError(error, "standard output");
    }
}

void writeError(std::string_view text) {
    writeAll(STDERR_FILENO, text);
}

void complain(std::string_view text) {
    writeError("zel-monitor: " + printable(text) + '\n');
}

size_t terminalColumns() {
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

}  // namespace zel_monitor

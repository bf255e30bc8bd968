#include "cli/exit_status.h"

#include <algorithm>
#include <array>
#include <cerrno>

namespace zel_monitor {

bool mayPassLater(int error) {
    constexpr std::array kPassing = {EIO,          EREMOTEIO,    ESTALE,     ENOLINK,  ETIMEDOUT,   EAGAIN,
                                     EINTR,        EBUSY,        ENOMEM,     EMFILE,   ENFILE,      ENOSPC,
                                     EDQUOT,       ECONNREFUSED, ECONNRESET, ENETDOWN, ENETUNREACH, EHOSTDOWN,
                                     EHOSTUNREACH, ECONNABORTED, ENOTCONN,   EPIPE};
    return std::find(kPassing.begin(), kPassing.end(), error) != kPassing.end();
}

}  // namespace zel_monitor

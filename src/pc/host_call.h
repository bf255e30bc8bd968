#ifndef ZEL_SRC_PC_HOST_CALL_H_
#define ZEL_SRC_PC_HOST_CALL_H_

#include <cxxabi.h>
#include <exception>

#include "base/log_format.h"

namespace ZEL {

/// Calls one of the host's callbacks. What it throws ends here, with a line in the log: a feed or a stop does
/// not fail for it, and a thread of the library does not end the process.
template <typename Call>
void callHost(const char* callback, Call call) {
    try {
        call();
    } catch (const abi::__forced_unwind&) {
        throw;  // the thread is being cancelled, which cannot be stopped
    } catch (const std::exception& error) {
        zel_log("ZEL: WARN: the %s callback threw: %s\n", callback, error.what());
    } catch (...) {
        zel_log("ZEL: WARN: the %s callback threw\n", callback);
    }
}

}  // namespace ZEL

#endif  // ZEL_SRC_PC_HOST_CALL_H_

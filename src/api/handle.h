#ifndef ZEL_SRC_API_HANDLE_H_
#define ZEL_SRC_API_HANDLE_H_

#include <memory>

#include "pc/session_pc.h"

/// What a host holds: the one lasting reference to its session.
struct ZELHandle {
    std::shared_ptr<ZELSessionPc> session;
};

#endif  // ZEL_SRC_API_HANDLE_H_

#ifndef ZEL_SRC_PC_HOST_SERVICES_H_
#define ZEL_SRC_PC_HOST_SERVICES_H_

#include <zel/zel.h>

#include "pc/remote_switches.h"
#include "pc/telemetry_upload.h"

namespace ZEL {

/// What the host lent the whole process.
struct HostServices {
    RemoteSwitches switches;
    TlmAdapterPc upload;
    /// Fields that every final report carries beside its own; nothing fills them yet.
    const ReportMap common_fields{};
};

}  // namespace ZEL

#endif  // ZEL_SRC_PC_HOST_SERVICES_H_

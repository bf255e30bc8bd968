#ifndef ZEL_SRC_API_MANAGER_PC_H_
#define ZEL_SRC_API_MANAGER_PC_H_

#include <zel/zel.h>

#include <memory>

#include "pc/host_services.h"
#include "pc/session_pc.h"

/// The desktop side of the process: what the host registered for all streams, and the sessions' beginning and
/// end. Any thread.
class ZELManagerPc {
  public:
    /// Created at first use and never destroyed, since timers may outlive everything else.
    static ZELManagerPc& getInstance();

    ~ZELManagerPc();
    ZELManagerPc(const ZELManagerPc&) = delete;
    ZELManagerPc& operator=(const ZELManagerPc&) = delete;

    ZEL::HostServices& host() { return host_; }

    std::shared_ptr<ZELSessionPc> createSession();
    /// Drops the reference.
    void release_session(std::shared_ptr<ZELSessionPc> session);
    /// Stops the session and uploads its final report.
    void stopSession(const std::shared_ptr<ZELSessionPc>& session);

  private:
    ZELManagerPc() = default;

    ZEL::HostServices host_;
};

#endif  // ZEL_SRC_API_MANAGER_PC_H_

#ifndef ZEL_SRC_SESSION_SESSION_HOOKS_H_
#define ZEL_SRC_SESSION_SESSION_HOOKS_H_

#include <cstdint>

namespace ZEL {

/// What a session tells whoever keeps track of sessions. The process-wide manager fills it in when it is
/// created; without one nobody is told.
struct SessionHooks {
    /// The session of this id is dying. Called under the session's lifecycle mutex.
    void (*forget_session)(int64_t session_id) = nullptr;
    /// Collectors have died. Called under the session's lifecycle mutex.
    void (*purge_collectors)() = nullptr;
};

/// Any thread.
void setSessionHooks(const SessionHooks& hooks);
SessionHooks sessionHooks();

}  // namespace ZEL

#endif  // ZEL_SRC_SESSION_SESSION_HOOKS_H_

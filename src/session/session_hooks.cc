#include "session/session_hooks.h"

#include "base/mutex.h"

namespace ZEL {
namespace {

struct Installed {
    Mutex mutex;
    SessionHooks hooks ZEL_GUARDED_BY(mutex);
};

Installed& installed() {
    static auto* const instance = new Installed;  // never destroyed: sessions may outlive static destructors
    return *instance;
}

}  // namespace

void setSessionHooks(const SessionHooks& hooks) {
    const MutexLock lock(installed().mutex);
    installed().hooks = hooks;
}

SessionHooks sessionHooks() {
    const MutexLock lock(installed().mutex);
    return installed().hooks;
}

}  // namespace ZEL

#include "pc/remote_switches.h"

#include "pc/host_call.h"

namespace ZEL {

void RemoteSwitches::registerBool(CobaltBoolCallback callback) {
    CobaltBoolCallback none = nullptr;
    bool_callback_.compare_exchange_strong(none, callback);
}

void RemoteSwitches::registerInt(CobaltIntCallback callback) {
    CobaltIntCallback none = nullptr;
    int_callback_.compare_exchange_strong(none, callback);
}

bool RemoteSwitches::readBool(const char* key) const {
    bool answer = false;
    if (const CobaltBoolCallback ask = bool_callback_.load()) {
        callHost("boolean switch", [&] { answer = ask(key); });
    }
    return answer;
}

int32_t RemoteSwitches::readInt(const char* key) const {
    int32_t answer = -1;
    if (const CobaltIntCallback ask = int_callback_.load()) {
        callHost("integer switch", [&] { answer = ask(key); });
    }
    return answer;
}

}  // namespace ZEL

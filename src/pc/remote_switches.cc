#include "pc/remote_switches.h"

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
    const CobaltBoolCallback ask = bool_callback_.load();
    return ask != nullptr && ask(key);
}

int32_t RemoteSwitches::readInt(const char* key) const {
    const CobaltIntCallback ask = int_callback_.load();
    return ask != nullptr ? ask(key) : -1;
}

}  // namespace ZEL

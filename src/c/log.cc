#include <zel/base/log.h>
#include <zel/zel_c.h>

namespace {

/// The library calls no sink any more once another one is set, so that these change only in between.
zelc_log writer = nullptr;

void handOver(const char* text, size_t bytes, void* user) {
    writer(user, text, bytes);
}

}  // namespace

void zelc_set_log(zelc_log write, void* user) {
    ZEL::setLogSink(nullptr, nullptr);  // waits for a line under way
    writer = write;
    if (write != nullptr) {
        ZEL::setLogSink(&handOver, user);
    }
}

void zelc_silence_log(void) {
    ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
}

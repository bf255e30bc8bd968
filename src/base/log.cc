#include <zel/base/log.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "base/log_format.h"
#include "base/mutex.h"

namespace ZEL {
namespace {

void writeToStandardOutput(const char* text, size_t length, void* /*context*/) {
    std::fwrite(text, 1, length, stdout);
}

struct Sink {
    Mutex mutex;
    LogSink function ZEL_GUARDED_BY(mutex) = &writeToStandardOutput;
    void* context ZEL_GUARDED_BY(mutex) = nullptr;
};

/// Never destroyed: detached threads may log while the process ends.
Sink& sink() {
    static auto* const instance = new Sink;
    return *instance;
}

void deliver(const char* text, size_t length) {
    const MutexLock lock(sink().mutex);
    sink().function(text, length, sink().context);
}

}  // namespace

void setLogSink(LogSink function, void* context) {
    const MutexLock lock(sink().mutex);
    sink().function = function != nullptr ? function : &writeToStandardOutput;
    sink().context = context;
}

void zel_log(const char* format, ...) {
    std::array<char, 256> line;  // every fixed message fits; names given by a host may not
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line.data(), line.size(), format, arguments);
    va_end(arguments);
    if (length >= 0 && static_cast<size_t>(length) < line.size()) {
        deliver(line.data(), static_cast<size_t>(length));
    } else if (length >= 0) {
        std::string text(static_cast<size_t>(length), '\0');
        va_start(arguments, format);
        std::vsnprintf(text.data(), text.size() + 1, format, arguments);
        va_end(arguments);
        deliver(text.data(), text.size());
    }
}

}  // namespace ZEL

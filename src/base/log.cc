#include <zel/base/log.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <type_traits>

#include "base/log_format.h"
#include "base/log_output.h"
#include "base/mutex.h"

namespace ZEL {
namespace {

struct Sink {
    Mutex mutex;
    LogSink function ZEL_GUARDED_BY(mutex) = nullptr;
    void* context ZEL_GUARDED_BY(mutex) = nullptr;
    std::optional<LogOutput> output ZEL_GUARDED_BY(mutex);  // chosen when the first line comes to it
};

/// Neither made nor destroyed while the process runs: destructors and detached threads log.
constinit Sink sink;
static_assert(std::is_trivially_destructible_v<Sink>);

void deliver(std::string_view text) {
    const MutexLock lock(sink.mutex);
    if (sink.function != nullptr) {
        sink.function(text.data(), text.size(), sink.context);
        return;
    }
    if (!sink.output) {
        sink.output = LogOutput::fromEnvironment();
    }
    sink.output->write(text);
}

}  // namespace

void setLogSink(LogSink function, void* context) {
    const MutexLock lock(sink.mutex);
    sink.function = function;
    sink.context = context;
}

void zel_log(const char* format, ...) {
    std::array<char, 256> line;  // every fixed message fits; names given by a host may not
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line.data(), line.size(), format, arguments);
    va_end(arguments);
    if (length < 0) {
        return;
    }
    const auto bytes = static_cast<size_t>(length);
    if (bytes < line.size()) {
        deliver({line.data(), bytes});
        return;
    }
    const std::unique_ptr<char[]> text(new (std::nothrow) char[bytes + 1]);
    if (text == nullptr) {
        deliver({line.data(), line.size() - 1});  // its beginning, since there is no memory for the rest
        return;
    }
    va_start(arguments, format);
    std::vsnprintf(text.get(), bytes + 1, format, arguments);
    va_end(arguments);
    deliver({text.get(), bytes});
}

}  // namespace ZEL

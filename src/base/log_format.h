#ifndef ZEL_SRC_BASE_LOG_FORMAT_H_
#define ZEL_SRC_BASE_LOG_FORMAT_H_

namespace ZEL {

/// The library's only way to write: printf rules, one call of the sink per message. Any thread.
[[gnu::format(printf, 1, 2)]] void zel_log(const char* format, ...);

}  // namespace ZEL

/// The desktop layer's message form: function and line, then the text. The line is part of the message, a
/// number that hosts search for: it never changes when code moves, so it is never __LINE__.
#define ZEL_LOG_PC(function, line, text, ...) \
    ::ZEL::zel_log("[zel log...][function : %s][line: %d]" text, function, line __VA_OPT__(, ) __VA_ARGS__)

#endif  // ZEL_SRC_BASE_LOG_FORMAT_H_

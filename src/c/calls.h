#ifndef ZEL_SRC_C_CALLS_H_
#define ZEL_SRC_C_CALLS_H_

#include <zel/zel_c.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace ZELC {

/// Keeps `text` for the calling thread, see zelc_last_error, and gives `code`.
int failed(int code, const char* text) noexcept;

/// The code, and the text, for the exception at hand.
int failedByException() noexcept;

/// Runs the body of a call; no exception leaves it.
template <typename Body>
int guarded(Body body) noexcept {
    try {
        return body();
    } catch (...) {
        return failedByException();
    }
}

/// Whether a struct of the caller's can be read: it is there, and at least knows its size.
template <typename Struct>
bool isReadable(const Struct* theirs) {
    return theirs != nullptr && theirs->struct_size >= sizeof(uint32_t);
}

/// Reads a struct of the caller's, whose size may be that of another version, over `own`, which keeps what
/// the caller's lacks.
template <typename Struct>
void read(const Struct& theirs, Struct& own) {
    std::memcpy(&own, &theirs, std::min<size_t>(sizeof own, theirs.struct_size));
    own.struct_size = sizeof own;
}

/// Writes as much of `own` as the caller's struct has room for.
template <typename Struct>
void write(const Struct& own, Struct& theirs) {
    const uint32_t room = theirs.struct_size;
    std::memcpy(&theirs, &own, std::min<size_t>(sizeof own, room));
    theirs.struct_size = room;
}

}  // namespace ZELC

#endif  // ZEL_SRC_C_CALLS_H_

#ifndef ZEL_TOOLS_CLI_INCOMPLETE_H_
#define ZEL_TOOLS_CLI_INCOMPLETE_H_

#include <cstdint>
#include <string>

namespace zel_monitor {

/// Why an input could not be turned into frames, or not into all that it should hold.
enum class Incomplete : uint8_t {
    kUnreachable,     ///< there is nothing of that name, or it may not or cannot be read
    kEmpty,           ///< it has no bytes
    kNotMedia,        ///< it is text, or of no format that is known
    kNoStream,        ///< it has neither video nor audio, of what was asked for
    kNoDecoder,       ///< it has a stream that nothing here can decode
    kEncrypted,       ///< it, or one of its streams, cannot be decoded without a key
    kCutOff,          ///< by what its container says bytes are missing at its end
    kEndsEarly,       ///< its frames end before its declared length
    kReadError,       ///< reading broke off with an error
    kUnusableStream,  ///< it lists a stream that says too little of itself to be decoded
    kNothingDecoded,  ///< none of its frames, or of one of its streams, came out of the decoder
    kStreamChange,    ///< it goes on with a stream that could not be followed
    kUnreadableEnd,   ///< it goes on with something of which nothing could be read
    kMissedStream,    ///< a stream that was not examined ran where the chosen one had not begun
    kStopped,         ///< whoever reads it was told to stop
};

struct Shortfall {
    Incomplete kind;
    std::string detail;  ///< for people, in words that follow the input's name and a colon
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_INCOMPLETE_H_

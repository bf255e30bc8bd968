#ifndef ZEL_SRC_BASE_WRITE_AT_ONCE_H_
#define ZEL_SRC_BASE_WRITE_AT_ONCE_H_

#include <csignal>
#include <span>
#include <sys/types.h>
#include <sys/uio.h>

namespace ZEL {

/// While it lives, the calling thread is spared the signals that a write can raise. The process's signal
/// handling stays as it is.
class WriteSignalsHeld {
  public:
    WriteSignalsHeld();
    ~WriteSignalsHeld();
    WriteSignalsHeld(const WriteSignalsHeld&) = delete;
    WriteSignalsHeld& operator=(const WriteSignalsHeld&) = delete;

    /// Takes back what a write that failed has raised.
    void discardRaised() const;

  private:
    sigset_t before_;
    sigset_t ours_;  ///< not pending when it began
};

/// What stands behind a descriptor, as far as writing to it is concerned.
enum class Receiver {
    kNone,    ///< the descriptor is closed
    kFile,    ///< nobody has to read for a write to end
    kSocket,  ///< somebody reads
    kOther,   ///< a pipe or a terminal: somebody reads
};
Receiver receiverOf(int descriptor);

/// Whether up to PIPE_BUF bytes would be taken now, if nobody else writes.
bool hasRoom(int descriptor);

/// writev that takes no time: the bytes written, which may be a part, or -1 if none are taken at once. Leaves
/// the descriptor's flags alone, since other processes share them.
ssize_t writeAtOnce(int descriptor, Receiver receiver, std::span<const iovec> pieces);

}  // namespace ZEL

#endif  // ZEL_SRC_BASE_WRITE_AT_ONCE_H_

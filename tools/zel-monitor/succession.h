#ifndef ZEL_TOOLS_SUCCESSION_H_
#define ZEL_TOOLS_SUCCESSION_H_

#include <cstdint>
#include <deque>
#include <map>
#include <optional>

#include "ffmpeg_handles.h"

namespace zel_monitor {

/// Tells whether another stream takes over from the chosen one of its type, as in a broadcast that goes on
/// under other identifiers. A stream that runs beside the chosen one is another track, and is left alone.
/// What follows what is told from where packets lie in the input: the last one of a stream may be read long
/// after.
class Succession {
  public:
    /// The chosen stream goes on with `packet`.
    void goesOn(const AVPacket& packet);
    /// Another stream of the type has `packet`, due at `time_s` of its clock if that is known. A reference to
    /// it is kept while the stream may turn out to be the successor.
    void runs(const AVPacket& packet, std::optional<double> time_s);

    /// Whether a stream may be about to take over.
    bool isUndecided() const;
    /// The stream that has taken over: certain once the chosen one has been silent for a while, or at the
    /// end of the input.
    std::optional<int> successor(bool at_end) const;
    /// From now on this stream is the chosen one, and `former` is not. Gives the packets that were kept of
    /// it.
    std::deque<PacketHandle> choose(int successor, int former);

    /// Whether a stream that was never chosen had its say where the chosen one had not begun.
    bool missedAny() const;

  private:
    struct Other {
        bool before = false;   // gave something where the chosen one had not begun
        bool beside = false;   // gave something between two packets of the chosen one
        bool settled = false;  // what it gave up to the last change was examined, or ran beside
        std::deque<PacketHandle> kept = {};
        std::optional<double> from_s = {};
        std::optional<double> to_s = {};
    };

    std::optional<int64_t> begin_;  // where the chosen one's first packet lies
    std::map<int, Other> others_;   // by index
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SUCCESSION_H_

#ifndef ZEL_TOOLS_INPUT_STREAM_SWITCH_H_
#define ZEL_TOOLS_INPUT_STREAM_SWITCH_H_

#include <cstdint>
#include <deque>
#include <map>
#include <optional>

#include "input/ffmpeg_handles.h"

namespace zel_monitor {

/// Tells whether another stream takes over from the chosen one of its type, as in a broadcast that goes on
/// under other identifiers. A stream that runs beside the chosen one is another track, and is left alone.
/// What follows what is told from where packets lie in the input, since the last one of a stream may be read
/// long after, and from when they are due, since a muxer may lay streams down in turns of seconds. Times are
/// in seconds on the input's own clock, and may not be known.
class StreamSwitch {
  public:
    /// The chosen stream goes on with `packet`.
    void goesOn(const AVPacket& packet, std::optional<double> time_s);
    /// Another stream of the type has `packet`. A reference to it is kept while the stream may turn out to be
    /// the successor.
    void runs(const AVPacket& packet, std::optional<double> time_s);

    /// Whether a stream may be about to take over.
    bool isUndecided() const;
    /// The stream that has taken over: certain once it has run for some seconds in which the chosen one is
    /// missing, or at the end of the input.
    std::optional<int> successor(bool at_end) const;
    /// From now on this stream is the chosen one, and `former` is not. Gives the packets that were kept of
    /// it.
    std::deque<PacketHandle> choose(int successor, int former);

    /// Whether a stream that was never chosen had its say, of more than a moment, before the chosen one
    /// began.
    bool missedAny() const;

  private:
    struct Period {
        std::optional<double> from_s = {};
        std::optional<double> to_s = {};

        void add(std::optional<double> time_s);
        double length() const { return from_s ? *to_s - *from_s : 0.0; }
    };
    struct Other {
        Period before = {};    // of what it gave where the chosen one had not begun
        bool beside = false;   // gave something between two packets of the chosen one
        bool settled = false;  // what it gave up to the last change was examined, ran beside or was missed
        std::deque<PacketHandle> kept = {};
        Period kept_period = {};
        size_t pieces = 0;  // of what is kept, each with a place of its own
    };
    /// For how long `other` has run without the chosen stream.
    double timeAlone(const Other& other, bool at_end) const;

    std::optional<int64_t> begin_;  // where the chosen one's first packet lies
    Period chosen_;                 // from its first packet to the latest
    std::map<int, Other> others_;   // by index
    bool missed_ = false;           // something, before the last change
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_STREAM_SWITCH_H_

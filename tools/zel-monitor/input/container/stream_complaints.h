#ifndef ZEL_TOOLS_INPUT_CONTAINER_STREAM_COMPLAINTS_H_
#define ZEL_TOOLS_INPUT_CONTAINER_STREAM_COMPLAINTS_H_

#include <zel/events/event.h>
#include <zel/events/stream_clock.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string_view>
#include <tuple>
#include <vector>

namespace zel_monitor {

enum class ComplaintReason : uint8_t {
    kRefused,        ///< a decoder could make nothing of a packet
    kDecodingError,  ///< a decoder came upon data that makes no sense
    kConcealed,      ///< a decoder made up part of a frame
    kMissingFrame,   ///< a frame that others refer to never came
    kBrokenPacket,   ///< a packet is not whole, or some were lost before it
    kChecksum,       ///< a checksum does not match its data
    kContainer,      ///< a demuxer came upon data that makes no sense
    kUnaccounted,    ///< bytes that belong to nothing in the container
    kSmallGaps,      ///< frames are missing all over the stream, too few in each place for a stall
};

/// In words that follow "damage:".
std::string_view wordsFor(ComplaintReason reason);

/// What is wrong in one stretch of a stream, as its demuxer, its decoder or its container tell.
struct Complaint {
    ComplaintReason reason;
    std::optional<ZEL::StreamTrack> track;  ///< none: it is not known which
    std::optional<ZEL::TimeSpan> span;      ///< stream time; none: it is not known where
    uint64_t count;                         ///< packets, frames or stretches of bytes that are hit
    double share;  ///< of the frame that is hit worst, or of the whole stream: 0 to 1
};

/// Collects complaints, of which there may be many, from any thread. What it gives does not depend on the
/// order in which they came.
class StreamComplaints {
  public:
    /// Takes in that a frame or packet, which `number` tells from others of its track, is hit. It lies in
    /// `span` of the stream, if that is known.
    void add(ComplaintReason reason, std::optional<ZEL::StreamTrack> track, std::optional<ZEL::TimeSpan> span,
             std::optional<int64_t> number = std::nullopt, double share = 1.0);

    /// Complaints of one reason that are close together are one. By their time, those without one first.
    std::vector<Complaint> list() const;
    /// Packets, frames and stretches that are hit, each counted once for each reason.
    uint64_t count() const;

  private:
    using Key = std::tuple<int64_t, int, ComplaintReason>;  // time slice, track, reason
    struct Hits {
        std::optional<ZEL::TimeSpan> span = {};
        std::set<int64_t> numbers = {};
        uint64_t without_number = 0;
        double share = 0.0;

        uint64_t count() const { return numbers.size() + without_number; }
    };

    mutable std::mutex mutex_;
    std::map<Key, Hits> hits_;  // guarded by mutex_, like all below
    uint64_t beyond_ = 0;       // hits for which there was no room
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_CONTAINER_STREAM_COMPLAINTS_H_

#ifndef ZEL_TOOLS_INPUT_COMPLAINT_H_
#define ZEL_TOOLS_INPUT_COMPLAINT_H_

#include <zel/events/event.h>
#include <zel/events/stream_clock.h>

#include <cstdint>
#include <optional>
#include <string_view>

namespace zel_monitor {

/// What was wrong with the data of a stream, the gravest last.
enum class ComplaintReason : uint8_t {
    kMissingEnd,     ///< the stream ends a little before its declared end
    kSmallGaps,      ///< frames are missing all over the stream, too few in each place for a stall
    kUnaccounted,    ///< bytes that belong to nothing in the container
    kContainer,      ///< a demuxer came upon data that makes no sense
    kChecksum,       ///< a checksum does not match its data
    kBrokenPacket,   ///< a packet is not whole, or some were lost before it
    kMissingFrame,   ///< a frame that others refer to never came
    kDecodingError,  ///< a decoder came upon data that makes no sense
    kConcealed,      ///< a decoder made up part of a frame
    kRefused,        ///< a decoder could make nothing of a packet
};

/// In words, for people.
std::string_view wordsFor(ComplaintReason reason);

/// What is wrong with an item of a track, or with what should have come before it.
struct ItemComplaint {
    ComplaintReason reason;
    double offset_s;  ///< where it begins, from the item's start; what should have come before is negative
    double length_s;
    double share;  ///< of the frame that is hit, 0 to 1
};

/// What is wrong in one stretch of a stream, as its demuxer, its decoder or its container tell.
struct Complaint {
    ComplaintReason reason;
    std::optional<ZEL::StreamTrack> track;  ///< none: of either
    ZEL::TimeSpan span;                     ///< stream time
    uint64_t count;                         ///< packets, frames or stretches of bytes that are hit
    double share;        ///< of the frame that is hit worst, or of the whole stream: 0 to 1
    double slice_share;  ///< of the half second that is hit worst: 0 to 1
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_COMPLAINT_H_

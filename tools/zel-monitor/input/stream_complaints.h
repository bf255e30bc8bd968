#ifndef ZEL_TOOLS_INPUT_STREAM_COMPLAINTS_H_
#define ZEL_TOOLS_INPUT_STREAM_COMPLAINTS_H_

#include <cstdint>
#include <map>
#include <optional>
#include <tuple>
#include <vector>

#include "input/complaint.h"
#include "input/media_item.h"

namespace zel_monitor {

/// Collects complaints, of which there may be any number, in bounded memory.
class StreamComplaints {
  public:
    /// A frame, packet or stretch of bytes in `span` of the stream is hit.
    void add(ComplaintReason reason, std::optional<ZEL::StreamTrack> track, ZEL::TimeSpan span,
             double share = 1.0);

    /// All that is complained of an item.
    void add(const MediaItem& item);
    /// Drops those that begin before.
    void forgetBefore(double time_s);

    /// By their time. Those of one reason and track that are close together are one, in whatever order they
    /// came.
    std::vector<Complaint> list() const;
    /// How many were added.
    uint64_t count() const { return count_; }

  private:
    using Key = std::tuple<int64_t, int, ComplaintReason>;  // slice of time, track, reason

    std::map<Key, Complaint> slices_;
    uint64_t count_ = 0;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_STREAM_COMPLAINTS_H_

#ifndef ZEL_TOOLS_INPUT_STREAM_DAMAGE_H_
#define ZEL_TOOLS_INPUT_STREAM_DAMAGE_H_

#include <cstdint>
#include <optional>
#include <vector>

#include "input/container/structure.h"
#include "input/gap_sum.h"
#include "input/media_item.h"
#include "input/per_track.h"
#include "input/stream_complaints.h"
#include "input/stream_facts.h"

namespace zel_monitor {

/// Brings together, on stream time, all that is known of damage to a stream: what its items tell, what its
/// container cannot account for, and gaps that are too small for a stall each.
class StreamDamage {
  public:
    /// Keeps all complaints, or only the last ones, as of a stream that may have no end.
    StreamDamage(StreamNature nature, bool keeps_all) : nature_(nature), keeps_all_(keeps_all) {}

    /// The next item, with its place in the stream.
    void saw(const MediaItem& item);
    /// What is wrong at the end of a track, after its last item.
    void atEnd(StreamTrack track, const std::vector<ItemComplaint>& complaints);
    /// What a demuxer complained of after its last packet.
    void atEnd(const std::vector<ComplaintReason>& complaints);
    /// How long the input said that it lasts, in seconds.
    struct Stated {
        std::optional<double> whole_s = {};
        PerTrack<std::optional<double>> counted_s = {};  ///< see countedLength()
    };
    /// Everything was seen of an input of `bytes` bytes.
    void conclude(const StructureFaults& faults, int64_t bytes, const Stated& stated);

    /// Where the last packet of the track begins that gave something; negative if it is not known.
    int64_t furthest(StreamTrack track) const { return furthest_[track]; }

    /// By their time.
    std::vector<Complaint> list() const { return complaints_.list(); }
    uint64_t count() const { return complaints_.count(); }

  private:
    /// Where in the input something lies, and when it is due.
    struct Landmark {
        int64_t place;
        double time_s;
    };

    void addMissingEnd(std::optional<StreamTrack> track, double end_s, double stated_s, double least_s);
    double timeAt(int64_t place) const;

    StreamNature nature_;
    bool keeps_all_;
    StreamComplaints complaints_;
    PerTrack<GapSum> gaps_{.video = GapSum(false), .audio = GapSum(true)};
    PerTrack<double> ends_s_{};
    PerTrack<int64_t> furthest_{.video = -1, .audio = -1};
    std::vector<Landmark> landmarks_;
    int64_t apart_ = 0;  // landmarks that are nearer to the one before are left out
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_STREAM_DAMAGE_H_

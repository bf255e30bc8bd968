#ifndef ZEL_TOOLS_INPUT_COMPLETENESS_H_
#define ZEL_TOOLS_INPUT_COMPLETENESS_H_

#include <cstdint>
#include <optional>
#include <string>

#include "cli/incomplete.h"
#include "cli/media_facts.h"
#include "input/container/structure.h"
#include "input/demuxer.h"
#include "input/opened_input.h"
#include "input/per_track.h"

namespace zel_monitor {

/// Tells whether all that should have come out of an input did come out, and if not, why. Of several reasons
/// encryption counts first, then an end before the declared one, then what was told first.
class Completeness {
  public:
    /// `input` outlives this object.
    explicit Completeness(const OpenedInput& input) : input_(input) {}

    void sawEncrypted(StreamTrack track) { lanes_[track].encrypted = true; }
    void streamEnded(StreamTrack track, bool gave_anything);
    void streamRefused(const std::string& reason);
    void streamMissed(StreamTrack track);
    /// At the end: the last packets of the track's stream, as many as `unanswered`, gave nothing; the last
    /// that gave something lies at `place`.
    void streamBrokeOff(StreamTrack track, const AVStream* stream, int64_t unanswered, int64_t place);
    /// The track's stream is listed, but `reason`.
    void streamUnusable(StreamTrack track, const std::string& reason);
    /// A stream is listed of which not even the kind can be told.
    void streamUnknown();
    void stopped() { shortfall_ = {Incomplete::kStopped, "stopped before its end"}; }
    /// All has come out that can, with so much counted, up to `reached_s` of stream time.
    void inputEnded(const Demuxer& demuxer, const StructureFaults& faults, const MediaFacts& facts,
                    const MediaCounts& counts, double reached_s);

    const std::optional<Shortfall>& shortfall() const { return shortfall_; }

  private:
    struct Lane {
        bool gave_anything = false;
        bool encrypted = false;
    };

    void add(Incomplete kind, const std::string& detail);
    std::optional<std::string> encrypted() const;
    bool isCutOff(const Demuxer& demuxer, const StructureFaults& faults, const MediaFacts& facts) const;

    const OpenedInput& input_;
    PerTrack<Lane> lanes_{};
    std::optional<Shortfall> shortfall_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_COMPLETENESS_H_

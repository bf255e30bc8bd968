#include "input/completeness.h"

#include <zel/events/event.h>
#include <zel/events/kinds.h>

#include <fmt/format.h>

#include "input/container/declared_size.h"
#include "input/container/encryption.h"
#include "input/container/unread_tail.h"
#include "input/media_type.h"

namespace zel_monitor {
namespace {

const char* contentOf(StreamTrack track) {
    return track == StreamTrack::kVideo ? "frames" : "sound";
}

const char* verbFor(StreamTrack track) {
    return track == StreamTrack::kVideo ? "are" : "is";
}

/// How much of its declared length an input ends too early; none if that is too little for an event.
std::optional<double> missingEnd(const MediaFacts& facts, double reached_s) {
    if (!facts.duration || facts.duration_estimated) {
        return std::nullopt;
    }
    const double missing_s = *facts.duration - reached_s;
    const double least_s = infoOf(ZEL::EventKind::kShort).rule.min_s;
    return missing_s + ZEL::kSlackS >= least_s ? std::optional(missing_s) : std::nullopt;
}

}  // namespace

void Completeness::add(Incomplete kind, const std::string& detail) {
    if (!shortfall_) {
        shortfall_ = {kind, detail};
    }
}

void Completeness::streamEnded(StreamTrack track, bool gave_anything) {
    lanes_[track].gave_anything |= gave_anything;
    if (!gave_anything) {
        add(Incomplete::kNothingDecoded, fmt::format("none of its {} could be decoded", contentOf(track)));
    }
}

void Completeness::streamRefused(const std::string& reason) {
    add(Incomplete::kStreamChange, "it goes on with another stream: " + reason);
}

void Completeness::streamMissed(StreamTrack track) {
    add(Incomplete::kMissedStream,
        fmt::format("some of its {} {} in a stream that was not examined", contentOf(track), verbFor(track)));
}

void Completeness::streamBrokeOff(StreamTrack track, const AVStream* stream, int64_t unanswered,
                                  int64_t place) {
    constexpr int64_t kLeastPackets = 50;
    if (!lanes_[track].gave_anything || lanes_[track].encrypted) {
        return;  // which is told in other words
    }
    if (unanswered >= kLeastPackets ||
        (stream != nullptr && place >= 0 && goesOnUndecoded(input_.format(), *stream, place))) {
        add(Incomplete::kUnreadableEnd,
            fmt::format("its {} {} on in a way that could not be decoded", contentOf(track),
                        track == StreamTrack::kVideo ? "go" : "goes"));
    }
}

void Completeness::streamUnusable(StreamTrack track, const std::string& reason) {
    add(Incomplete::kUnusableStream, fmt::format("its {} cannot be decoded: {}", contentOf(track), reason));
}

void Completeness::streamUnknown() {
    add(Incomplete::kUnusableStream, "it lists a stream of an unknown kind");
}

void Completeness::inputEnded(const Demuxer& demuxer, const StructureFaults& faults, const MediaFacts& facts,
                              const MediaCounts& counts, double reached_s) {
    for (const StreamTrack track : kTracks) {
        if (counts.damaged == 0 && lanes_[track].gave_anything) {
            continue;
        }
        for (const AVStream* const stream : demuxer.candidates(track)) {
            lanes_[track].encrypted |= provesEncrypted(input_.format(), *stream);
        }
    }
    if (const auto text = encrypted()) {
        shortfall_ = {Incomplete::kEncrypted, *text};
    } else if (const auto missing_s = missingEnd(facts, reached_s)) {
        shortfall_ = {Incomplete::kEndsEarly,
                      fmt::format("it ends {:.3f} s before its declared end", *missing_s)};
    }
    if (shortfall_) {
        return;
    }
    if (isCutOff(demuxer, faults, facts)) {
        add(Incomplete::kCutOff, "it is cut off before its end");
    }
    if (faults.unreadable_track) {
        add(Incomplete::kUnusableStream, "its index lists a stream that cannot be read");
    }
    for (const StreamTrack track : kTracks) {
        if (demuxer.streamOf(track) != nullptr &&
            hasUnreadTail(input_.format(), mediaTypeOf(track), demuxer.furthest(track))) {
            add(Incomplete::kUnreadableEnd, "it goes on with another stream, of which nothing could be read");
        }
    }
}

std::optional<std::string> Completeness::encrypted() const {
    if (lanes_.video.encrypted && lanes_.audio.encrypted) {
        return "it is encrypted";
    }
    for (const StreamTrack track : kTracks) {
        if (lanes_[track].encrypted) {
            return fmt::format("{}its {} {} encrypted", lanes_[track].gave_anything ? "some of " : "",
                               contentOf(track), verbFor(track));
        }
    }
    return std::nullopt;
}

bool Completeness::isCutOff(const Demuxer& demuxer, const StructureFaults& faults,
                            const MediaFacts& facts) const {
    const AVFormatContext& format = input_.format();
    const auto declared = input_.declaredBytes();
    // Where the container does not know its end, the last packet is as long as the file lasts.
    const bool end_is_known =
        facts.duration && format.duration_estimation_method != AVFMT_DURATION_FROM_BITRATE;
    return faults.ends_early || (declared && endsBefore(*format.pb, *declared)) ||
           (end_is_known && demuxer.endsCorrupt());
}

}  // namespace zel_monitor

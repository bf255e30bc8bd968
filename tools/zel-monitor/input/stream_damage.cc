#include "input/stream_damage.h"

#include <zel/events/kinds.h>

#include <algorithm>
#include <variant>

namespace zel_monitor {
namespace {

constexpr double kLeastMissing = 0.02;  // of the stream
constexpr double kLeastEndS = 0.1;      // containers round, and coders fill up the last frame
constexpr size_t kMostLandmarks = 20'000;
constexpr int64_t kFirstApart = 1000;

}  // namespace

void StreamDamage::saw(const MediaItem& item) {
    const StreamTrack track = trackOf(item);
    const double time_s = timeOf(item);
    const ItemNotes& notes = notesOf(item);
    gaps_[track].add(time_s, durationOf(item));
    ends_s_[track] = time_s + durationOf(item);
    furthest_[track] = std::max(furthest_[track], notes.place);
    complaints_.add(item);
    if (!keeps_all_) {
        complaints_.forgetBefore(time_s);
    } else if (notes.place >= 0 && (landmarks_.empty() || notes.place >= landmarks_.back().place + apart_)) {
        landmarks_.push_back({notes.place, time_s});
        if (landmarks_.size() == kMostLandmarks) {  // every other one will do
            apart_ = std::max(2 * apart_, kFirstApart);
            size_t kept = 0;
            for (size_t i = 0; i < landmarks_.size(); i += 2) {
                landmarks_[kept++] = landmarks_[i];
            }
            landmarks_.resize(kept);
        }
    }
}

void StreamDamage::atEnd(StreamTrack track, const std::vector<ItemComplaint>& complaints) {
    for (const ItemComplaint& complaint : complaints) {
        const double start_s = std::max(ends_s_[track] + complaint.offset_s, 0.0);
        complaints_.add(complaint.reason, track, {start_s, start_s + complaint.length_s}, complaint.share);
    }
}

void StreamDamage::atEnd(const std::vector<ComplaintReason>& complaints) {
    const double end_s = std::max(ends_s_.video, ends_s_.audio);
    for (const ComplaintReason reason : complaints) {
        complaints_.add(reason, std::nullopt, {end_s, end_s});
    }
}

void StreamDamage::conclude(const StructureFaults& faults, int64_t bytes, const Stated& stated) {
    for (const BadStretch& stretch : faults.stretches) {
        const double from_s = timeAt(stretch.place);
        const double share =
            bytes > 0 ? static_cast<double>(faults.bad_bytes) / static_cast<double>(bytes) : 0.0;
        complaints_.add(ComplaintReason::kUnaccounted, std::nullopt,
                        {from_s, std::max(from_s, timeAt(stretch.place + stretch.bytes))}, share);
    }
    if (stated.whole_s) {
        addMissingEnd(std::nullopt, std::max(ends_s_.video, ends_s_.audio), *stated.whole_s, kLeastEndS);
    }
    for (const StreamTrack track : kTracks) {
        if (stated.counted_s[track]) {
            addMissingEnd(track, ends_s_[track], *stated.counted_s[track], 0.0);
        }
    }
    for (const StreamTrack track : kTracks) {
        if (track == StreamTrack::kVideo && nature_.is_uneven) {
            continue;
        }
        if (const auto missing = gaps_[track].missing(); missing.share >= kLeastMissing) {
            const bool is_located = missing.span.length() > 0.0;
            complaints_.add(ComplaintReason::kSmallGaps, track,
                            is_located ? missing.span : ZEL::TimeSpan{0.0, ends_s_[track]}, missing.share);
        }
    }
}

void StreamDamage::addMissingEnd(std::optional<StreamTrack> track, double end_s, double stated_s,
                                 double least_s) {
    const double missing_s = stated_s - end_s;
    // What is far from the declared end is an event of another kind.
    const double most_s = infoOf(ZEL::EventKind::kShort).rule.min_s - ZEL::kSlackS;
    if (missing_s >= std::max(least_s, kLeastMissing * stated_s) && (track || missing_s < most_s)) {
        complaints_.add(ComplaintReason::kMissingEnd, track, {end_s, stated_s}, missing_s / stated_s);
    }
}

/// When what lies there is due, by the last landmark before it.
double StreamDamage::timeAt(int64_t place) const {
    const auto next =
        std::upper_bound(landmarks_.begin(), landmarks_.end(), place,
                         [](int64_t wanted, const Landmark& landmark) { return wanted < landmark.place; });
    return next == landmarks_.begin() ? 0.0 : std::prev(next)->time_s;
}

}  // namespace zel_monitor

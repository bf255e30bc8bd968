#include "scan/damage_events.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace zel_monitor {
namespace {

constexpr double kLeastOfSlice = 0.02;  // of the frames in half a second
constexpr double kLeastOfFrame = 0.05;

bool isOfFrames(ComplaintReason reason) {
    return reason == ComplaintReason::kDecodingError || reason == ComplaintReason::kConcealed;
}

/// Whether anybody would notice.
bool isNoticed(const Complaint& complaint) {
    if (complaint.reason == ComplaintReason::kBrokenPacket && complaint.track == ZEL::StreamTrack::kVideo) {
        return complaint.count > 1;  // as where streams were joined; what is lost the decoder misses
    }
    if (complaint.reason == ComplaintReason::kRefused && complaint.track == ZEL::StreamTrack::kVideo) {
        return complaint.count > 1 || complaint.span.length() > 0.0;  // as of the last packet of a recording
    }
    return !isOfFrames(complaint.reason) || complaint.slice_share > kLeastOfSlice ||
           complaint.share > kLeastOfFrame;
}

/// How much is hit, of half a second, of one frame or, where that is known, of the whole stream; none if it
/// is not known to be much.
std::optional<ZEL::Evidence> evidenceOf(const Complaint& complaint) {
    const bool is_of_stream = complaint.reason == ComplaintReason::kSmallGaps ||
                              complaint.reason == ComplaintReason::kMissingEnd ||
                              complaint.reason == ComplaintReason::kUnaccounted;
    const ZEL::Evidence of_slice{is_of_stream ? complaint.share : complaint.slice_share, kLeastOfSlice};
    const ZEL::Evidence of_frame{complaint.share, kLeastOfFrame};
    if (of_slice.value >= of_slice.limit) {
        return of_slice;
    }
    return isOfFrames(complaint.reason) && of_frame.value > of_frame.limit ? std::optional(of_frame)
                                                                           : std::nullopt;
}

/// An event, and for how long there was anything wrong in it.
struct Stretch {
    ZEL::Event event;
    double hit_s = 0.0;

    explicit Stretch(const Complaint& first) : event{.kind = ZEL::EventKind::kDamage, .span = first.span} {
        event.span.end_s = event.span.start_s;
        add(first);
    }
    void add(const Complaint& complaint) {
        const auto evidence = evidenceOf(complaint);
        const auto& known = event.evidence;
        if (evidence && (!known || evidence->value * known->limit > known->value * evidence->limit)) {
            event.evidence = evidence;
        }
        double& end_s = event.span.end_s;
        hit_s += std::max(0.0, complaint.span.end_s - std::max(end_s, complaint.span.start_s));
        end_s = std::max(end_s, complaint.span.end_s);
        event.share = event.span.length() > 0.0 ? std::min(hit_s / event.span.length(), 1.0) : 1.0;
    }
};

}  // namespace

ZEL::FrameCondition conditionOf(const VideoFrame& frame) {
    const bool is_damaged = std::any_of(
        frame.notes.complaints.begin(), frame.notes.complaints.end(), [](const ItemComplaint& complaint) {
            return complaint.reason == ComplaintReason::kMissingFrame ||
                   complaint.reason == ComplaintReason::kRefused ||
                   (isOfFrames(complaint.reason) && complaint.share > kLeastOfFrame);
        });
    return is_damaged ? ZEL::FrameCondition::kDamaged : ZEL::FrameCondition::kWhole;
}

std::vector<ZEL::Event> damageEvents(const std::vector<Complaint>& complaints, ZEL::EventRule rule) {
    std::vector<Stretch> stretches;
    std::optional<Stretch> gaps;
    for (const Complaint& complaint : complaints) {
        if (!isNoticed(complaint)) {
            continue;
        }
        if (complaint.reason == ComplaintReason::kSmallGaps) {
            gaps ? gaps->add(complaint) : void(gaps.emplace(complaint));
        } else if (stretches.empty() ||
                   complaint.span.start_s > stretches.back().event.span.end_s + rule.gap_s) {
            stretches.emplace_back(complaint);
        } else {
            stretches.back().add(complaint);
        }
    }
    std::vector<ZEL::Event> events;
    std::transform(stretches.begin(), stretches.end(), std::back_inserter(events),
                   [](const Stretch& stretch) { return stretch.event; });
    if (gaps) {
        gaps->event.share = gaps->event.evidence ? gaps->event.evidence->value : 1.0;
        events.push_back(gaps->event);
    }
    std::erase_if(events,
                  [&](const ZEL::Event& event) { return event.span.length() + ZEL::kSlackS < rule.min_s; });
    std::stable_sort(events.begin(), events.end(), [](const ZEL::Event& a, const ZEL::Event& b) {
        return a.span.start_s < b.span.start_s;
    });
    return events;
}

}  // namespace zel_monitor

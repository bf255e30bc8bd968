#include "input/damage_run.h"

#include <algorithm>
#include <optional>

namespace zel_monitor {
namespace {

constexpr double kLeastOfSlice = 0.02;  // of the frames in half a second
constexpr double kLeastOfFrame = 0.05;

bool isOfFrames(ComplaintReason reason) {
    return reason == ComplaintReason::kDecodingError || reason == ComplaintReason::kConcealed;
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

}  // namespace

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

ZEL::FrameCondition conditionOf(const VideoFrame& frame) {
    const bool is_damaged = std::any_of(
        frame.notes.complaints.begin(), frame.notes.complaints.end(), [](const ItemComplaint& complaint) {
            return complaint.reason == ComplaintReason::kMissingFrame ||
                   complaint.reason == ComplaintReason::kRefused ||
                   (isOfFrames(complaint.reason) && complaint.share > kLeastOfFrame);
        });
    return is_damaged ? ZEL::FrameCondition::kDamaged : ZEL::FrameCondition::kWhole;
}

DamageRun::DamageRun(const Complaint& first)
    : event_{.kind = ZEL::EventKind::kDamage, .span = {first.span.start_s, first.span.start_s}} {
    add(first);
}

void DamageRun::add(const Complaint& complaint) {
    const auto evidence = evidenceOf(complaint);
    const auto& known = event_.evidence;
    if (evidence && (!known || evidence->value * known->limit > known->value * evidence->limit)) {
        event_.evidence = evidence;
    }
    double& end_s = event_.span.end_s;
    hit_s_ += std::max(0.0, complaint.span.end_s - std::max(end_s, complaint.span.start_s));
    end_s = std::max(end_s, complaint.span.end_s);
    event_.share = event_.span.length() > 0.0 ? std::min(hit_s_ / event_.span.length(), 1.0) : 1.0;
}

}  // namespace zel_monitor

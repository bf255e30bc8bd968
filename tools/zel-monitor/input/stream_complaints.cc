#include "input/stream_complaints.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace zel_monitor {
namespace {

constexpr double kSliceS = 0.5;
constexpr size_t kMostSlices = 20'000;
constexpr double kMostTimeS = 1e9;
constexpr int kEitherTrack = -1;  // before the tracks

int64_t sliceOf(double time_s) {
    return static_cast<int64_t>(std::floor(time_s / kSliceS));
}

void join(Complaint& complaint, const Complaint& other) {
    complaint.span = {std::min(complaint.span.start_s, other.span.start_s),
                      std::max(complaint.span.end_s, other.span.end_s)};
    complaint.count += other.count;
    complaint.share = std::max(complaint.share, other.share);
}

double shareOfSlice(ZEL::TimeSpan span, double share) {
    return std::min(share * span.length() / kSliceS, 1.0);
}

}  // namespace

std::string_view wordsFor(ComplaintReason reason) {
    constexpr std::array<std::string_view, 10> kWords{
        "an end before the declared one",
        "small gaps between frames",
        "bytes that belong to nothing in the container",
        "container data that makes no sense",
        "checksums that do not match",
        "packets that are lost or not whole",
        "missing frames that others refer to",
        "coded data that makes no sense",
        "frames that are partly made up",
        "packets that cannot be decoded",
    };
    return kWords.at(static_cast<size_t>(reason));
}

void StreamComplaints::add(ComplaintReason reason, std::optional<ZEL::StreamTrack> track, ZEL::TimeSpan span,
                           double share) {
    ++count_;
    span.start_s = std::abs(span.start_s) < kMostTimeS ? span.start_s : 0.0;
    span.end_s = std::clamp(span.end_s, span.start_s, span.start_s + kMostTimeS);
    const Key key{sliceOf(span.start_s), track ? static_cast<int>(*track) : kEitherTrack, reason};
    const Complaint complaint{.reason = reason,
                              .track = track,
                              .span = span,
                              .count = 1,
                              .share = share,
                              .slice_share = shareOfSlice(span, share)};
    if (const auto found = slices_.find(key); found != slices_.end()) {
        join(found->second, complaint);
        found->second.slice_share = std::min(found->second.slice_share + complaint.slice_share, 1.0);
    } else if (slices_.size() < kMostSlices) {
        slices_.emplace(key, complaint);
    }
}

void StreamComplaints::add(const MediaItem& item) {
    for (const ItemComplaint& complaint : notesOf(item).complaints) {
        const double start_s = std::max(timeOf(item) + complaint.offset_s, 0.0);
        add(complaint.reason, trackOf(item), {start_s, start_s + complaint.length_s}, complaint.share);
    }
}

void StreamComplaints::forgetBefore(double time_s) {
    slices_.erase(slices_.begin(), slices_.lower_bound({sliceOf(time_s), kEitherTrack, ComplaintReason{}}));
}

std::vector<Complaint> StreamComplaints::list() const {
    std::vector<Complaint> list;
    std::map<std::tuple<int, ComplaintReason>, size_t> latest;  // in the list
    for (const auto& [key, complaint] : slices_) {
        const std::tuple alike{std::get<1>(key), complaint.reason};
        const auto found = latest.find(alike);
        if (found != latest.end() && complaint.span.start_s - list[found->second].span.end_s < kSliceS) {
            Complaint& joined = list[found->second];
            join(joined, complaint);
            joined.slice_share = std::max(joined.slice_share, complaint.slice_share);
        } else {
            latest[alike] = list.size();
            list.push_back(complaint);
        }
    }
    std::stable_sort(list.begin(), list.end(),
                     [](const Complaint& a, const Complaint& b) { return a.span.start_s < b.span.start_s; });
    return list;
}

}  // namespace zel_monitor

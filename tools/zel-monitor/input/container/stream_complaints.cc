#include "input/container/stream_complaints.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace zel_monitor {
namespace {

constexpr double kSliceS = 0.5;
constexpr size_t kMostSlices = 20'000;
constexpr size_t kMostNumbers = 1'000;  // in one slice
constexpr double kMostTimeS = 1e9;
constexpr int64_t kNowhere = std::numeric_limits<int64_t>::min();

}  // namespace

std::string_view wordsFor(ComplaintReason reason) {
    constexpr std::array<std::string_view, 9> kWords{
        "packets that cannot be decoded",     "coded data that makes no sense",
        "frames that are partly made up",     "frames that others refer to are missing",
        "packets that are lost or not whole", "checksums that do not match",
        "container data that makes no sense", "bytes that belong to nothing in the container",
        "frames are missing in small gaps",
    };
    return kWords.at(static_cast<size_t>(reason));
}

void StreamComplaints::add(ComplaintReason reason, std::optional<ZEL::StreamTrack> track,
                           std::optional<ZEL::TimeSpan> span, std::optional<int64_t> number, double share) {
    if (span && !(std::abs(span->start_s) < kMostTimeS && span->end_s >= span->start_s)) {
        span.reset();
    }
    const int64_t slice = span ? static_cast<int64_t>(std::floor(span->start_s / kSliceS)) : kNowhere;
    const Key key{slice, track ? static_cast<int>(*track) : -1, reason};
    const std::lock_guard lock(mutex_);
    if (hits_.size() >= kMostSlices && !hits_.contains(key)) {
        ++beyond_;
        return;
    }
    Hits& hits = hits_[key];
    if (number && hits.numbers.size() < kMostNumbers) {
        hits.numbers.insert(*number);
    } else {
        ++hits.without_number;
    }
    hits.share = std::max(hits.share, share);
    if (span && hits.span) {
        hits.span = {std::min(hits.span->start_s, span->start_s), std::max(hits.span->end_s, span->end_s)};
    } else {
        hits.span = span;
    }
}

std::vector<Complaint> StreamComplaints::list() const {
    const std::lock_guard lock(mutex_);
    std::vector<Complaint> list;
    std::map<std::tuple<int, ComplaintReason>, size_t> last;  // in the list
    for (const auto& [key, hits] : hits_) {
        const auto& [slice, track, reason] = key;
        const auto found = last.find({track, reason});
        if (found != last.end() && hits.span) {
            Complaint& before = list[found->second];
            if (before.span && hits.span->start_s - before.span->end_s < kSliceS) {
                before.span->end_s = std::max(before.span->end_s, hits.span->end_s);
                before.count += hits.count();
                before.share = std::max(before.share, hits.share);
                continue;
            }
        }
        last[{track, reason}] = list.size();
        list.push_back(
            {.reason = reason,
             .track = track >= 0 ? std::optional(static_cast<ZEL::StreamTrack>(track)) : std::nullopt,
             .span = hits.span,
             .count = hits.count(),
             .share = hits.share});
    }
    std::stable_sort(list.begin(), list.end(), [](const Complaint& a, const Complaint& b) {
        const double never = -std::numeric_limits<double>::infinity();
        return (a.span ? a.span->start_s : never) < (b.span ? b.span->start_s : never);
    });
    return list;
}

uint64_t StreamComplaints::count() const {
    const std::lock_guard lock(mutex_);
    uint64_t count = beyond_;
    for (const auto& [key, hits] : hits_) {
        count += hits.count();
    }
    return count;
}

}  // namespace zel_monitor

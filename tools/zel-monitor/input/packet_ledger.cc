#include "input/packet_ledger.h"

#include <algorithm>
#include <cmath>

namespace zel_monitor {
namespace {

constexpr int64_t kMostInDecoder = 100;  // frames that are put in order, and those of all threads
constexpr size_t kMostKept = 1000;
constexpr double kMostReorderS = 2.0;
constexpr double kMostApartS = 10.0;  // across a discontinuity the times of packets and frames tell nothing

/// Whether it may come of frames that were never there.
bool isOfReferences(ComplaintReason reason) {
    return reason == ComplaintReason::kMissingFrame || reason == ComplaintReason::kDecodingError ||
           reason == ComplaintReason::kConcealed;
}

}  // namespace

int64_t PacketLedger::send(double time_s, double length_s, bool is_key) {
    const std::lock_guard lock(mutex_);
    Packet& packet = packets_[++sent_];
    if (sent_ == 1 && is_key) {  // it does not begin in the middle of anything
        nature_.begins_anywhere = false;
    }
    // Of what comes after a discontinuity only its order is known, until a frame of it has come out.
    adrift_ = adrift_ || time_s < last_s_ - kMostReorderS;
    last_s_ = time_s;
    packet.time_s = adrift_ ? end_s_ : time_s;
    packet.length_s = length_s;
    // Of a decoder that gives nothing any more only so much is kept.
    while (packets_.size() > kMostKept) {
        packets_.erase(packets_.begin());
    }
    return sent_;
}

void PacketLedger::refused() {
    const std::lock_guard lock(mutex_);
    ++refusals_;
    disturbed_ = disturbed_ || first_s_ || !nature_.begins_anywhere;
}

void PacketLedger::onLogged(ComplaintReason reason, int64_t packet, double share) {
    const std::lock_guard lock(mutex_);
    Packet& about = packets_[packet];
    disturbed_ = disturbed_ || (first_s_ && !leads(packet, about));
    if (reason != ComplaintReason::kMissingFrame || !nature_.has_timestamps) {
        double& worst = about.complaints[reason];
        worst = std::max(worst, share);
    }
}

bool PacketLedger::isDisturbed() {
    const std::lock_guard lock(mutex_);
    return disturbed_;
}

std::vector<ItemComplaint> PacketLedger::receive(int64_t number, double time_s, double length_s,
                                                 bool is_marked) {
    const std::lock_guard lock(mutex_);
    if (number < 1 || number > sent_) {  // not every decoder hands it on
        number = sent_;
    }
    adrift_ = false;
    if (!first_s_) {
        first_s_ = time_s;
        first_ = number;
        disturbed_ =
            disturbed_ || std::any_of(packets_.lower_bound(number), packets_.end(), [&](const auto& sent) {
                return !sent.second.complaints.empty() && !leads(sent.first, sent.second);
            });
        forgiveBeginning();
    }
    std::vector<ItemComplaint> complaints = lostUpTo(std::max(number, received_) - kMostInDecoder, time_s);
    if (refusals_ > 0) {
        const double hole_s = time_s - end_s_;
        const double missing_s = hole_s > 0.0 && hole_s < kMostApartS ? hole_s : 0.0;
        complaints.push_back({ComplaintReason::kRefused, -missing_s, missing_s, 1.0});
        refusals_ = 0;
    }
    const size_t of_others = complaints.size();
    if (const auto found = packets_.find(number); found != packets_.end()) {
        // How much of the frame is hit is known where the decoder tells what it made up.
        const auto concealed = found->second.complaints.find(ComplaintReason::kConcealed);
        for (const auto& [reason, share] : found->second.complaints) {
            const bool is_told =
                reason == ComplaintReason::kDecodingError && concealed != found->second.complaints.end();
            complaints.push_back({reason, 0.0, length_s, is_told ? concealed->second : share});
        }
        packets_.erase(found);
    }
    if (is_marked && complaints.size() == of_others) {
        complaints.push_back({ComplaintReason::kDecodingError, 0.0, length_s, 1.0});
    }
    disturbed_ = disturbed_ || is_marked;
    received_ = std::max(received_, number);
    end_s_ = time_s + length_s;
    return complaints;
}

std::vector<ItemComplaint> PacketLedger::finish() {
    const std::lock_guard lock(mutex_);
    auto complaints = lostUpTo(sent_ + 2, end_s_);
    if (refusals_ > 0) {
        complaints.push_back({ComplaintReason::kRefused, 0.0, 0.0, 1.0});
    }
    return complaints;
}

/// A stream that was cut out of another one may begin in the middle of something. Whatever a decoder makes of
/// that is no damage, unless the first frame is made up in part.
void PacketLedger::forgiveBeginning() {
    if (!nature_.begins_anywhere) {
        return;
    }
    refusals_ = 0;
    for (auto it = packets_.begin(); it != packets_.end() && it->first <= first_; ++it) {
        if (it->first < first_ || !it->second.complaints.contains(ComplaintReason::kConcealed)) {
            std::erase_if(it->second.complaints,
                          [](const auto& complaint) { return isOfReferences(complaint.first); });
        }
    }
}

/// Whether it is shown before the first frame, but comes after it, and so needs others that were cut off.
bool PacketLedger::leads(int64_t number, const Packet& packet) const {
    return first_s_ && number > first_ && packet.time_s < *first_s_;
}

/// What is wrong with packets of which no frame came, and none will.
std::vector<ItemComplaint> PacketLedger::lostUpTo(int64_t number, double seen_from_s) {
    std::vector<ItemComplaint> complaints;
    for (auto it = packets_.begin(); it != packets_.end() && it->first < number; it = packets_.erase(it)) {
        const Packet& packet = it->second;
        const double offset_s = packet.time_s - seen_from_s;
        const bool is_near = std::abs(offset_s) < kMostApartS;
        const bool is_leading = leads(it->first, packet);
        for (const auto& [reason, share] : packet.complaints) {
            if (!is_leading || !isOfReferences(reason)) {
                complaints.push_back(
                    {reason, is_near ? offset_s : 0.0, is_near ? packet.length_s : 0.0, share});
            }
        }
    }
    return complaints;
}

}  // namespace zel_monitor

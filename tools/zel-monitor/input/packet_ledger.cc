#include "input/packet_ledger.h"

#include <algorithm>
#include <cmath>

namespace zel_monitor {
namespace {

constexpr int64_t kMostInDecoder = 100;  // frames that are put in order, and those of all threads
constexpr size_t kMostKept = 1000;
constexpr double kMostApartS = 10.0;  // across a discontinuity the times of packets and frames tell nothing

/// Whether it may come of frames that were never there.
bool isOfReferences(ComplaintReason reason) {
    return reason == ComplaintReason::kMissingFrame || reason == ComplaintReason::kDecodingError ||
           reason == ComplaintReason::kConcealed;
}

}  // namespace

int64_t PacketLedger::send(double time_s, double length_s) {
    const std::lock_guard lock(mutex_);
    Packet& packet = packets_[++sent_];
    packet.time_s = time_s;
    packet.length_s = length_s;
    // Of a decoder that gives nothing any more only so much is kept.
    while (packets_.size() > kMostKept) {
        packets_.erase(packets_.begin());
    }
    return sent_;
}

void PacketLedger::refused() {
    refusals_ = first_s_ || !stream_.begins_anywhere ? refusals_ + 1 : 0;
}

void PacketLedger::onLogged(ComplaintReason reason, int64_t packet, double share) {
    if (reason == ComplaintReason::kMissingFrame && stream_.has_timestamps) {
        return;
    }
    const std::lock_guard lock(mutex_);
    double& worst = packets_[packet].complaints[reason];
    worst = std::max(worst, share);
}

std::vector<ItemComplaint> PacketLedger::receive(int64_t number, double time_s, double length_s, bool is_marked) {
    const std::lock_guard lock(mutex_);
    if (!first_s_) {
        first_s_ = time_s;
        first_ = number;
        if (stream_.begins_anywhere) {
            for (auto it = packets_.begin(); it != packets_.end() && it->first < number; ++it) {
                std::erase_if(it->second.complaints, [](const auto& complaint) {
                    return isOfReferences(complaint.first);
                });
            }
        }
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
        for (const auto& [reason, share] : found->second.complaints) {
            complaints.push_back({reason, 0.0, length_s, share});
        }
        packets_.erase(found);
    }
    if (is_marked && complaints.size() == of_others) {
        complaints.push_back({ComplaintReason::kDecodingError, 0.0, length_s, 1.0});
    }
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

/// What is wrong with packets of which no frame came, and none will.
std::vector<ItemComplaint> PacketLedger::lostUpTo(int64_t number, double seen_from_s) {
    std::vector<ItemComplaint> complaints;
    for (auto it = packets_.begin(); it != packets_.end() && it->first < number; it = packets_.erase(it)) {
        const Packet& packet = it->second;
        const double offset_s = packet.time_s - seen_from_s;
        const bool is_near = std::abs(offset_s) < kMostApartS;
        // Frames that are shown before the first one, but come after it, need others that were cut off.
        const bool leads = first_s_ && it->first > first_ && packet.time_s < *first_s_;
        for (const auto& [reason, share] : packet.complaints) {
            if (!leads || !isOfReferences(reason)) {
                complaints.push_back({reason, is_near ? offset_s : 0.0, is_near ? packet.length_s : 0.0, share});
            }
        }
    }
    return complaints;
}

}  // namespace zel_monitor

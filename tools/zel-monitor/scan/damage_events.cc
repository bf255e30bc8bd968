#include "scan/damage_events.h"

#include <algorithm>

namespace zel_monitor {

std::vector<ZEL::Event> damageEvents(const std::vector<Complaint>& complaints, ZEL::EventRule rule) {
    std::vector<ZEL::Event> events;
    std::vector<ZEL::Event> whole;
    double hit_s = 0.0;  // of the last event
    const auto settleShare = [&] {
        if (!events.empty() && events.back().span.length() > 0.0) {
            events.back().share = std::min(hit_s / events.back().span.length(), 1.0);
        }
    };
    for (const Complaint& complaint : complaints) {
        if (complaint.reason == ComplaintReason::kSmallGaps) {
            whole.push_back(
                {.kind = ZEL::EventKind::kDamage, .span = complaint.span, .share = complaint.share});
            continue;
        }
        if (events.empty() || complaint.span.start_s > events.back().span.end_s + rule.gap_s) {
            settleShare();
            events.push_back({.kind = ZEL::EventKind::kDamage, .span = complaint.span});
            hit_s = complaint.span.length();
            continue;
        }
        double& end_s = events.back().span.end_s;
        hit_s += std::max(0.0, complaint.span.end_s - std::max(end_s, complaint.span.start_s));
        end_s = std::max(end_s, complaint.span.end_s);
    }
    settleShare();
    events.insert(events.begin(), whole.begin(), whole.end());
    std::erase_if(events,
                  [&](const ZEL::Event& event) { return event.span.length() + ZEL::kSlackS < rule.min_s; });
    std::stable_sort(events.begin(), events.end(), [](const ZEL::Event& a, const ZEL::Event& b) {
        return a.span.start_s < b.span.start_s;
    });
    return events;
}

}  // namespace zel_monitor

#include "scan/damage_events.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "input/damage_run.h"

namespace zel_monitor {

std::vector<ZEL::Event> damageEvents(const std::vector<Complaint>& complaints, ZEL::EventRule rule) {
    std::vector<DamageRun> runs;
    std::optional<DamageRun> gaps;
    for (const Complaint& complaint : complaints) {
        if (!isNoticed(complaint)) {
            continue;
        }
        if (complaint.reason == ComplaintReason::kSmallGaps) {
            gaps ? gaps->add(complaint) : void(gaps.emplace(complaint));
        } else if (runs.empty() || complaint.span.start_s > runs.back().event().span.end_s + rule.gap_s) {
            runs.emplace_back(complaint);
        } else {
            runs.back().add(complaint);
        }
    }
    std::vector<ZEL::Event> events;
    std::transform(runs.begin(), runs.end(), std::back_inserter(events),
                   [](const DamageRun& run) { return run.event(); });
    if (gaps) {
        ZEL::Event& event = events.emplace_back(gaps->event());
        event.share = event.evidence ? event.evidence->value : 1.0;
    }
    std::erase_if(events,
                  [&](const ZEL::Event& event) { return event.span.length() + ZEL::kSlackS < rule.min_s; });
    std::stable_sort(events.begin(), events.end(), [](const ZEL::Event& a, const ZEL::Event& b) {
        return a.span.start_s < b.span.start_s;
    });
    return events;
}

}  // namespace zel_monitor

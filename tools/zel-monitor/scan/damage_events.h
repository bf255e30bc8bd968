#ifndef ZEL_TOOLS_SCAN_DAMAGE_EVENTS_H_
#define ZEL_TOOLS_SCAN_DAMAGE_EVENTS_H_

#include <zel/events/event.h>

#include <vector>

#include "input/complaint.h"

namespace zel_monitor {

/// The events that complaints, by their time, amount to under a rule, by their start. Gaps that are spread
/// over the whole stream are an event of their own.
std::vector<ZEL::Event> damageEvents(const std::vector<Complaint>& complaints, ZEL::EventRule rule);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SCAN_DAMAGE_EVENTS_H_

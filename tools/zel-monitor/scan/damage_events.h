#ifndef ZEL_TOOLS_SCAN_DAMAGE_EVENTS_H_
#define ZEL_TOOLS_SCAN_DAMAGE_EVENTS_H_

#include <zel/events/event.h>

#include <vector>

#include "input/complaint.h"

namespace zel_monitor {

/// The events that complaints, by their time, amount to under a rule, by their start. What a viewer does not
/// notice is none: a frame of which little was made up, a lost packet that the decoder did not miss, and one
/// that it could not use but that leaves no hole.
/// Small gaps all over the stream are one event of their own.
std::vector<ZEL::Event> damageEvents(const std::vector<Complaint>& complaints, ZEL::EventRule rule);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SCAN_DAMAGE_EVENTS_H_

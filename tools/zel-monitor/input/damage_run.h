#ifndef ZEL_TOOLS_INPUT_DAMAGE_RUN_H_
#define ZEL_TOOLS_INPUT_DAMAGE_RUN_H_

#include <zel/events/analyser.h>
#include <zel/events/event.h>

#include "input/complaint.h"
#include "input/media_item.h"

namespace zel_monitor {

/// Whether a viewer would notice. Nobody does a frame of which little was made up, a lost packet that the
/// decoder did not miss, and one that it could not use but that leaves no hole.
bool isNoticed(const Complaint& complaint);

/// Damaged, if a viewer may see it in this frame or in those that refer to it.
ZEL::FrameCondition conditionOf(const VideoFrame& frame);

/// Complaints that are one event, and for how long there was anything wrong in it.
class DamageRun {
  public:
    explicit DamageRun(const Complaint& first);

    /// One that begins no earlier than the first, or that has grown since it was added.
    void add(const Complaint& complaint);

    const ZEL::Event& event() const { return event_; }

  private:
    ZEL::Event event_;
    double hit_s_ = 0.0;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_DAMAGE_RUN_H_

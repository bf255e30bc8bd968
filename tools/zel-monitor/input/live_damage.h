#ifndef ZEL_TOOLS_INPUT_LIVE_DAMAGE_H_
#define ZEL_TOOLS_INPUT_LIVE_DAMAGE_H_

#include <zel/events/listener.h>

#include <optional>

#include "input/damage_run.h"
#include "input/media_item.h"
#include "input/stream_complaints.h"

namespace zel_monitor {

/// Tells damage to a stream while it runs, from what is complained of its items: a run of it as an event of
/// that kind. Small gaps all over a stream are not told, as they are known at its end only. Memory is
/// bounded, however long and damaged the stream. One thread at a time, on which the listener is called.
class LiveDamage {
  public:
    /// `listener` outlives this object, and hears of the kind damage alone.
    LiveDamage(ZEL::EventRule rule, ZEL::EventListener& listener) : rule_(rule), listener_(listener) {}

    /// The next item, in about the order of their times.
    void saw(const MediaItem& item);
    /// Nothing more comes.
    void end();

    /// What has been measured of the event that is raised.
    std::optional<ZEL::Evidence> evidence() const { return run_ ? run_->event().evidence : std::nullopt; }

  private:
    void see(Complaint complaint);
    void clear(bool open_at_end);

    ZEL::EventRule rule_;
    ZEL::EventListener& listener_;
    StreamComplaints recent_;
    std::optional<DamageRun> run_;
    bool raised_ = false;
    double reached_s_ = 0.0;
    double settled_s_ = -1.0;  // end of the last run: what lies before is not told again
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_LIVE_DAMAGE_H_

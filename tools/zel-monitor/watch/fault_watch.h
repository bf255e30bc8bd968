#ifndef ZEL_TOOLS_WATCH_FAULT_WATCH_H_
#define ZEL_TOOLS_WATCH_FAULT_WATCH_H_

#include <zel/events/analyser.h>

#include "cli/media_facts.h"
#include "input/live_damage.h"
#include "input/media_item.h"
#include "watch/heartbeat_writer.h"

namespace zel_monitor {

/// Tells faults as they are raised and cleared while a stream plays, beside the host's counters. One
/// thread.
class FaultWatch : public ZEL::EventListener {
  public:
    /// For a stretch of the stream that begins at `begin_s`. `writer` outlives this object.
    FaultWatch(const MediaFacts& facts, double begin_s, HeartbeatWriter& writer);

    void feed(const MediaItem& item);
    /// The stretch is over, and so is what was raised.
    void end();

    void onRaised(ZEL::EventKind kind, double start_s, double noticed_s) override;
    void onCleared(const ZEL::Event& event) override;

  private:
    void feed(const VideoFrame& frame);
    void feed(const AudioFrame& sound);

    double begin_s_;
    HeartbeatWriter& writer_;
    ZEL::EventAnalyser analyser_;
    LiveDamage damage_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_WATCH_FAULT_WATCH_H_

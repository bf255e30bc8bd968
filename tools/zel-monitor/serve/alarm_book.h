#ifndef ZEL_TOOLS_SERVE_ALARM_BOOK_H_
#define ZEL_TOOLS_SERVE_ALARM_BOOK_H_

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "serve/alarm.h"
#include "serve/alarm_kinds.h"

namespace zel_monitor {

/// The alarms of one stream: which faults are there, and which of them are told when. Any thread.
///
/// A fault within the grace at the beginning of a connection, or within the cool-down after a clear, is told
/// when that is over, if it is still there.
class AlarmBook {
  public:
    /// `sink` outlives this object.
    AlarmBook(std::string stream, std::map<std::string, std::string> labels,
              const PerAlarmKind<AlarmRule>& rules, AlarmSink& sink)
        : stream_(std::move(stream)), labels_(std::move(labels)), rules_(rules), sink_(sink) {}

    /// Until `end` no fault is raised but that there is no signal.
    void beginGrace(std::chrono::steady_clock::time_point end);

    /// What is known of a fault.
    struct Findings {
        std::string detail = {};  ///< in words; empty if the kind says it all
        std::optional<ZEL::Evidence> evidence = {};
    };
    /// The fault has lasted its minimum; it began `ago_s` seconds before `now`.
    void begin(AlarmKind kind, double ago_s, Findings findings, Moment now);
    /// What was measured of all of the fault, which end() is to tell. Nothing happens if it is not known.
    void measured(AlarmKind kind, const std::optional<ZEL::Evidence>& evidence);
    /// The fault is over since `ago_s` seconds before `now`. Nothing happens if it is not known.
    void end(AlarmKind kind, double ago_s, Cleared reason, Moment now);
    /// All faults are over, but that there is no signal.
    void endAll(Cleared reason, Moment now);
    /// All are cleared, and nothing is raised any more.
    void close(Moment now);
    /// Raises what had to wait. To be called every now and then.
    void tick(Moment now);

    struct Active {
        AlarmKind kind;
        Severity severity;
        std::string detail;
        std::chrono::system_clock::time_point began;
    };
    struct Tally {
        uint64_t raised = 0;
        double seconds = 0.0;  ///< for which it was there; what is active grows
        bool active = false;
    };
    std::vector<Active> active() const;
    PerAlarmKind<Tally> tallies(Moment now) const;

  private:
    struct Fault {
        std::chrono::system_clock::time_point began;
        double known_after_s;  ///< how long it had lasted when it was known
        std::chrono::steady_clock::time_point known;
        Findings findings;
        std::string id;  ///< empty until it is raised
    };
    struct Entry {
        std::optional<Fault> fault;
        std::chrono::steady_clock::time_point quiet_until;  ///< end of the cool-down
        uint64_t raised = 0;
        int64_t last_number = 0;  ///< in the last one's id: milliseconds, and more if several come in one
        double seconds = 0.0;     ///< of those that are over
    };

    // With mutex_ held:
    void raiseIfDue(AlarmKind kind, Moment now);
    void clear(AlarmKind kind, double ago_s, Cleared reason, Moment now);
    Alarm alarmOf(AlarmKind kind, const Fault& fault, Moment now) const;

    const std::string stream_;
    const std::map<std::string, std::string> labels_;
    const PerAlarmKind<AlarmRule> rules_;
    AlarmSink& sink_;

    mutable std::mutex mutex_;  // held while the sink takes, so that alarms stay in order
    PerAlarmKind<Entry> entries_;
    std::chrono::steady_clock::time_point grace_end_;
    bool closed_ = false;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_ALARM_BOOK_H_

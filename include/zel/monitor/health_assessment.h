#ifndef ZEL_MONITOR_HEALTH_ASSESSMENT_H_
#define ZEL_MONITOR_HEALTH_ASSESSMENT_H_

#include <zel/base/c_object.h>
#include <zel/monitor/config_adapter.h>
#include <zel/zel.h>

#include <memory>
#include <string>

namespace ZEL {

/// Keeps the recent samples of each metric and answers how playback has been lately. Any thread.
class ZELHA : public CObject {
  public:
    /// The one of this process; made on first use and never destroyed.
    static ZELHA& getInstance();

    /// One without samples, apart from the process's.
    ZELHA();
    ~ZELHA() override;

    /// Where the times to live come from. Metrics that have samples already keep theirs.
    void setConfigAdapter(std::shared_ptr<ConfigAdapter> adapter);

    /// Adds a sample. A metric's first sample fixes how long its samples count: the switch
    /// "DefaultMetricsTTL", 900 seconds if it is not set. Samples are dropped when an assessment reads their
    /// metric and never otherwise: a metric that is recorded but not assessed grows by 16 bytes per sample
    /// (up to twice that is reserved).
    void record(std::string metric, double value);

    /// Answers one of four questions over the samples that still count:
    /// - "RecentPlayerFF": mean time to the first frame, as "recent_ff", "recent_ff_live", "recent_ff_vod";
    /// - "RefNetSpeed": highest speed, as "recent_max", "recent_live_max", "recent_vod_max";
    /// - "PlayerErrorRate": share of playbacks with an error and with a network error, as
    ///   "recent_error_rate" and "recent_network_error_rate";
    /// - "PlayerBufferRate": mean milliseconds of stalling per second of play, as "avg_bufms_ps".
    /// Values are written "%f"; one that is 0 is left out. "count" says how many there are, "metric" repeats
    /// the question, "version" is "1". Any other text is answered with "metric" "Invalid", "Error" "invalid
    /// argument" and "count" "0".
    ReportMap evaluate(std::string assessment);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace ZEL

#endif  // ZEL_MONITOR_HEALTH_ASSESSMENT_H_

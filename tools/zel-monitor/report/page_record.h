#ifndef ZEL_TOOLS_REPORT_PAGE_RECORD_H_
#define ZEL_TOOLS_REPORT_PAGE_RECORD_H_

#include <zel/algo/algo_types.h>
#include <zel/events/event.h>
#include <zel/events/kinds.h>

#include <deque>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "report/series.h"
#include "report/thumbnail.h"

namespace zel_monitor {

/// What the page shows of one input beyond the report: the curves, and of each event a small copy of the
/// picture that was shown when it began, unless that was long ago when the event was noticed. Of bounded
/// size.
class PageRecord {
  public:
    explicit PageRecord(double frame_rate);

    /// A frame begins to show at `time_s`; what `planes` points to stays valid until the next one.
    void onFrame(const ZELAlgo::ZELVideoPlanes& planes, double time_s);
    void onSilencePeriod(ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& result);
    void onVoicePeriod(ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& result);
    void onSuspected(ZEL::EventKind kind);
    void onEvent(const ZEL::Event& event);

    nlohmann::ordered_json json() const;

  private:
    struct Snapshot {
        double time_s;
        SmallFrame small;
    };
    using Snapshots = std::deque<std::shared_ptr<const Snapshot>>;  // in the order of time
    struct Run {
        bool followed = false;
        Snapshots around_start;
    };
    struct Thumbnail {
        ZEL::EventKind kind;
        double start_s;
        std::string address;
    };

    /// Of the picture at hand, which is shrunk once for all that begins with it.
    std::shared_ptr<const Snapshot> snapshot();
    void remember(const std::shared_ptr<const Snapshot>& snapshot);
    bool wantsThumbnails() const;

    Series luma_;
    Series level_;
    Series voice_;
    std::optional<ZELAlgo::ZELVideoPlanes> current_;
    double current_s_ = 0.0;                         // when it began
    std::shared_ptr<const Snapshot> current_small_;  // null until it is wanted
    Thumbnailer thumbnailer_;
    Snapshots recent_;
    ZEL::PerEventKind<Run> runs_;  // the last of each kind
    std::vector<Thumbnail> thumbnails_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_PAGE_RECORD_H_

#ifndef ZEL_TOOLS_SCAN_SURVEY_RULES_H_
#define ZEL_TOOLS_SCAN_SURVEY_RULES_H_

#include <zel/events/event.h>
#include <zel/events/kinds.h>

#include <vector>

#include "report/report.h"

namespace zel_monitor {

/// Fits the rules for events to how far apart a stream's key frames are, as that turns out.
class SurveyRules {
  public:
    explicit SurveyRules(const ZEL::EventRules& asked);

    /// A key frame comes, which is shown for so long. Gives the kinds whose rules are others from it on.
    std::vector<ZEL::EventKind> see(double duration_s);

    const ZEL::EventRules& rules() const { return survey_.rules; }

    /// At the end, when all events are known.
    Survey survey(const std::vector<ZEL::Event>& events) const;

  private:
    ZEL::EventRules asked_;
    Survey survey_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SCAN_SURVEY_RULES_H_

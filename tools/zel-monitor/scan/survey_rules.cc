#include "scan/survey_rules.h"

#include <algorithm>

namespace zel_monitor {
namespace {

/// What looks alike twice may have moved in between; three times is no chance.
constexpr double kFreezeDistances = 3.0;
/// Shorter than this, a gap looks like the time from one key frame to the next.
constexpr double kStallDistances = 1.25;
/// Where key frames are farther apart than this, a survey has hardly seen anything.
constexpr double kFarthestS = 10.0;

}  // namespace

SurveyRules::SurveyRules(const ZEL::EventRules& asked) : asked_(asked) {
    survey_.rules = asked;
}

std::vector<ZEL::EventKind> SurveyRules::see(double duration_s) {
    ++survey_.key_frames;
    if (duration_s <= survey_.longest_distance_s) {
        return {};
    }
    survey_.longest_distance_s = duration_s;
    const auto fit = [&](ZEL::EventKind kind, double distances) {
        survey_.rules[indexOf(kind)].min_s = std::max(asked_[indexOf(kind)].min_s, distances * duration_s);
    };
    fit(ZEL::EventKind::kFreeze, kFreezeDistances);
    fit(ZEL::EventKind::kStall, kStallDistances);
    return {ZEL::EventKind::kFreeze, ZEL::EventKind::kStall};
}

Survey SurveyRules::survey(const std::vector<ZEL::Event>& events) const {
    Survey survey = survey_;
    survey.deserves_scan =
        survey.longest_distance_s > kFarthestS ||
        std::any_of(events.begin(), events.end(), [](const ZEL::Event& event) {
            return infoOf(event.kind).source != ZEL::EventSource::kAudio;  // all of which was judged
        });
    return survey;
}

}  // namespace zel_monitor

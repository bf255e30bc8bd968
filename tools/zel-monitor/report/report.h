#ifndef ZEL_TOOLS_REPORT_REPORT_H_
#define ZEL_TOOLS_REPORT_REPORT_H_

#include <zel/events/event.h>
#include <zel/events/kinds.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "input/media_source.h"

namespace zel_monitor {

/// All events of one kind in one input.
struct Totals {
    size_t events = 0;
    double total_s = 0.0;
    double share = 0.0;  ///< of the stream, 0 to 1
    double longest_s = 0.0;
    std::optional<double> first_at_s;
};

/// From which length an event of a kind is a violation; kinds without a value are tolerated.
using Policy = ZEL::PerEventKind<std::optional<double>>;

enum class Verdict { kNone, kPass, kFail, kIncomplete };

/// What was found in one input.
struct InputReport {
    MediaFacts facts;
    MediaCounts counts;
    double length_s = 0.0;               ///< of what was analysed
    std::vector<ZEL::Event> events;      ///< by their start
    std::optional<std::string> problem;  ///< why it could not be analysed to its end
};

/// How long the input is: as declared, unless that is a guess, or at least as long as what was analysed.
double wholeLength(const InputReport& report);

ZEL::PerEventKind<Totals> totalsOf(const InputReport& report);

/// One line for every kind that violates the policy.
std::vector<std::string> violations(const InputReport& report, const Policy& policy);

/// None without a policy; incomplete comes before pass and fail.
Verdict verdictOn(const InputReport& report, const Policy& policy);
std::string_view nameOf(Verdict verdict);

bool isEmpty(const Policy& policy);

/// The program's exit statuses.
inline constexpr int kClean = 0;
inline constexpr int kViolated = 1;
inline constexpr int kUsage = 2;
inline constexpr int kNotAnalysed = 3;

/// The worst of all inputs: one that was not analysed to its end outweighs a violation.
int exitStatus(const std::vector<InputReport>& reports, const Policy& policy);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_REPORT_H_

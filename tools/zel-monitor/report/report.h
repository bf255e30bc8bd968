#ifndef ZEL_TOOLS_REPORT_REPORT_H_
#define ZEL_TOOLS_REPORT_REPORT_H_

#include <zel/events/event.h>
#include <zel/events/kinds.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/media_facts.h"

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

/// Which kinds are reported.
using Wanted = ZEL::PerEventKind<bool>;

/// The faults. A look is reported to who asks for it.
Wanted wantedUnasked();

/// How a scan was set.
struct ScanSettings {
    ZEL::EventRules rules = ZEL::defaultEventRules();
    Wanted wanted = wantedUnasked();
    Policy policy{};
};

enum class Verdict { kNone, kPass, kFail, kIncomplete };

/// How loud an input is, by EBU R 128. What is silent or too short for a measure has none.
struct Loudness {
    std::optional<double> integrated_lufs;
    std::optional<double> short_term_max_lufs;  ///< the loudest three seconds
    std::optional<double> true_peak_dbtp;
};

/// What was found in one input.
struct InputReport {
    MediaFacts facts;
    MediaCounts counts;
    double length_s = 0.0;               ///< of what was analysed
    std::vector<ZEL::Event> events;      ///< by their start
    std::optional<Loudness> loudness;    ///< if there was sound
    std::optional<std::string> problem;  ///< why it could not be analysed to its end
};

/// How long the input is: as declared, unless that is a guess, or at least as long as what was analysed.
double wholeLength(const InputReport& report);

ZEL::PerEventKind<Totals> totalsOf(const InputReport& report);

/// One line for every kind that violates the policy.
std::vector<std::string> violations(const InputReport& report, const Policy& policy);

/// None without a policy; incomplete comes before pass and fail.
Verdict verdictOn(const InputReport& report, const Policy& policy);
/// PASS, FAIL or INCOMPLETE with the reasons; empty without a policy.
std::string verdictText(const InputReport& report, const Policy& policy);
std::string_view nameOf(Verdict verdict);

bool isEmpty(const Policy& policy);

/// The exit status: the worst of all inputs, where one that was not analysed to its end
/// outweighs a violation.
int exitStatus(const std::vector<InputReport>& reports, const Policy& policy);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_REPORT_H_

#ifndef ZEL_TOOLS_REPORT_REPORT_H_
#define ZEL_TOOLS_REPORT_REPORT_H_

#include <zel/events/event.h>
#include <zel/events/kinds.h>

#include <cstdint>
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
    bool survey = false;  ///< of the video, key frames alone are decoded
};

enum class Verdict { kNone, kPass, kFail, kIncomplete };

/// What was wrong with the data of an input in one stretch of it.
struct DamageNote {
    std::string what;   ///< in words
    std::string track;  ///< "video", "audio", or empty: of either
    ZEL::TimeSpan span;
    uint64_t count;  ///< packets, frames or stretches of bytes that are hit
    double share;    ///< of the frame that is hit worst, or of the whole input
};

/// How loud an input is, by EBU R 128. What is silent or too short for a measure has none.
struct Loudness {
    std::optional<double> integrated_lufs;
    std::optional<double> short_term_max_lufs;  ///< the loudest three seconds
    std::optional<double> true_peak_dbtp;
};

/// What a survey is worth. Of the video only key frames were judged.
struct Survey {
    uint64_t key_frames = 0;
    double longest_distance_s = 0.0;  ///< between two of them
    ZEL::EventRules rules{};          ///< as they were fitted to that
    bool deserves_scan = false;       ///< something was seen that a full scan would tell more of
};

/// What was found in one input.
struct InputReport {
    MediaFacts facts;
    MediaCounts counts;
    double length_s = 0.0;               ///< of what was analysed
    std::vector<ZEL::Event> events;      ///< by their start
    std::vector<DamageNote> damage;      ///< by its start
    std::optional<Loudness> loudness;    ///< if there was sound
    std::optional<std::string> problem;  ///< why it could not be analysed to its end
    bool may_pass_later = false;         ///< the problem may be gone when it is tried again
    std::optional<Survey> survey;        ///< if it was one
};

/// Whether a survey of it says so.
bool deservesScan(const InputReport& report);

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

/// The exit status: the worst of all inputs, where one that was not analysed to its end outweighs a
/// violation. Something may come of trying again as long as an input could not be analysed for a reason that
/// passes; but never where an input violates the policy.
int exitStatus(const std::vector<InputReport>& reports, const Policy& policy);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_REPORT_H_

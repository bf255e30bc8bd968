#include "report/report.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

#include "cli/exit_status.h"
#include "cli/time_text.h"

namespace zel_monitor {

Wanted wantedUnasked() {
    Wanted wanted{};
    std::transform(ZEL::eventKinds().begin(), ZEL::eventKinds().end(), wanted.begin(),
                   [](const ZEL::EventKindInfo& info) { return info.tier == ZEL::EventTier::kFault; });
    return wanted;
}

bool deservesScan(const InputReport& report) {
    return report.survey && report.survey->deserves_scan;
}

double wholeLength(const InputReport& report) {
    const double declared_s = report.facts.duration_estimated ? 0.0 : report.facts.duration.value_or(0.0);
    return std::max(report.length_s, declared_s);
}

ZEL::PerEventKind<Totals> totalsOf(const InputReport& report) {
    const double whole_s = wholeLength(report);
    ZEL::PerEventKind<Totals> totals;
    for (const ZEL::Event& event : report.events) {
        Totals& mine = totals[indexOf(event.kind)];
        ++mine.events;
        mine.total_s += event.span.length();
        mine.share = whole_s > 0.0 ? std::min(mine.total_s / whole_s, 1.0) : 0.0;
        mine.longest_s = std::max(mine.longest_s, event.span.length());
        mine.first_at_s = std::min(event.span.start_s, mine.first_at_s.value_or(event.span.start_s));
    }
    return totals;
}

std::vector<std::string> violations(const InputReport& report, const Policy& policy) {
    ZEL::PerEventKind<const ZEL::Event*> longest{};
    for (const ZEL::Event& event : report.events) {
        const ZEL::Event*& mine = longest[indexOf(event.kind)];
        if (mine == nullptr || event.span.length() > mine->span.length()) {
            mine = &event;
        }
    }
    std::vector<std::string> lines;
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        const ZEL::Event* const event = longest[indexOf(info.kind)];
        const std::optional<double>& limit_s = policy[indexOf(info.kind)];
        if (limit_s && event != nullptr && event->span.length() + ZEL::kSlackS >= *limit_s) {
            lines.push_back(fmt::format("{} for {:.3f} s at {} (limit {:g} s)", info.name,
                                        event->span.length(), clockText(event->span.start_s), *limit_s));
        }
    }
    return lines;
}

Verdict verdictOn(const InputReport& report, const Policy& policy) {
    if (isEmpty(policy)) {
        return Verdict::kNone;
    }
    if (report.problem) {
        return Verdict::kIncomplete;
    }
    return violations(report, policy).empty() ? Verdict::kPass : Verdict::kFail;
}

std::string verdictText(const InputReport& report, const Policy& policy) {
    const auto faults = violations(report, policy);
    switch (verdictOn(report, policy)) {
        case Verdict::kPass:
            return "PASS";
        case Verdict::kFail:
            return fmt::format("FAIL: {}", fmt::join(faults, "; "));
        case Verdict::kIncomplete:
            return fmt::format("INCOMPLETE, no pass: {}{}{}", *report.problem, faults.empty() ? "" : "; ",
                               fmt::join(faults, "; "));
        case Verdict::kNone:
            break;
    }
    return "";
}

std::string_view nameOf(Verdict verdict) {
    constexpr std::array<std::string_view, 4> kNames{"none", "pass", "fail", "incomplete"};
    return kNames.at(static_cast<size_t>(verdict));
}

bool isEmpty(const Policy& policy) {
    return std::none_of(policy.begin(), policy.end(), [](const auto& limit) { return limit.has_value(); });
}

int exitStatus(const std::vector<InputReport>& reports, const Policy& policy) {
    bool failed = false;
    bool passing = false;
    bool violated = false;
    for (const InputReport& report : reports) {
        failed = failed || (report.problem && !report.may_pass_later);
        passing = passing || (report.problem && report.may_pass_later);
        violated = violated || !violations(report, policy).empty();
    }
    if (passing && !violated) {
        return kExitTryAgain;
    }
    if (failed || passing) {
        return kExitFailed;
    }
    return violated ? kExitViolated : kExitDone;
}

}  // namespace zel_monitor

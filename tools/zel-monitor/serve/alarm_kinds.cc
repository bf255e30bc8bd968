#include "serve/alarm_kinds.h"

#include <algorithm>
#include <array>

namespace zel_monitor {
namespace {

constexpr std::string_view kNoSignalName = "no-signal";
constexpr double kNoSignalMinS = 3.0;
constexpr double kNoSignalGapS = 0.5;

/// What nobody can watch or hear.
bool isCritical(ZEL::EventKind kind) {
    constexpr std::array kCritical = {ZEL::EventKind::kBlack, ZEL::EventKind::kGreen, ZEL::EventKind::kFreeze,
                                      ZEL::EventKind::kMute, ZEL::EventKind::kStall};
    return std::find(kCritical.begin(), kCritical.end(), kind) != kCritical.end();
}

}  // namespace

std::string_view nameOf(Severity severity) {
    return severity == Severity::kCritical ? "critical" : "warning";
}

std::string_view alarmName(AlarmKind kind) {
    return kind == kNoSignal ? kNoSignalName : ZEL::eventKinds()[kind].name;
}

std::string_view alarmMeaning(AlarmKind kind) {
    return kind == kNoSignal ? "neither video nor audio comes" : ZEL::eventKinds()[kind].meaning;
}

std::optional<AlarmKind> alarmByName(std::string_view name) {
    if (name == kNoSignalName) {
        return kNoSignal;
    }
    const auto kind = ZEL::eventKindByName(name);
    return kind ? std::optional(indexOf(*kind)) : std::nullopt;
}

PerAlarmKind<AlarmRule> defaultAlarmRules() {
    PerAlarmKind<AlarmRule> rules;
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        rules[indexOf(info.kind)] = {
            .enabled = info.tier == ZEL::EventTier::kFault,
            .severity = isCritical(info.kind) ? Severity::kCritical : Severity::kWarning,
            .min_s = info.rule.min_s,
            .gap_s = info.rule.gap_s};
    }
    rules[kNoSignal] = {.severity = Severity::kCritical, .min_s = kNoSignalMinS, .gap_s = kNoSignalGapS};
    return rules;
}

}  // namespace zel_monitor

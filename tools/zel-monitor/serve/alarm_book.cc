#include "serve/alarm_book.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace zel_monitor {

void AlarmBook::beginGrace(std::chrono::steady_clock::time_point end) {
    const std::lock_guard<std::mutex> lock(mutex_);
    grace_end_ = end;
}

void AlarmBook::begin(AlarmKind kind, double ago_s, Findings findings, Moment now) {
    const std::lock_guard<std::mutex> lock(mutex_);
    Entry& entry = entries_[kind];
    if (closed_ || !rules_[kind].enabled || entry.fault) {
        return;
    }
    entry.fault = {.began = now.wall - wallSeconds(ago_s),
                   .known_after_s = ago_s,
                   .known = now.steady,
                   .findings = std::move(findings),
                   .id = ""};
    raiseIfDue(kind, now);
}

void AlarmBook::measured(AlarmKind kind, const std::optional<ZEL::Evidence>& evidence) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (Entry& entry = entries_[kind]; entry.fault) {
        entry.fault->findings.evidence = evidence;
    }
}

void AlarmBook::end(AlarmKind kind, double ago_s, Cleared reason, Moment now) {
    const std::lock_guard<std::mutex> lock(mutex_);
    clear(kind, ago_s, reason, now);
}

void AlarmBook::endAll(Cleared reason, Moment now) {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (AlarmKind kind = 0; kind < kNoSignal; ++kind) {
        clear(kind, 0.0, reason, now);
    }
}

void AlarmBook::close(Moment now) {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (AlarmKind kind = 0; kind < kAlarmKinds; ++kind) {
        clear(kind, 0.0, Cleared::kStopped, now);
    }
    closed_ = true;
}

void AlarmBook::tick(Moment now) {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (AlarmKind kind = 0; kind < kAlarmKinds; ++kind) {
        raiseIfDue(kind, now);
    }
}

void AlarmBook::raiseIfDue(AlarmKind kind, Moment now) {
    Entry& entry = entries_[kind];
    if (!entry.fault || !entry.fault->id.empty() || now.steady < entry.quiet_until ||
        (kind != kNoSignal && now.steady < grace_end_)) {
        return;
    }
    const auto since_epoch = std::chrono::floor<std::chrono::milliseconds>(now.wall.time_since_epoch());
    entry.last_number = std::max<int64_t>(since_epoch.count(), entry.last_number + 1);
    entry.fault->id = fmt::format("{}/{}/{}", stream_, alarmName(kind), entry.last_number);
    ++entry.raised;
    sink_.take(alarmOf(kind, *entry.fault, now));
}

void AlarmBook::clear(AlarmKind kind, double ago_s, Cleared reason, Moment now) {
    Entry& entry = entries_[kind];
    if (!entry.fault) {
        return;
    }
    const Fault fault = *std::exchange(entry.fault, std::nullopt);
    if (fault.id.empty()) {
        return;  // nobody heard of it
    }
    entry.seconds += fault.known_after_s + secondsBetween(fault.known, now.steady);
    entry.quiet_until = now.steady + steadySeconds(rules_[kind].cooldown_s);
    Alarm alarm = alarmOf(kind, fault, now);
    alarm.ended = std::max(now.wall - wallSeconds(ago_s), fault.began);
    alarm.reason = reason;
    sink_.take(alarm);
}

Alarm AlarmBook::alarmOf(AlarmKind kind, const Fault& fault, Moment now) const {
    return {.id = fault.id,
            .stream = stream_,
            .labels = labels_,
            .kind = kind,
            .severity = rules_[kind].severity,
            .detail = fault.findings.detail,
            .evidence = fault.findings.evidence,
            .time = now.wall,
            .began = fault.began,
            .ended = std::nullopt};
}

std::vector<AlarmBook::Active> AlarmBook::active() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<Active> active;
    for (AlarmKind kind = 0; kind < kAlarmKinds; ++kind) {
        if (const auto& fault = entries_[kind].fault; fault && !fault->id.empty()) {
            active.push_back({kind, rules_[kind].severity, fault->findings.detail, fault->began});
        }
    }
    return active;
}

PerAlarmKind<AlarmBook::Tally> AlarmBook::tallies(Moment now) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    PerAlarmKind<Tally> tallies;
    for (AlarmKind kind = 0; kind < kAlarmKinds; ++kind) {
        const Entry& entry = entries_[kind];
        Tally& tally = tallies[kind];
        tally = {.raised = entry.raised, .seconds = entry.seconds, .active = false};
        if (entry.fault && !entry.fault->id.empty()) {
            tally.active = true;
            tally.seconds += entry.fault->known_after_s + secondsBetween(entry.fault->known, now.steady);
        }
    }
    return tallies;
}

}  // namespace zel_monitor

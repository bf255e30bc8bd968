#include "events/implied.h"

#include <algorithm>
#include <array>

namespace ZEL {
namespace {

using enum EventKind;

constexpr double kNever = std::numeric_limits<double>::infinity();
constexpr size_t kMostSeen = 256;

struct Implication {
    EventKind fault;
    EventKind implied;
};

/// A fault and what it implies. Only what is measured of the frames and of the sound can be implied. None
/// implies what implies it, even around a corner.
constexpr auto kImplications = std::to_array<Implication>({
    // Nothing is to be seen: it stands still, is dark, and what is left of a picture is all blocks.
    {kBlack, kBlock},
    {kBlack, kFreeze},
    {kBlack, kUnderexposed},
    {kBlack, kOverexposed},
    {kGreen, kBlack},
    {kGreen, kBlock},
    {kGreen, kFreeze},
    {kGreen, kUnderexposed},
    {kGreen, kOverexposed},
    // What a decoder puts in the place of what is lost: blocks, the frame before or nothing at all.
    {kDamage, kBlock},
    {kDamage, kFreeze},
    {kDamage, kGreen},
    // The last frame stays because there is no next one.
    {kStall, kFreeze},
    // Nothing is to be heard.
    {kMute, kClipping},
    {kMute, kDeadChannel},
    {kMute, kLowVoice},
    {kMute, kHighVoice},
    {kMute, kNoVoice},
    // Silence and speech are looked for in the mix, which loses what is in opposite phase.
    {kAntiphase, kMute},
    {kAntiphase, kLowVoice},
    {kAntiphase, kNoVoice},
    // What is driven beyond full scale is loud, and what it does to the sound passes for voice and for none.
    {kClipping, kHighVoice},
    {kNoVoice, kLowVoice},
    {kNoVoice, kHighVoice},
});

constexpr bool isImplied(EventKind kind) {
    return std::any_of(kImplications.begin(), kImplications.end(),
                       [kind](const Implication& each) { return each.implied == kind; });
}

constexpr bool implies(EventKind kind) {
    return std::any_of(kImplications.begin(), kImplications.end(),
                       [kind](const Implication& each) { return each.fault == kind; });
}

}  // namespace

void Implied::see(const Sighting& sighting) {
    Kind& kind = kinds_[indexOf(sighting.kind)];
    kind.waiting.push_back(sighting);
    kind.told_s = std::max(kind.told_s, sighting.span.end_s);
    if (sighting.sight == Sight::kPresent && implies(sighting.kind)) {
        remember(kind, sighting.span);
    }
}

void Implied::cover(EventKind fault, TimeSpan span) {
    remember(kinds_[indexOf(fault)], span);
    forget(fault);
}

void Implied::remember(Kind& kind, TimeSpan span) {
    if (!kind.seen.empty() && kind.seen.back().end_s + kSlackS >= span.start_s) {
        kind.seen.back().end_s = std::max(kind.seen.back().end_s, span.end_s);
    } else {
        kind.seen.push_back(span);
    }
}

std::vector<Sighting> Implied::takeSettled() {
    std::vector<Sighting> taken;
    for (const EventKindInfo& info : eventKinds()) {
        Kind& kind = kinds_[indexOf(info.kind)];
        const double settled_s = settledFor(info.kind) + kSlackS;
        while (!kind.waiting.empty() &&
               (kind.waiting.front().span.end_s <= settled_s || kind.waiting.size() > kMostWaiting)) {
            kind.taken_s = std::max(kind.taken_s, kind.waiting.front().span.end_s);
            take(kind.waiting.front(), taken);
            kind.waiting.pop_front();
        }
    }
    for (const EventKindInfo& info : eventKinds()) {
        forget(info.kind);
    }
    return taken;
}

std::vector<Sighting> Implied::takeRest() {
    std::vector<Sighting> taken;
    for (Kind& kind : kinds_) {
        for (const Sighting& sighting : kind.waiting) {
            take(sighting, taken);
        }
        kind.waiting.clear();
    }
    return taken;
}

/// How far all have come that may hide sightings of this kind.
double Implied::settledFor(EventKind kind) const {
    double settled_s = kNever;
    for (const Implication& each : kImplications) {
        const EventSource source = infoOf(each.fault).source;
        if (each.implied == kind && (source == EventSource::kVideo || source == EventSource::kAudio)) {
            settled_s = std::min(settled_s, kinds_[indexOf(each.fault)].told_s);
        }
    }
    return settled_s;
}

/// Takes out one sighting, in pieces where it is hidden in part.
void Implied::take(const Sighting& sighting, std::vector<Sighting>& taken) const {
    if (!isImplied(sighting.kind)) {
        taken.push_back(sighting);
        return;
    }
    double from_s = sighting.span.start_s;
    do {
        double until_s = sighting.span.end_s;
        Sighting part = sighting;
        part.sight = isHidden(sighting.kind, from_s, until_s) ? Sight::kUnknown : sighting.sight;
        part.span = {from_s, until_s};
        part.apart = sighting.apart && from_s == sighting.span.start_s;
        taken.push_back(part);
        from_s = until_s;
    } while (from_s < sighting.span.end_s);
}

/// Whether something hides this kind at `time_s`; lowers `until_s` to where that may change. Times that are
/// less apart than rounding brings are the same.
bool Implied::isHidden(EventKind kind, double time_s, double& until_s) const {
    bool hidden = false;
    double seen_next_s = until_s;
    double hidden_to_s = time_s;
    for (const Implication& each : kImplications) {
        if (each.implied != kind) {
            continue;
        }
        for (const TimeSpan& seen : kinds_[indexOf(each.fault)].seen) {
            if (seen.start_s <= time_s + kSlackS && seen.end_s > time_s + kSlackS) {
                hidden = true;
                hidden_to_s = std::max(hidden_to_s, seen.end_s);
            } else if (seen.start_s > time_s) {
                seen_next_s = std::min(seen_next_s, seen.start_s);
            }
        }
    }
    const double change_s = hidden ? hidden_to_s : seen_next_s;
    until_s = until_s - change_s > kSlackS ? change_s : until_s;
    return hidden;
}

/// Forgets where a fault was seen before all that it may hide.
void Implied::forget(EventKind fault) {
    std::vector<TimeSpan>& seen = kinds_[indexOf(fault)].seen;
    if (seen.empty()) {
        return;
    }
    double taken_s = kNever;
    for (const Implication& each : kImplications) {
        if (each.fault == fault) {
            taken_s = std::min(taken_s, kinds_[indexOf(each.implied)].taken_s);
        }
    }
    auto old =
        std::find_if(seen.begin(), seen.end(), [taken_s](TimeSpan span) { return span.end_s > taken_s; });
    if (seen.end() - old > std::ptrdiff_t{kMostSeen}) {
        old = seen.end() - std::ptrdiff_t{kMostSeen};
    }
    seen.erase(seen.begin(), old);
}

}  // namespace ZEL

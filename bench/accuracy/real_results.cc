#include "bench/accuracy/real_results.h"

#include <zel/events/kinds.h>

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <functional>
#include <map>
#include <optional>

#include "bench/accuracy/scoring.h"

namespace bench::accuracy {
namespace {

using Kinds = std::vector<std::string_view>;
using Spans = std::vector<ZEL::TimeSpan>;

Score judge(const RealCase& tested, const Spans& found, const Kinds& kinds) {
    const Spans held = tested.held(kinds);
    return tested.comes_and_goes ? scoreWithin(tested.truth, found, held)
                                 : scoreOf(tested.truth, found, held);
}

Score oursOn(const RealResult& result, const Kinds& kinds) {
    return judge(*result.tested, result.ours.spansOf(kinds), kinds);
}

/// A rival with its settings, or thresholds, and what it found with each.
class Contender {
  public:
    Contender(const Rival& rival, const std::vector<RealResult>& results) : rival_(rival) {
        std::vector<double> values;
        for (const RealResult& result : results) {
            if (const Findings* const findings = findingsOf(result)) {
                for (const Blockiness& part : findings->blockiness) {
                    values.push_back(part.value);
                }
            }
        }
        thresholds_ = blockThresholds(std::move(values));
        const size_t count = measures() ? thresholds_.size() : rival.settings.size();
        double most = -1.0;
        for (size_t i = 0; i < count; ++i) {
            Score all;
            for (const RealResult& result : results) {
                all.add(scoreWith(result, i));
            }
            if (all.accuracy() > most) {
                most = all.accuracy();
                best_ = i;
            }
        }
    }

    bool hasDefault() const { return !measures(); }
    Score atDefault(const RealResult& result) const { return scoreWith(result, 0); }
    Score atBest(const RealResult& result) const { return scoreWith(result, best_); }
    std::string bestSetting() const {
        if (measures()) {
            return thresholds_.empty() ? ""
                                       : fmt::format("{} from {:.3f} on", rival_.filter, thresholds_[best_]);
        }
        return fmt::format("{}{}", rival_.filter,
                           rival_.settings[best_].empty() ? " as it is" : rival_.settings[best_]);
    }

  private:
    bool measures() const { return rival_.start_key.empty(); }

    const Findings* findingsOf(const RealResult& result) const {
        const auto found = std::find_if(result.rivals.begin(), result.rivals.end(),
                                        [this](const Findings& one) { return one.rival == &rival_; });
        return found != result.rivals.end() ? &*found : nullptr;
    }

    Score scoreWith(const RealResult& result, size_t setting) const {
        const Findings* const findings = findingsOf(result);
        if (findings == nullptr) {
            return {};
        }
        const Spans spans = measures() ? blockEvents(findings->blockiness, thresholds_[setting])
                                       : findings->by_setting[setting];
        return judge(*result.tested, spans,
                     result.tested->good() ? Kinds{rival_.kind} : result.tested->kinds);
    }

    const Rival& rival_;
    std::vector<double> thresholds_;
    size_t best_ = 0;
};

using Contenders = std::map<std::string_view, Contender>;

std::string perHour(size_t alarms, double hours) {
    return hours > 0.0 ? fmt::format("{:.1f}", static_cast<double>(alarms) / hours) : "-";
}

/// Sums over the results that are wanted.
Score sum(const std::vector<RealResult>& results, const std::function<bool(const RealCase&)>& wanted,
          const std::function<Score(const RealResult&)>& score) {
    Score all;
    for (const RealResult& result : results) {
        if (wanted(*result.tested)) {
            all.add(score(result));
        }
    }
    return all;
}

double hoursOf(const std::vector<RealResult>& results, ZEL::EventSource source) {
    double seconds = 0.0;
    for (const RealResult& result : results) {
        const bool has = source == ZEL::EventSource::kVideo   ? result.ours.video
                         : source == ZEL::EventSource::kAudio ? result.ours.sound
                                                              : true;
        seconds += result.tested->good() && has ? result.ours.length_s : 0.0;
    }
    return seconds / 3600.0;
}

/// Of all that is judged of a kind: its faults, what might be taken for one, and good material.
bool concerns(const RealCase& tested, std::string_view kind) {
    return tested.good() || tested.kinds.front() == kind;
}

/// Found, precision and false alarms an hour.
std::string summaryCells(const std::vector<RealResult>& results, std::string_view kind, double hours,
                         const std::function<Score(const RealResult&)>& score) {
    const Score all = sum(
        results, [kind](const RealCase& tested) { return concerns(tested, kind); }, score);
    const Score good = sum(
        results, [](const RealCase& tested) { return tested.good(); }, score);
    const size_t due = all.hits + all.misses;
    const auto precision = all.precision();
    return fmt::format("{} | {} | {}", due > 0 ? fmt::format("{} of {}", all.hits, due) : "-",
                       precision && due > 0 ? fmt::format("{:.2f}", *precision) : "-",
                       perHour(good.false_alarms, hours));
}

std::string summaryTable(const std::vector<RealResult>& results, const Contenders& contenders) {
    std::string text =
        "| kind | found | precision | alarms/h | FFmpeg by default: found | precision | alarms/h | at its "
        "best: found | precision | alarms/h |\n"
        "|---|--:|--:|--:|--:|--:|--:|--:|--:|--:|\n";
    std::array<double, 2> per_hour{};  // by tier
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        const double hours = hoursOf(results, info.source);
        const auto ours = [&info](const RealResult& result) {
            return oursOn(result, result.tested->good() ? Kinds{info.name} : result.tested->kinds);
        };
        std::string by_default = "- | - | -";
        std::string at_best = "- | - | -";
        if (const auto found = contenders.find(info.name); found != contenders.end()) {
            const Contender& rival = found->second;
            if (rival.hasDefault()) {
                by_default = summaryCells(results, info.name, hours,
                                          [&](const RealResult& one) { return rival.atDefault(one); });
            }
            at_best = summaryCells(results, info.name, hours,
                                   [&](const RealResult& one) { return rival.atBest(one); });
        }
        text += fmt::format("| {}{} | {} | {} | {} |\n", info.name,
                            info.tier == ZEL::EventTier::kLook ? " (look)" : "",
                            summaryCells(results, info.name, hours, ours), by_default, at_best);
        const Score good = sum(
            results, [](const RealCase& tested) { return tested.good(); }, ours);
        per_hour.at(static_cast<size_t>(info.tier)) +=
            hours > 0.0 ? static_cast<double>(good.false_alarms) / hours : 0.0;
    }
    return text + fmt::format(
                      "| all faults | | | {:.1f} | | | | | | |\n| all looks | | | {:.1f} | | | | | | |\n\n"
                      "Good material: {:.1f} minutes of video, {:.1f} of audio.\n",
                      per_hour[0], per_hour[1], hoursOf(results, ZEL::EventSource::kVideo) * 60.0,
                      hoursOf(results, ZEL::EventSource::kAudio) * 60.0);
}

std::string findCells(const Score& score) {
    const size_t due = score.hits + score.misses;
    return fmt::format("{} | {}", due > 0 ? fmt::format("{} of {}", score.hits, due) : "-",
                       score.false_alarms);
}

/// How many faults of other kinds are told of a faulty clip.
size_t besides(const RealResult& result) {
    const RealCase& tested = *result.tested;
    const auto& events = result.ours.events;
    return static_cast<size_t>(
        std::count_if(events.begin(), events.end(), [&tested](const ZEL::Event& event) {
            const ZEL::EventKindInfo& info = ZEL::infoOf(event.kind);
            const Kinds& kinds = tested.kinds;
            return info.tier == ZEL::EventTier::kFault &&
                   std::find(kinds.begin(), kinds.end(), info.name) == kinds.end() &&
                   scoreOf({}, {event.span}, tested.held({info.name})).false_alarms > 0;
        }));
}

std::string faultTable(const std::vector<RealResult>& results, const Contenders& contenders) {
    std::string text =
        "| variant | what it shows | found | false | other faults | FFmpeg, by default | false | at its best "
        "| "
        "false |\n"
        "|---|---|--:|--:|--:|--:|--:|--:|--:|\n";
    std::vector<std::string> done;
    for (const RealResult& first : results) {
        const RealCase& variant = *first.tested;
        if (variant.good() || std::find(done.begin(), done.end(), variant.variant) != done.end()) {
            continue;
        }
        done.push_back(variant.variant);
        const auto same = [&](const RealCase& tested) { return tested.variant == variant.variant; };
        const Score ours =
            sum(results, same, [&](const RealResult& result) { return oursOn(result, variant.kinds); });
        size_t others = 0;
        for (const RealResult& result : results) {
            others += same(*result.tested) ? besides(result) : 0;
        }
        std::string by_default = "- | -";
        std::string at_best = "- | -";
        for (const std::string_view kind : variant.kinds) {
            if (const auto found = contenders.find(kind); found != contenders.end()) {
                const Contender& rival = found->second;
                if (rival.hasDefault()) {
                    by_default = findCells(
                        sum(results, same, [&](const RealResult& one) { return rival.atDefault(one); }));
                }
                at_best =
                    findCells(sum(results, same, [&](const RealResult& one) { return rival.atBest(one); }));
                break;
            }
        }
        text += fmt::format("| {} | {} | {} | {} | {} | {} |\n", variant.variant, variant.about,
                            findCells(ours), others, by_default, at_best);
    }
    return text;
}

/// The events of a result that are false alarms, and what was missed.
std::string faultsOf(const RealResult& result) {
    std::string text;
    const RealCase& tested = *result.tested;
    if (!tested.good() && oursOn(result, tested.kinds).misses > 0) {
        text += " missed;";
    }
    if (!result.ours.problem.empty()) {
        text += fmt::format(" {};", result.ours.problem);
    }
    for (const ZEL::Event& event : result.ours.events) {
        const std::string_view name = ZEL::infoOf(event.kind).name;
        const Kinds kinds = tested.good() ? Kinds{name} : tested.kinds;
        const bool asked = std::find(kinds.begin(), kinds.end(), name) != kinds.end();
        const bool besides =
            !asked && !tested.good() && ZEL::infoOf(event.kind).tier == ZEL::EventTier::kFault;
        if ((asked && judge(tested, {event.span}, kinds).false_alarms > 0) ||
            (besides && scoreOf({}, {event.span}, tested.held({name})).false_alarms > 0)) {
            text += fmt::format(" {} {:.2f}-{:.2f};", name, event.span.start_s, event.span.end_s);
        }
    }
    return text.empty() ? "" : fmt::format("- {}:{}\n", tested.name(), text.substr(0, text.size() - 1));
}

}  // namespace

std::string realResultText(const std::vector<RealResult>& results) {
    Contenders contenders;
    std::string settings;
    for (const Rival& rival : rivals()) {
        const auto asked = [&rival](const Findings& one) { return one.rival == &rival; };
        if (std::any_of(results.begin(), results.end(), [&](const RealResult& result) {
                return std::any_of(result.rivals.begin(), result.rivals.end(), asked);
            })) {
            const Contender& added = contenders.try_emplace(rival.kind, rival, results).first->second;
            settings += (settings.empty() ? "" : ", ") + added.bestSetting();
        }
    }
    std::string text =
        summaryTable(results, contenders) + "\nFault by fault:\n\n" + faultTable(results, contenders);
    if (!settings.empty()) {
        text += "\nFFmpeg at its best on these clips: " + settings + "\n";
    }
    text += "\nMissed, and false alarms:\n\n";
    for (const RealResult& result : results) {
        text += faultsOf(result);
    }
    return text;
}

}  // namespace bench::accuracy

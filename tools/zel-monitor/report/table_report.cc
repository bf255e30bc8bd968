#include <algorithm>
#include <fmt/format.h>
#include <iterator>

#include "cli/file_names.h"
#include "cli/time_text.h"
#include "report/container_name.h"
#include "report/formats.h"

namespace zel_monitor {
namespace {

std::string streamText(const InputReport& report) {
    std::string text = containerName(report.facts.container);
    if (const auto& video = report.facts.video) {
        text += fmt::format(", {} {}x{}", video->codec, video->width, video->height);
        if (video->frame_rate > 0.0) {
            text += fmt::format(" at {:.4g} fps", video->frame_rate);
        }
    }
    if (const auto& audio = report.facts.audio) {
        text += fmt::format(", {} {} Hz x{}", audio->codec, audio->sample_rate, audio->channels);
    }
    return fmt::format("{}, {} analysed", text, clockText(report.length_s));
}

void appendTotals(std::string& text, const ZEL::PerEventKind<Totals>& totals) {
    text += fmt::format("  {:<13}{:>7}{:>12}{:>8}{:>12}  {}\n", "kind", "events", "total s", "share",
                        "longest s", "first at");
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        const Totals& mine = totals[indexOf(info.kind)];
        if (mine.events > 0) {
            text += fmt::format("  {:<13}{:>7}{:>12.3f}{:>7.1f}%{:>12.3f}  {}\n", info.name, mine.events,
                                mine.total_s, mine.share * 100.0, mine.longest_s,
                                clockText(mine.first_at_s.value_or(0.0)));
        }
    }
}

void appendEvents(std::string& text, const std::vector<ZEL::Event>& events) {
    text += fmt::format("\n  {:<13}{:>14}{:>14}{:>12}{:>8}\n", "event", "start", "end", "length s", "share");
    for (const ZEL::Event& event : events) {
        text += fmt::format("  {:<13}{:>14}{:>14}{:>12.3f}{:>7.1f}%{}\n", infoOf(event.kind).name,
                            clockText(event.span.start_s), clockText(event.span.end_s), event.span.length(),
                            event.share * 100.0, event.open_at_end ? "  open at the end" : "");
    }
}

/// One line for everything of one sort that is wrong with the input's data.
void appendDamage(std::string& text, const std::vector<DamageNote>& damage) {
    struct Sort {
        const DamageNote* first;
        uint64_t count;
    };
    std::vector<Sort> sorts;
    for (const DamageNote& note : damage) {
        const auto known = std::find_if(sorts.begin(), sorts.end(), [&](const Sort& sort) {
            return sort.first->what == note.what && sort.first->track == note.track;
        });
        if (known == sorts.end()) {
            sorts.push_back({&note, note.count});
        } else {
            known->count += note.count;
        }
    }
    for (const Sort& sort : sorts) {
        text += fmt::format("  damaged {}: {}, {} in all, first at {}\n",
                            sort.first->track.empty() ? "input" : sort.first->track, sort.first->what,
                            sort.count, clockText(sort.first->span.start_s));
    }
}

std::string loudnessText(const Loudness& loudness) {
    const auto text = [](const std::optional<double>& value, const char* unit) {
        return value ? fmt::format("{:.1f} {}", *value, unit) : std::string("none");
    };
    return fmt::format("loudness {}, short-term at most {}, true peak {}",
                       text(loudness.integrated_lufs, "LUFS"), text(loudness.short_term_max_lufs, "LUFS"),
                       text(loudness.true_peak_dbtp, "dBTP"));
}

std::string surveyText(const Survey& survey) {
    return fmt::format("SURVEY of {} key frames, {:.3g} s apart at most{}", survey.key_frames,
                       survey.longest_distance_s, survey.deserves_scan ? ": deserves a full scan" : "");
}

std::string inputTable(const InputReport& report, const Policy& policy) {
    std::string text = printable(report.facts.input) + "\n";
    if (!report.facts.container.empty()) {
        text += "  " + streamText(report) + "\n";
    }
    if (report.survey) {
        text += "  " + surveyText(*report.survey) + "\n";
    }
    if (report.loudness) {
        text += "  " + loudnessText(*report.loudness) + "\n";
    }
    if (report.events.empty()) {
        text += report.problem ? "" : "  no events\n";
    } else {
        appendTotals(text, totalsOf(report));
        appendEvents(text, report.events);
    }
    appendDamage(text, report.damage);
    if (report.problem) {
        text += "  NOT ANALYSED TO ITS END: " + *report.problem + "\n";
    }
    const std::string verdict = verdictText(report, policy);
    return text + (verdict.empty() ? "" : "  " + verdict + "\n") + "\n";
}

std::string totalTable(const std::vector<InputReport>& reports, const Policy& policy) {
    ZEL::PerEventKind<Totals> all{};
    double length_s = 0.0;
    size_t incomplete = 0;
    size_t failed = 0;
    for (const InputReport& report : reports) {
        length_s += report.length_s;
        incomplete += report.problem ? size_t{1} : size_t{0};
        failed += verdictOn(report, policy) == Verdict::kFail ? size_t{1} : size_t{0};
        const ZEL::PerEventKind<Totals> totals = totalsOf(report);
        for (size_t i = 0; i < ZEL::kEventKinds; ++i) {
            all[i].events += totals[i].events;
            all[i].total_s += totals[i].total_s;
            all[i].longest_s = std::max(all[i].longest_s, totals[i].longest_s);
        }
    }
    std::string text = fmt::format("{} inputs, {} analysed: {} not analysed to the end", reports.size(),
                                   clockText(length_s), incomplete);
    if (!isEmpty(policy)) {
        text += fmt::format(", {} failed, {} passed", failed, reports.size() - incomplete - failed);
    }
    text += '\n';
    if (const auto worth = std::count_if(reports.begin(), reports.end(), deservesScan); worth > 0) {
        text += fmt::format("  {} of them were surveyed and deserve a full scan\n", worth);
    }
    if (std::any_of(all.begin(), all.end(), [](const Totals& mine) { return mine.events > 0; })) {
        text += fmt::format("  {:<13}{:>7}{:>12}{:>8}{:>12}\n", "kind", "events", "total s", "share",
                            "longest s");
    }
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        const Totals& mine = all[indexOf(info.kind)];
        if (mine.events > 0) {
            text += fmt::format(
                "  {:<13}{:>7}{:>12.3f}{:>7.1f}%{:>12.3f}\n", info.name, mine.events, mine.total_s,
                length_s > 0.0 ? std::min(100.0 * mine.total_s / length_s, 100.0) : 0.0, mine.longest_s);
        }
    }
    return text;
}

class TableReport : public ReportWriter {
  public:
    explicit TableReport(const ScanSettings& settings) : policy_(settings.policy) {}

    std::string inputFinished(const InputReport& report, const PageRecord* /*record*/) override {
        return inputTable(report, policy_);
    }
    std::string end(const std::vector<InputReport>& reports, int /*status*/) override {
        return reports.size() > 1 ? totalTable(reports, policy_) : "";
    }

  private:
    const Policy& policy_;
};

}  // namespace

std::unique_ptr<ReportWriter> makeTableReport(const ScanSettings& settings) {
    return std::make_unique<TableReport>(settings);
}

}  // namespace zel_monitor

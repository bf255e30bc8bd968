#include "archive/archive_text.h"

#include <algorithm>
#include <fmt/format.h>
#include <memory>

#include "cli/file_names.h"
#include "cli/time_text.h"
#include "report/csv_field.h"
#include "report/formats.h"

namespace zel_monitor {
namespace {

constexpr size_t kMostLines = 20;  // of each sort, in the table

std::string shareText(double part_s, double whole_s) {
    return fmt::format("{:.1f}%", whole_s > 0.0 ? std::min(100.0 * part_s / whole_s, 100.0) : 0.0);
}

std::string headText(const Archive& archive, const Summary& all) {
    std::string text = fmt::format("{} inputs, {} analysed: {} not analysed to the end, {} missing",
                                   all.inputs, clockText(all.analysed_s), all.incomplete, all.missing);
    if (all.passed + all.failed > 0) {
        text += fmt::format(", {} failed, {} passed", all.failed, all.passed);
    }
    text += '\n';
    if (all.surveyed > 0) {
        text += fmt::format("  SURVEY: of {} inputs, key frames alone were judged; {} deserve a full scan\n",
                            all.surveyed, all.deserve_scan);
    }
    if (archive.settings.size() > 1) {
        text += fmt::format("  they were scanned in {} ways: with other settings, versions, or as surveys\n",
                            archive.settings.size());
    }
    return text;
}

std::string kindsText(const Summary& all) {
    std::string text;
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        const Summary::Kind& mine = all.kinds[indexOf(info.kind)];
        if (mine.events > 0) {
            text += fmt::format("  {:<13}{:>7}{:>8}{:>14.3f}{:>8}{:>12.3f}\n", info.name, mine.inputs,
                                mine.events, mine.total_s, shareText(mine.total_s, all.analysed_s),
                                mine.longest_s);
        }
    }
    return text.empty() ? "  no events\n"
                        : fmt::format("  {:<13}{:>7}{:>8}{:>14}{:>8}{:>12}\n", "kind", "inputs", "events",
                                      "total s", "share", "longest s") +
                              text;
}

/// One line each for the first ones, and how many more there are.
template <typename Items, typename Line>
std::string lines(const char* title, const Items& items, const Line& line) {
    std::string text = items.empty() ? "" : fmt::format("\n{}\n", title);
    for (size_t i = 0; i < std::min(items.size(), kMostLines); ++i) {
        text += line(items[i]);
    }
    if (items.size() > kMostLines) {
        text += fmt::format("  and {} more\n", items.size() - kMostLines);
    }
    return text;
}

}  // namespace

std::string archiveTable(const Archive& archive) {
    const Summary all = summaryOf(archive);
    std::string text = headText(archive, all) + kindsText(all);
    std::vector<Folder> folders = foldersOf(archive);
    std::erase_if(folders, [](const Folder& folder) {
        return folder.summary.fault_s <= 0.0 && folder.summary.incomplete + folder.summary.missing == 0;
    });
    text += lines("folders, those with the most faults first", folders, [](const Folder& folder) {
        const Summary& mine = folder.summary;
        return fmt::format("  {:>14.3f} s {:>7}  {}: {} inputs, {} incomplete, {} missing\n", mine.fault_s,
                           shareText(mine.fault_s, mine.analysed_s), printable(folder.name), mine.inputs,
                           mine.incomplete, mine.missing);
    });
    std::vector<const ArchivedInput*> worst;
    for (const ArchivedInput& input : archive.inputs) {
        if (input.report.problem || input.fault_s > 0.0) {
            worst.push_back(&input);
        }
    }
    text += lines("files, the worst first", worst, [](const ArchivedInput* input) {
        const ScanSettings settings{.policy = input->policy};
        return "  " + kBriefFormat.make(settings)->inputFinished(input->report, nullptr);
    });
    return text;
}

std::string archiveCsv(const Archive& archive) {
    std::string text = "input,state,problem,verdict,survey,deserves_scan,analysed_s,fault_s";
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        text += fmt::format(",{0}_events,{0}_s", info.name);
    }
    text += '\n';
    for (const ArchivedInput& input : archive.inputs) {
        const Verdict verdict = verdictOn(input.report, input.policy);
        text += fmt::format("{},{},{},{},{},{},{:.6f},{:.6f}", csvField(input.report.facts.input),
                            input.missing          ? "missing"
                            : input.report.problem ? "incomplete"
                                                   : "complete",
                            csvField(input.report.problem.value_or("")),
                            verdict == Verdict::kNone ? "" : nameOf(verdict), input.report.survey.has_value(),
                            deservesScan(input.report), input.report.length_s, input.fault_s);
        for (const Totals& mine : input.totals) {
            text += fmt::format(",{},{:.6f}", mine.events, mine.total_s);
        }
        text += '\n';
    }
    return text;
}

std::string archiveJsonLines(const Archive& archive) {
    std::string text;
    for (const ArchivedInput& input : archive.inputs) {
        const ScanSettings settings{.policy = input.policy};
        const std::unique_ptr<ReportWriter> writer = makeJsonLinesReport(settings);
        for (const ZEL::Event& event : input.report.events) {
            text += writer->event(input.report.facts.input, event, input.report.survey.has_value());
        }
        text += writer->inputFinished(input.report, nullptr);
    }
    return text;
}

}  // namespace zel_monitor

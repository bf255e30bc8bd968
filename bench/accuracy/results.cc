#include "bench/accuracy/results.h"

#include <algorithm>
#include <fmt/format.h>
#include <functional>

namespace bench::accuracy {
namespace {

std::string number(std::optional<double> value, int digits) {
    return value ? fmt::format("{:.{}f}", *value, digits) : "-";
}

std::string cells(const Score& score) {
    return fmt::format("{} | {} | {} | {}", number(score.precision(), 2), number(score.recall(), 2),
                       number(score.onsetDelay(), 2), number(score.lengthError(), 2));
}

std::string outcome(const Case& tested, const Score& score) {
    std::string text;
    const auto say = [&text](const std::string& words) { text += (text.empty() ? "" : ", ") + words; };
    const size_t due = tested.truth.size();
    if (due > 0) {
        say(score.misses == 0 ? "found"
            : due == 1        ? "missed"
                              : fmt::format("{} of {} missed", score.misses, due));
    }
    if (score.false_alarms > 0) {
        say(score.false_alarms == 1 ? "false alarm" : fmt::format("{} false alarms", score.false_alarms));
    }
    return text.empty() ? "right: nothing" : text;
}

void appendRow(std::string& text, const ZEL::EventKindInfo& info, const char* which,
               const std::vector<Result>& results, const std::function<bool(const Case&)>& wanted) {
    Score ours;
    Score rival;
    size_t count = 0;
    for (const Result& result : results) {
        if (result.tested->kind == info.kind && wanted(*result.tested)) {
            ++count;
            ours.add(result.ours);
            rival.add(result.rival.value_or(Score{}));
        }
    }
    if (count == 0) {
        return;
    }
    text += fmt::format("| {} | {} | {} | zel-monitor | {} |\n", info.name, which, count, cells(ours));
    if (const Rival* const other = rivalOf(info.name)) {
        text += fmt::format("| | | | {} | {} |\n", other->filter, cells(rival));
    }
}

}  // namespace

std::optional<double> scoreBlockiness(std::vector<Result>& results) {
    std::vector<double> values;
    for (const Result& result : results) {
        for (const Blockiness& part : result.blockiness) {
            values.push_back(part.value);
        }
    }
    const auto accuracyAt = [&results](double threshold) {
        Score all;
        for (const Result& result : results) {
            if (!result.blockiness.empty()) {
                all.add(scoreOf(result.tested->truth, blockEvents(result.blockiness, threshold)));
            }
        }
        return all.accuracy();
    };
    const std::vector<double> thresholds = blockThresholds(std::move(values));
    if (thresholds.empty()) {
        return std::nullopt;
    }
    const double best = *std::max_element(thresholds.begin(), thresholds.end(),
                                          [&](double a, double b) { return accuracyAt(a) < accuracyAt(b); });
    for (Result& result : results) {
        if (!result.blockiness.empty()) {
            result.rival = scoreOf(result.tested->truth, blockEvents(result.blockiness, best));
        }
    }
    return best;
}

std::string resultText(const std::vector<Result>& results, std::optional<double> block_threshold) {
    std::string text =
        "| kind | cases | clips | detector | precision | recall | onset s | length s |\n"
        "|---|---|---|---|---|---|---|---|\n";
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        appendRow(text, info, "easy", results, [](const Case& tested) { return !tested.hard; });
        appendRow(text, info, "hard", results, [](const Case& tested) { return tested.hard; });
    }
    if (block_threshold) {
        text += fmt::format(
            "\nblockdetect's threshold: {:.3f}, the one that serves it best on these clips; it is asked "
            "about half a second at a time.\n",
            *block_threshold);
    }
    text += "\n| case | | what it shows | zel-monitor | FFmpeg |\n|---|---|---|---|---|\n";
    for (const Result& result : results) {
        const Case& tested = *result.tested;
        text += fmt::format("| {} | {} | {} | {} | {} |\n", tested.clip.name, tested.hard ? "hard" : "easy",
                            tested.clip.about, outcome(tested, result.ours),
                            result.rival ? outcome(tested, *result.rival) : "-");
    }
    return text;
}

}  // namespace bench::accuracy

#include "selftest/results.h"

#include <algorithm>
#include <fmt/format.h>
#include <functional>

namespace zel_monitor::selftest {
namespace {

/// Correct answers over all answers that were given or due.
double accuracy(const Score& score) {
    const size_t all = score.hits + score.misses + score.false_alarms;
    return all > 0 ? static_cast<double>(score.hits) / static_cast<double>(all) : 1.0;
}

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
    if (const std::string_view name = rivalOf(info.kind); !name.empty()) {
        text += fmt::format("| | | | {} | {} |\n", name, cells(rival));
    }
}

}  // namespace

std::optional<double> scoreBlockiness(std::vector<Result>& results) {
    std::vector<double> thresholds;
    for (const Result& result : results) {
        for (const Blockiness& part : result.blockiness) {
            thresholds.push_back(part.value);
        }
    }
    if (thresholds.empty()) {
        return std::nullopt;
    }
    std::sort(thresholds.begin(), thresholds.end());
    const auto scores = [&results](double threshold) {
        Score all;
        for (const Result& result : results) {
            if (!result.blockiness.empty()) {
                all.add(scoreOf(result.tested->truth, blockEvents(result.blockiness, threshold)));
            }
        }
        return all;
    };
    constexpr size_t kTried = 200;
    double best = thresholds.front();
    for (size_t i = 1; i <= kTried; ++i) {
        const double threshold = thresholds[(thresholds.size() - 1) * i / kTried];
        if (accuracy(scores(threshold)) > accuracy(scores(best))) {
            best = threshold;
        }
    }
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
        text += fmt::format("| {} | {} | {} | {} | {} |\n", tested.name, tested.hard ? "hard" : "easy",
                            tested.about, outcome(tested, result.ours),
                            result.rival ? outcome(tested, *result.rival) : "-");
    }
    return text;
}

}  // namespace zel_monitor::selftest

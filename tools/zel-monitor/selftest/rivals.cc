#include "selftest/rivals.h"

#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <optional>

#include "events/event_tracker.h"
#include "selftest/child_process.h"

namespace zel_monitor::selftest {
namespace {

constexpr double kBlockinessStepS = 0.5;

/// The number behind the next `key` at or after `at`, which moves behind it.
std::optional<double> numberAfter(std::string_view text, std::string_view key, size_t& at) {
    const size_t found = text.find(key, at);
    if (found == std::string_view::npos) {
        return std::nullopt;
    }
    const char* first = text.data() + found + key.size();
    const char* const last = text.data() + text.size();
    while (first != last && *first == ' ') {
        ++first;
    }
    double value = 0.0;
    const auto [rest, error] = std::from_chars(first, last, value);
    at = static_cast<size_t>(rest - text.data());
    return error == std::errc{} ? std::optional(value) : std::nullopt;
}

std::string filterOutput(const std::string& file, const std::string& kind, const std::string& filter,
                         const std::vector<std::string>& part = {}) {
    std::vector<std::string> words{"ffmpeg", "-nostdin", "-nostats", "-hide_banner", "-v", "info"};
    words.insert(words.end(), part.begin(), part.end());
    words.insert(words.end(), {"-i", file, kind, filter, "-f", "null", "-"});
    return outputOf(words);
}

}  // namespace

std::string_view rivalOf(ZEL::EventKind kind) {
    switch (kind) {
        case ZEL::EventKind::kBlack:
            return "blackdetect";
        case ZEL::EventKind::kFreeze:
            return "freezedetect";
        case ZEL::EventKind::kBlock:
            return "blockdetect";
        case ZEL::EventKind::kMute:
            return "silencedetect";
        default:
            return "";
    }
}

std::vector<ZEL::TimeSpan> rivalEvents(ZEL::EventKind kind, const std::string& file, double length_s) {
    const std::string filter = fmt::format("{}=d={}", rivalOf(kind), infoOf(kind).rule.min_s);
    switch (kind) {
        case ZEL::EventKind::kBlack:
            return parseBlack(filterOutput(file, "-vf", filter));
        case ZEL::EventKind::kFreeze:
            return parseStartEnd(filterOutput(file, "-vf", filter), "freeze", length_s);
        case ZEL::EventKind::kMute:
            return parseStartEnd(filterOutput(file, "-af", filter), "silence", length_s);
        default:
            return {};
    }
}

std::vector<Blockiness> rivalBlockiness(const std::string& file, double length_s) {
    std::vector<Blockiness> values;
    const auto steps = static_cast<int>(std::ceil(length_s / kBlockinessStepS));
    for (int step = 0; step < steps; ++step) {
        const double start_s = step * kBlockinessStepS;
        const std::string text =
            filterOutput(file, "-vf", "blockdetect,metadata=mode=print:key=lavfi.block:file=-",
                         {"-ss", fmt::format("{}", start_s), "-t", fmt::format("{}", kBlockinessStepS)});
        if (const auto value = parseBlockiness(text)) {
            values.push_back({start_s, *value});
        }
    }
    return values;
}

std::vector<ZEL::TimeSpan> blockEvents(const std::vector<Blockiness>& values, double threshold) {
    std::vector<ZEL::TimeSpan> spans;
    const auto add = [&spans](const std::optional<ZEL::Event>& event) {
        if (event && event->counts()) {
            spans.push_back(event->span);
        }
    };
    ZEL::EventTracker tracker(ZEL::EventKind::kBlock, infoOf(ZEL::EventKind::kBlock).rule);
    double end_s = 0.0;
    for (const Blockiness& part : values) {
        end_s = part.start_s + kBlockinessStepS;
        add(tracker
                .see({part.start_s, end_s},
                     part.value >= threshold ? ZEL::Sight::kPresent : ZEL::Sight::kAbsent)
                .ended);
    }
    add(tracker.finish(end_s));
    return spans;
}

std::vector<ZEL::TimeSpan> parseBlack(std::string_view text) {
    std::vector<ZEL::TimeSpan> spans;
    for (size_t at = 0;;) {
        const auto start = numberAfter(text, "black_start:", at);
        const auto end = numberAfter(text, "black_end:", at);
        if (!start || !end) {
            return spans;
        }
        spans.push_back({*start, *end});
    }
}

std::vector<ZEL::TimeSpan> parseStartEnd(std::string_view text, std::string_view name, double length_s) {
    const std::string start_key = fmt::format("{}_start:", name);
    const std::string end_key = fmt::format("{}_end:", name);
    std::vector<ZEL::TimeSpan> spans;
    for (size_t at = 0;;) {
        const auto start = numberAfter(text, start_key, at);
        if (!start) {
            return spans;
        }
        const auto end = numberAfter(text, end_key, at);
        spans.push_back({*start, end.value_or(length_s)});  // open at the end of the file
        if (!end) {
            return spans;
        }
    }
}

std::optional<double> parseBlockiness(std::string_view text) {
    std::optional<double> last;
    for (size_t at = 0;;) {
        const auto value = numberAfter(text, "lavfi.block=", at);
        if (!value) {
            return last;
        }
        last = value;
    }
}

}  // namespace zel_monitor::selftest

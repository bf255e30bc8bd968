#include "scan/scan_input.h"

#include <algorithm>
#include <exception>

#include "input/decode_ahead.h"
#include "input/demo_source.h"
#include "scan/analyser.h"

namespace zel_monitor {
namespace {

/// Collects what an analysis finds.
class Findings : public AnalysisListener {
  public:
    Findings(InputScan& scan, Progress::Slot& progress,
             const std::function<void(const ZEL::Event&)>& on_event)
        : scan_(scan), progress_(progress), on_event_(on_event) {}

    void onRunBegan(ZEL::EventKind kind) override {
        if (scan_.record) {
            scan_.record->onRunBegan(kind);
        }
    }
    void onEvent(const ZEL::Event& event) override {
        scan_.report.events.push_back(event);
        ++progress_.events;
        if (scan_.record) {
            scan_.record->onEvent(event);
        }
        on_event_(event);
    }
    void onPicture(const Picture& picture, double time_s) override {
        if (scan_.record) {
            scan_.record->onPicture(picture, time_s);
        }
    }
    void onSilencePeriod(ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& result) override {
        if (scan_.record) {
            scan_.record->onSilencePeriod(period, result);
        }
    }
    void onVoicePeriod(ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& result) override {
        if (scan_.record) {
            scan_.record->onVoicePeriod(period, result);
        }
    }

  private:
    InputScan& scan_;
    Progress::Slot& progress_;
    const std::function<void(const ZEL::Event&)>& on_event_;
};

void analyse(MediaSource& source, const ZEL::EventRules& rules, InputScan& scan, Progress::Slot& progress,
             Findings& findings, const std::atomic<bool>& stop) {
    InputReport& report = scan.report;
    const auto& video = report.facts.video;
    const ZEL::StreamTracks tracks{.video = video.has_value(),
                                   .audio = report.facts.audio.has_value(),
                                   .still_picture = video && video->still};
    Analyser analyser(rules, tracks, findings);
    {
        DecodeAhead ahead(source);
        try {
            while (std::optional<MediaItem> item = ahead.next()) {
                std::visit([&](auto& content) { analyser.take(std::move(content)); }, *item);
                progress.position_s = analyser.reached();
            }
        } catch (const MediaError& error) {
            report.problem = error.reason();
        }
    }
    report.counts = source.counts();
    const bool anything = report.counts.pictures + report.counts.sounds > 0;
    const auto declared_s =
        anything && !stop && !report.facts.duration_estimated ? report.facts.duration : std::nullopt;
    analyser.finish(declared_s);
    report.length_s = analyser.reached();
    if (!report.problem && source.shortfall()) {
        report.problem = source.shortfall()->detail;
    }
}

}  // namespace

InputScan scanInput(const std::string& input, const ZEL::EventRules& rules, bool with_record,
                    Progress::Slot& progress, const std::function<void(const ZEL::Event&)>& on_event,
                    const std::atomic<bool>& stop) {
    InputScan scan;
    InputReport& report = scan.report;
    report.facts.input = input;
    try {
        MediaSource source = openInput(input, {.label = input, .interrupted = &stop});
        report.facts = source.facts();
        progress.length_s = report.facts.duration.value_or(0.0);
        if (with_record) {
            scan.record.emplace(report.facts.video ? report.facts.video->frame_rate : 0.0);
        }
        Findings findings(scan, progress, on_event);
        analyse(source, rules, scan, progress, findings, stop);
    } catch (const MediaError& error) {
        report.problem = error.reason();
    } catch (const std::exception& error) {
        report.problem = error.what();
    }
    if (stop) {
        report.problem = "stopped before its end";
    }
    std::stable_sort(
        report.events.begin(), report.events.end(),
        [](const ZEL::Event& a, const ZEL::Event& b) { return a.span.start_s < b.span.start_s; });
    progress.position_s = report.length_s;
    progress.done = true;
    return scan;
}

}  // namespace zel_monitor

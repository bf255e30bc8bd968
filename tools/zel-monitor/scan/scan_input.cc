#include "scan/scan_input.h"

#include <zel/events/analyser.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <exception>
#include <filesystem>
#include <fmt/format.h>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include "cli/exit_status.h"
#include "cli/time_text.h"
#include "input/damage_run.h"
#include "input/decode_ahead.h"
#include "input/demo_source.h"
#include "scan/damage_events.h"
#include "scan/loudness_meter.h"
#include "scan/survey_rules.h"

namespace zel_monitor {
namespace {

constexpr double kLongestLimitS = 1e9;  // beyond it clocks overflow

/// Collects what the analysis of one input finds.
class Findings : public ZEL::EventListener {
  public:
    Findings(InputScan& scan, const Wanted& wanted, Progress::Slot& progress,
             const std::function<void(const ZEL::Event&)>& on_event)
        : scan_(scan), wanted_(wanted), progress_(progress), on_event_(on_event) {}

    /// Keeps a frame that is fed next, because the analyser does not. It stays until it was shown.
    const VideoFrame& keep(VideoFrame frame) {
        waiting_.push_back(std::move(frame));
        return waiting_.back();
    }
    /// The frame that was kept last was not taken.
    void forgetLast() { waiting_.pop_back(); }

    void onSuspected(ZEL::EventKind kind) override {
        if (scan_.record && wanted_[indexOf(kind)]) {
            scan_.record->onSuspected(kind);
        }
    }
    void onCleared(const ZEL::Event& event) override {
        if (event.counts()) {
            take(event);
        }
    }
    void take(const ZEL::Event& event) {
        if (!wanted_[indexOf(event.kind)]) {
            return;
        }
        scan_.report.events.push_back(event);
        ++progress_.events;
        if (scan_.record) {
            scan_.record->onEvent(event);
        }
        on_event_(event);
    }
    /// Frames get their places in the order in which they were fed.
    void onFrame(const ZEL::FrameMeasurement& frame) override {
        shown_ = std::move(waiting_.front());
        waiting_.pop_front();
        if (scan_.record) {
            scan_.record->onFrame(shown_->planes, frame.start_s);
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
    const Wanted& wanted_;
    Progress::Slot& progress_;
    const std::function<void(const ZEL::Event&)>& on_event_;
    std::deque<VideoFrame> waiting_;   // without a place in the stream yet
    std::optional<VideoFrame> shown_;  // while the record may look at it
};

/// What each item of an input goes to.
struct Stations {
    ZEL::EventAnalyser& analyser;
    Findings& findings;
    SurveyRules* survey;  ///< null for a full scan
    LoudnessMeter loudness = {};
};

void feed(Stations& stations, VideoFrame frame) {
    const double time_s = frame.time;  // the frame may be placed, and gone, within the call
    const double duration_s = frame.duration;
    const ZEL::FrameCondition condition = conditionOf(frame);
    if (stations.survey != nullptr) {
        for (const ZEL::EventKind kind : stations.survey->see(duration_s)) {
            stations.analyser.setRule(kind, stations.survey->rules()[indexOf(kind)]);
        }
    }
    const ZELAlgo::ZELVideoPlanes planes = stations.findings.keep(std::move(frame)).planes;
    if (!stations.analyser.feedVideo(planes, time_s, duration_s, condition)) {
        stations.findings.forgetLast();
    }
}

void feed(Stations& stations, const AudioFrame& sound) {
    stations.loudness.add(sound.data, static_cast<size_t>(sound.samples),
                          static_cast<unsigned>(sound.channels),
                          static_cast<unsigned long>(sound.sample_rate));
    stations.analyser.feedAudio({.sample_rate = static_cast<uint32_t>(sound.sample_rate),
                                 .samples = static_cast<uint32_t>(sound.samples),
                                 .channels = static_cast<uint32_t>(sound.channels),
                                 .data = sound.data},
                                sound.time);
}

std::vector<DamageNote> notesOn(const std::vector<Complaint>& complaints) {
    std::vector<DamageNote> notes;
    for (const Complaint& complaint : complaints) {
        const char* const track = !complaint.track                               ? ""
                                  : *complaint.track == ZEL::StreamTrack::kVideo ? "video"
                                                                                 : "audio";
        notes.push_back({.what = std::string(wordsFor(complaint.reason)),
                         .track = track,
                         .span = complaint.span,
                         .count = complaint.count,
                         .share = complaint.share});
    }
    return notes;
}

void analyse(MediaSource& source, const ScanSettings& settings, InputScan& scan, Progress::Slot& progress,
             Findings& findings, const Cutoff& cutoff) {
    const ZEL::EventRules& rules = settings.rules;
    InputReport& report = scan.report;
    const auto& video = report.facts.video;
    std::optional<SurveyRules> survey;
    if (settings.survey && video) {  // of sound alone, all is judged
        survey.emplace(rules);
    }
    ZEL::EventAnalyser analyser(findings, {.tracks = {.video = video.has_value(),
                                                      .audio = report.facts.audio.has_value(),
                                                      .still = video && video->still},
                                           .rules = rules});
    Stations stations{analyser, findings, survey ? &*survey : nullptr};
    {
        DecodeAhead ahead(source);
        try {
            while (std::optional<MediaItem> item = ahead.next()) {
                std::visit([&](auto& content) { feed(stations, std::move(content)); }, *item);
                progress.position_s = analyser.reached();
            }
        } catch (const MediaError& error) {
            report.problem = error.reason();
            report.may_pass_later = mayPassLater(AVUNERROR(error.code()));
        }
    }
    report.counts = source.counts();
    const bool anything = report.counts.video_frames + report.counts.audio_frames > 0;
    const auto declared_s = anything && !cutoff.isDue() && !report.facts.duration_estimated
                                ? report.facts.duration
                                : std::nullopt;
    analyser.endOfStream(declared_s);
    report.length_s = analyser.reached();
    const std::vector<Complaint> complaints = source.complaints();
    for (const ZEL::Event& event : damageEvents(complaints, rules[indexOf(ZEL::EventKind::kDamage)])) {
        findings.take(event);
    }
    report.damage = notesOn(complaints);
    report.loudness = stations.loudness.loudness();
    if (survey) {
        report.survey = survey->survey(report.events);
    }
    if (!report.problem && source.shortfall()) {
        report.problem = source.shortfall()->detail;
    }
}

/// How long the input may take.
std::optional<double> limitFor(const std::string& input, const TimeLimit& limit) {
    constexpr double kGigabyte = 1e9;
    std::error_code unknown;
    const auto bytes = limit.base_s ? std::filesystem::file_size(input, unknown) : 0;
    return limit.base_s && !unknown
               ? *limit.base_s + limit.per_gigabyte_s * static_cast<double>(bytes) / kGigabyte
               : limit.base_s;
}

std::string problemOf(const std::string& input, const MediaError& error) {
    std::error_code ignored;
    return std::filesystem::is_directory(input, ignored)
               ? "there are no media files in this folder, or it cannot be read"
               : error.reason();
}

}  // namespace

InputScan scanInput(const std::string& input, const ScanOrder& order, Progress::Slot& progress,
                    const std::function<void(const ZEL::Event&)>& on_event, const std::atomic<bool>& stop) {
    using Clock = std::chrono::steady_clock;
    InputScan scan;
    InputReport& report = scan.report;
    report.facts.input = input;
    MediaOptions media{.label = input, .interrupted = &stop};
    media.key_frames_only = order.settings.survey;
    const auto limit_s = limitFor(input, order.limit);
    if (limit_s) {
        media.deadline =
            Clock::now() + std::chrono::duration_cast<Clock::duration>(
                               std::chrono::duration<double>(std::min(*limit_s, kLongestLimitS)));
    }
    const Cutoff cutoff(media);
    try {
        MediaSource source = openInput(input, media);
        report.facts = source.facts();
        progress.length_s = report.facts.duration.value_or(0.0);
        if (order.with_record) {
            scan.record.emplace(report.facts.video ? report.facts.video->frame_rate : 0.0);
        }
        Findings findings(scan, order.settings.wanted, progress, on_event);
        analyse(source, order.settings, scan, progress, findings, cutoff);
    } catch (const MediaError& error) {
        report.problem = problemOf(input, error);
        report.may_pass_later = mayPassLater(AVUNERROR(error.code()));
    } catch (const std::bad_alloc&) {
        report.problem = "there was not enough memory";
        report.may_pass_later = true;
    } catch (const std::exception& error) {
        report.problem = error.what();
    }
    if (stop) {
        report.problem = "stopped before its end";
        report.may_pass_later = true;
    } else if (report.problem && cutoff.isDue()) {
        report.problem = fmt::format("not finished within its time limit of {}", shortClockText(*limit_s));
        report.may_pass_later = false;
    }
    std::stable_sort(
        report.events.begin(), report.events.end(),
        [](const ZEL::Event& a, const ZEL::Event& b) { return a.span.start_s < b.span.start_s; });
    progress.position_s = report.length_s;
    progress.done = true;
    return scan;
}

}  // namespace zel_monitor

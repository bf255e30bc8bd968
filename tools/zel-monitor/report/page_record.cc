#include "report/page_record.h"

#include <zel/events/analyser.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "cli/time_text.h"
#include "report/mean_luma.h"

namespace zel_monitor {
namespace {

constexpr double kCurveStepS = 0.1;
constexpr size_t kMostThumbnails = 300;
constexpr double kSnapshotStepS = 0.25;
constexpr size_t kMostRecent = 21;       // five seconds: every kind is noticed sooner
constexpr size_t kMostAroundStart = 42;  // as many again, because sound may be ahead of the frames

nlohmann::ordered_json curveJson(const Series& series, double scale) {
    nlohmann::ordered_json values = nlohmann::ordered_json::array();
    for (size_t i = 0; i < series.size(); ++i) {
        const auto value = series.at(i);
        values.push_back(value ? nlohmann::ordered_json(std::round(*value * scale) / scale) : nullptr);
    }
    return {{"step_s", series.step()}, {"values", std::move(values)}};
}

}  // namespace

PageRecord::PageRecord(double frame_rate)
    : luma_(frame_rate > 0.0 ? std::max(kCurveStepS, 2.0 / frame_rate) : kCurveStepS),
      level_(ZEL::EventAnalyser::kSilencePeriodS),
      voice_(ZEL::EventAnalyser::kVoicePeriodS) {}

void PageRecord::onFrame(const ZELAlgo::ZELVideoPlanes& planes, double time_s) {
    current_ = planes;
    current_s_ = time_s;
    current_small_.reset();
    if (wantsThumbnails() &&
        (recent_.empty() || time_s - recent_.back()->time_s + ZEL::kSlackS >= kSnapshotStepS)) {
        remember(snapshot());
    }
    luma_.add(time_s, meanLuma(planes));
}

void PageRecord::onSilencePeriod(ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& result) {
    level_.add(period.middle(), result.audio_level);
}

void PageRecord::onVoicePeriod(ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& result) {
    voice_.add(period.middle(), result.voice_scale_longtime);
}

/// What was seen began with the frame at hand or some seconds before; when, is told only by the event. So the
/// frames around this time are kept until then.
void PageRecord::onSuspected(ZEL::EventKind kind) {
    Run& run = runs_[indexOf(kind)];
    run = {};
    if (!wantsThumbnails()) {
        return;
    }
    run = {.followed = true, .around_start = recent_};
    if (current_) {
        run.around_start.push_back(snapshot());
    }
}

void PageRecord::onEvent(const ZEL::Event& event) {
    const Run run = std::exchange(runs_[indexOf(event.kind)], {});
    const Snapshots& frames = run.around_start;
    const ZEL::TimeSpan span = event.span;
    auto chosen = frames.end();
    if (infoOf(event.kind).source == ZEL::EventSource::kVideo) {  // one that shows the fault
        chosen = std::find_if(frames.begin(), frames.end(), [&](const auto& frame) {
            return frame->time_s + ZEL::kSlackS >= span.start_s && frame->time_s <= span.end_s;
        });
    } else {  // what was shown as it began
        const auto after = std::find_if(frames.begin(), frames.end(), [&](const auto& frame) {
            return frame->time_s > span.start_s + ZEL::kSlackS;
        });
        chosen = after == frames.begin() ? frames.end() : std::prev(after);
    }
    if (chosen == frames.end() || !wantsThumbnails()) {
        return;
    }
    if (const SmallFrame& first = (*chosen)->small) {
        thumbnails_.push_back({event.kind, span.start_s, jpegAddress(*first)});
    }
}

std::shared_ptr<const PageRecord::Snapshot> PageRecord::snapshot() {
    if (current_small_ == nullptr) {
        current_small_ =
            std::make_shared<const Snapshot>(Snapshot{current_s_, thumbnailer_.shrink(*current_)});
    }
    return current_small_;
}

void PageRecord::remember(const std::shared_ptr<const Snapshot>& snapshot) {
    recent_.push_back(snapshot);
    if (recent_.size() > kMostRecent) {
        recent_.pop_front();
    }
    for (Run& run : runs_) {
        if (run.followed && run.around_start.size() < kMostAroundStart) {
            run.around_start.push_back(snapshot);
        }
    }
}

bool PageRecord::wantsThumbnails() const {
    return thumbnails_.size() < kMostThumbnails;
}

nlohmann::ordered_json PageRecord::json() const {
    nlohmann::ordered_json thumbnails = nlohmann::ordered_json::array();
    for (const Thumbnail& thumbnail : thumbnails_) {
        thumbnails.push_back({{"kind", infoOf(thumbnail.kind).name},
                              {"start_s", toMicroseconds(thumbnail.start_s)},
                              {"image", thumbnail.address}});
    }
    return {{"luma", curveJson(luma_, 10.0)},
            {"audio_level", curveJson(level_, 1.0)},
            {"voice_share", curveJson(voice_, 1000.0)},
            {"thumbnails", std::move(thumbnails)}};
}

}  // namespace zel_monitor

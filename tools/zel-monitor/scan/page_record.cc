#include "scan/page_record.h"

#include <algorithm>
#include <cmath>

#include "scan/text.h"

namespace zel_monitor::scan {
namespace {

constexpr double kCurveStepS = 0.1;
constexpr size_t kMostThumbnails = 300;
constexpr uint32_t kLumaGrid = 8;  // every so many rows and columns are enough for a mean

double meanLuma(const ZELAlgo::ZELVideoPlanes& planes) {
    uint64_t sum = 0;
    uint64_t count = 0;
    for (uint32_t y = 0; y < planes.height; y += kLumaGrid) {
        const uint8_t* const row = planes.data[0] + y * planes.stride[0];
        for (uint32_t x = 0; x < planes.width; x += kLumaGrid) {
            sum += row[x];
            ++count;
        }
    }
    return static_cast<double>(sum) / static_cast<double>(count);
}

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
      level_(kSilencePeriodS),
      voice_(kVoicePeriodS) {}

void PageRecord::onPicture(const Picture& picture, double time_s) {
    current_ = &picture;
    luma_.add(time_s, meanLuma(picture.planes));
}

void PageRecord::onSilencePeriod(Span period, const ZELAlgo::ZELAudioResult& result) {
    level_.add(period.middle(), result.audio_level);
}

void PageRecord::onVoicePeriod(Span period, const ZELAlgo::ZELAudioResult& result) {
    voice_.add(period.middle(), result.voice_scale_longtime);
}

void PageRecord::onRunBegan(Kind kind) {
    if (current_ != nullptr && thumbnails_.size() < kMostThumbnails) {
        first_pictures_[indexOf(kind)] = thumbnailer_.shrink(*current_);
    }
}

void PageRecord::onEvent(const Event& event) {
    const FrameHandle first = std::move(first_pictures_[indexOf(event.kind)]);
    if (first != nullptr && thumbnails_.size() < kMostThumbnails) {
        thumbnails_.push_back({event.kind, event.span.start_s, jpegAddress(*first)});
    }
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

}  // namespace zel_monitor::scan

#include <zel/algo/algo_facade.h>

#include "algo/audio/audio_handle.h"
#include "algo/audio/period_sums.h"
#include "algo/video/planes.h"
#include "algo/video/video_handle.h"

namespace ZELAlgo {
namespace {

Planes planesOf(const ZELVideoPlanes& frame) {
    return {.width = frame.width,
            .height = frame.height,
            .data = {frame.data[0], frame.data[1], frame.data[2]},
            .stride = {frame.stride[0], frame.stride[1], frame.stride[2]}};
}

bool isWellFormed(const ZELVideoPlanes& frame) {
    const auto holds = [&frame](size_t plane, size_t row) {
        return frame.data[plane] != nullptr && frame.stride[plane] >= row;
    };
    return frame.width % 2 == 0 && frame.height % 2 == 0 && holds(0, frame.width) &&
           holds(1, frame.width / 2) && holds(2, frame.width / 2);
}

/// The detectors count samples and bytes in 31 bits.
bool canBeCounted(const Planes& frame) {
    constexpr uint64_t kMostPixels = ((uint64_t{1} << 31U) - 1) * 2 / 3;
    return uint64_t{frame.width} * frame.height <= kMostPixels;
}

}  // namespace

AlgoFacade::AlgoFacade() = default;

AlgoFacade::AlgoFacade(const ZELAlgoConfig& config) : config_(config) {}

AlgoFacade::~AlgoFacade() = default;

void AlgoFacade::setConfig(const ZELAlgoConfig& config) {
    config_ = config;
}

void AlgoFacade::VideoDestroyer::operator()(VideoAlgoHandle_t* handle) const {
    VideoAlgoDestroy(handle);
}

bool AlgoFacade::detectVideo(const ZELVideoFrame& frame, ZELVideoResult& result) {
    return frame.data != nullptr && detect(planesOf(frame.data, frame.width, frame.height), result);
}

bool AlgoFacade::detectPlanes(const ZELVideoPlanes& frame, ZELVideoResult& result) {
    return isWellFormed(frame) && detect(planesOf(frame), result);
}

bool AlgoFacade::detect(const Planes& frame, ZELVideoResult& result) {
    if (!canBeCounted(frame)) {
        return false;
    }
    if (!video_) {
        video_.reset(VideoAlgoCreate(config_, frame.width, frame.height));
        if (!video_) {
            return false;
        }
    }
    // A failure on the way is not looked at: what was found before it counts.
    VideoAlgoExecute(video_.get(), frame, result);
    return true;
}

void AlgoFacade::AudioDestroyer::operator()(AudioAlgoHandle_t* handle) const {
    AudioAlgoDestroy(handle);
}

bool AlgoFacade::detectAudio(const ZELAudioFrame& frame, ZELAudioResult& result) {
    if (!audio_) {
        audio_.reset(AudioAlgoCreate(config_, frame.sample_rate));
        if (!audio_) {
            return false;
        }
    }
    ZELAudioResult period{};  // where nothing was voiced, the voice level of a period is 0
    switch (AudioAlgoExecute(audio_.get(), frame.data, frame.samples, period)) {
        case 0:
            judgePeriod(config_, period);
            result = period;
            break;
        case 1:
            result.status = kAudioFilling;
            break;
        default:
            result.status = kAudioNoResult;
            break;
    }
    return true;
}

}  // namespace ZELAlgo

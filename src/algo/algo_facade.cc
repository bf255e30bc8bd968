#include <zel/algo/algo_facade.h>

#include <algorithm>
#include <limits>

#include "algo/audio/audio_handle.h"
#include "algo/video/planes.h"
#include "algo/video/video_handle.h"
#include "base/truncate.h"

namespace ZELAlgo {
namespace {

VideoSettings videoSettings(const ZELAlgoConfig& config) {
    return {.enable_black_screen = config.enable_black_screen,
            .enable_block = config.enable_block,
            .enable_exposure = config.enable_exposure,
            .enable_green_screen = config.enable_green_screen,
            .enable_staticframe = config.enable_staticframe,
            .black_screen_ratio = config.black_screen_ratio,
            .green_screen_ratio = config.green_screen_ratio,
            .block_param = static_cast<uint32_t>(ZEL::truncateToInt32(config.block_param)),
            .staticframe_param = static_cast<uint32_t>(ZEL::truncateToInt32(config.staticframe_param))};
}

Planes planesOf(const ZELVideoPlanes& picture) {
    return {.width = picture.width,
            .height = picture.height,
            .data = {picture.data[0], picture.data[1], picture.data[2]},
            .stride = {picture.stride[0], picture.stride[1], picture.stride[2]}};
}

bool isWellFormed(const ZELVideoPlanes& picture) {
    const auto holds = [&picture](size_t plane, size_t row) {
        return picture.data[plane] != nullptr && picture.stride[plane] >= row;
    };
    return picture.width % 2 == 0 && picture.height % 2 == 0 && holds(0, picture.width) &&
           holds(1, picture.width / 2) && holds(2, picture.width / 2);
}

/// The detectors count samples and bytes in 31 bits.
bool canBeCounted(const Planes& picture) {
    constexpr uint64_t kMostPixels = ((uint64_t{1} << 31U) - 1) * 2 / 3;
    return uint64_t{picture.width} * picture.height <= kMostPixels;
}

/// The integer part, within what a count can hold.
uint32_t periodChunks(const ZELAlgoConfig& config) {
    const double chunks = config.longtime_period_s * 100.0;
    constexpr double kMost = std::numeric_limits<uint32_t>::max();
    return chunks > 0.0 ? static_cast<uint32_t>(std::min(chunks, kMost)) : 0;
}

/// A level as the thresholds see it.
float asSigned(uint32_t level) {
    return static_cast<float>(static_cast<int32_t>(level));
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

bool AlgoFacade::detectPlanes(const ZELVideoPlanes& picture, ZELVideoResult& result) {
    return isWellFormed(picture) && detect(planesOf(picture), result);
}

bool AlgoFacade::detect(const Planes& picture, ZELVideoResult& result) {
    if (!canBeCounted(picture)) {
        return false;
    }
    if (!video_) {
        video_.reset(VideoAlgoCreate(videoSettings(config_), picture.width, picture.height));
        if (!video_) {
            return false;
        }
    }
    // A failure on the way is not looked at: what was found before it counts, the rest is "nothing found".
    VideoVerdicts verdicts;
    VideoAlgoExecute(video_.get(), picture, verdicts);
    result.screen_type = verdicts.screen_type;
    result.exposure_type = verdicts.exposure_type;
    result.is_block = verdicts.is_block != 0;
    result.is_staticframe = verdicts.is_static != 0;
    return true;
}

void AlgoFacade::AudioDestroyer::operator()(AudioAlgoHandle_t* handle) const {
    AudioAlgoDestroy(handle);
}

bool AlgoFacade::detectAudio(const ZELAudioFrame& frame, ZELAudioResult& result) {
    if (!audio_) {
        audio_.reset(AudioAlgoCreate(frame.sample_rate));
        if (!audio_) {
            return false;
        }
        audio_->period_chunks = periodChunks(config_);
    }
    AudioOutcome outcome;
    switch (AudioAlgoExecute(audio_.get(), frame.data, frame.samples, outcome)) {
        case 0:
            result.voice_level_longtime = outcome.voice_level;
            result.voice_scale_longtime = outcome.voice_scale;
            result.audio_level = outcome.audio_level;
            result.is_mute = config_.mute_level >= asSigned(outcome.audio_level) ? 1 : 0;
            result.is_low_voicelevel = config_.low_voice_level >= asSigned(outcome.voice_level) ? 1 : 0;
            result.is_high_voicelevel = asSigned(outcome.voice_level) >= config_.high_voice_level ? 1 : 0;
            result.is_novoice_longtime = config_.novoice_scale >= outcome.voice_scale ? 1 : 0;
            result.status = 2;
            break;
        case 1:
            result.status = 1;
            break;
        default:
            result.status = 0;
            break;
    }
    return true;
}

}  // namespace ZELAlgo

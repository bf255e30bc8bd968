#include <zel/algo/algo_facade.h>

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
    if (frame.data == nullptr) {
        return false;
    }
    if (!video_) {
        video_.reset(VideoAlgoCreate(videoSettings(config_), frame.width, frame.height));
        if (!video_) {
            return false;
        }
    }
    // A failure on the way is not looked at: what was found before it counts, the rest is "nothing found".
    VideoVerdicts verdicts;
    VideoAlgoExecute(video_.get(), frame.data, frame.width, frame.height, verdicts);
    result.screen_type = verdicts.screen_type;
    result.exposure_type = verdicts.exposure_type;
    result.is_block = verdicts.is_block != 0;
    result.is_staticframe = verdicts.is_static != 0;
    return true;
}

}  // namespace ZELAlgo

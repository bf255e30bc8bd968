#include "algo/video/video_handle.h"

#include <new>

#include "base/log_format.h"
#include "base/truncate.h"

namespace ZELAlgo {
namespace {

/// One detector of the pipeline. `create` and `execute` are not called where it is not enabled.
struct Step {
    bool (*enabled)(const ZELAlgoConfig&);
    bool (*create)(VideoAlgoHandle_t&, const ZELAlgoConfig&, uint32_t width, uint32_t height);
    bool (*present)(const VideoAlgoHandle_t&);
    int32_t (*execute)(VideoAlgoHandle_t&, const Planes&, ZELVideoResult&);
    const char* create_failed;
    const char* execute_failed;
};

uint32_t wholeNumber(float parameter) {
    return static_cast<uint32_t>(ZEL::truncateToInt32(parameter));
}

// The order in which detectors are created and run. A new one is a row here.
constexpr Step kSteps[] = {
    {.enabled =
         [](const ZELAlgoConfig& c) {
             return c.enable_black_screen || c.enable_exposure || c.enable_green_screen;
         },
     .create =
         [](VideoAlgoHandle_t& handle, const ZELAlgoConfig& c, uint32_t, uint32_t) {
             handle.exposure.reset(ExposureCreate(c));
             return handle.exposure != nullptr;
         },
     .present = [](const VideoAlgoHandle_t& handle) { return handle.exposure != nullptr; },
     .execute =
         [](VideoAlgoHandle_t& handle, const Planes& frame, ZELVideoResult& r) {
             return ExposureExecute(handle.exposure.get(), frame, r.screen_type, r.exposure_type);
         },
     .create_failed = "exposure_handle create failed\n",
     .execute_failed = "Exposure dete process fail ! \n"},
    {.enabled = [](const ZELAlgoConfig& c) { return c.enable_block; },
     .create =
         [](VideoAlgoHandle_t& handle, const ZELAlgoConfig& c, uint32_t width, uint32_t height) {
             handle.block.reset(BlockCreate(width, height, wholeNumber(c.block_param)));
             return handle.block != nullptr;
         },
     .present = [](const VideoAlgoHandle_t& handle) { return handle.block != nullptr; },
     .execute = [](VideoAlgoHandle_t& handle, const Planes& frame,
                   ZELVideoResult& r) { return BlockExecute(handle.block.get(), frame, r.is_block); },
     .create_failed = "block_handle create failed\n",
     .execute_failed = "Block dete process fail ! \n"},
    // Returns failure for every frame that it finds static, and that is logged: intended.
    {.enabled = [](const ZELAlgoConfig& c) { return c.enable_staticframe; },
     .create =
         [](VideoAlgoHandle_t& handle, const ZELAlgoConfig& c, uint32_t width, uint32_t height) {
             handle.static_frame.reset(StaticFrameCreate(width, height, wholeNumber(c.staticframe_param)));
             return handle.static_frame != nullptr;
         },
     .present = [](const VideoAlgoHandle_t& handle) { return handle.static_frame != nullptr; },
     .execute =
         [](VideoAlgoHandle_t& handle, const Planes& frame, ZELVideoResult& r) {
             return StaticFrameExecute(handle.static_frame.get(), frame, r.is_staticframe);
         },
     .create_failed = "staticframe_handle create failed\n",
     .execute_failed = "Staticframe dete process fail ! \n"},
};

}  // namespace

VideoAlgoHandle_t* VideoAlgoCreate(const ZELAlgoConfig& config, uint32_t width, uint32_t height) {
    auto* const handle = new (std::nothrow) VideoAlgoHandle_t{};
    if (handle == nullptr) {
        return nullptr;
    }
    for (const Step& step : kSteps) {
        if (step.enabled(config) && !step.create(*handle, config, width, height)) {
            ZEL::zel_log("%s", step.create_failed);
            VideoAlgoDestroy(handle);
            return nullptr;
        }
    }
    return handle;
}

int32_t VideoAlgoExecute(VideoAlgoHandle_t* handle, const Planes& frame, ZELVideoResult& result) {
    const uint32_t status = result.status;
    result = {};
    result.status = status;
    for (const Step& step : kSteps) {
        if (step.present(*handle) && step.execute(*handle, frame, result) != 0) {
            ZEL::zel_log("%s", step.execute_failed);
            return -1;
        }
    }
    return 0;
}

int32_t VideoAlgoDestroy(VideoAlgoHandle_t* handle) {
    delete handle;
    return 0;
}

}  // namespace ZELAlgo

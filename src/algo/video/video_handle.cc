#include "algo/video/video_handle.h"

#include <new>

#include "base/log_format.h"

namespace ZELAlgo {
namespace {

/// One detector of the pipeline. `create` and `execute` are not called where it is not enabled.
struct Step {
    bool (*enabled)(const VideoSettings&);
    bool (*create)(VideoAlgoHandle_t&, const VideoSettings&, uint32_t width, uint32_t height);
    bool (*present)(const VideoAlgoHandle_t&);
    int32_t (*execute)(VideoAlgoHandle_t&, const Planes&, VideoVerdicts&);
    const char* create_failed;
    const char* execute_failed;
};

// The order in which detectors are created and run. A new one is a row here.
constexpr Step kSteps[] = {
    {.enabled =
         [](const VideoSettings& s) {
             return s.enable_black_screen || s.enable_exposure || s.enable_green_screen;
         },
     .create =
         [](VideoAlgoHandle_t& handle, const VideoSettings& s, uint32_t, uint32_t) {
             handle.exposure.reset(ExposureCreate({.black_ratio = s.black_screen_ratio,
                                                   .green_ratio = s.green_screen_ratio,
                                                   .black_on = s.enable_black_screen,
                                                   .exposure_on = s.enable_exposure,
                                                   .green_on = s.enable_green_screen}));
             return handle.exposure != nullptr;
         },
     .present = [](const VideoAlgoHandle_t& handle) { return handle.exposure != nullptr; },
     .execute =
         [](VideoAlgoHandle_t& handle, const Planes& picture, VideoVerdicts& v) {
             return ExposureExecute(handle.exposure.get(), picture, v.screen_type, v.exposure_type);
         },
     .create_failed = "exposure_handle create failed\n",
     .execute_failed = "Exposure dete process fail ! \n"},
    {.enabled = [](const VideoSettings& s) { return s.enable_block; },
     .create =
         [](VideoAlgoHandle_t& handle, const VideoSettings& s, uint32_t width, uint32_t height) {
             handle.block.reset(BlockCreate(width, height, s.block_param));
             return handle.block != nullptr;
         },
     .present = [](const VideoAlgoHandle_t& handle) { return handle.block != nullptr; },
     .execute = [](VideoAlgoHandle_t& handle, const Planes& picture,
                   VideoVerdicts& v) { return BlockExecute(handle.block.get(), picture, v.is_block); },
     .create_failed = "block_handle create failed\n",
     .execute_failed = "Block dete process fail ! \n"},
    // Returns failure for every frame that it finds static, and that is logged: intended.
    {.enabled = [](const VideoSettings& s) { return s.enable_staticframe; },
     .create =
         [](VideoAlgoHandle_t& handle, const VideoSettings& s, uint32_t width, uint32_t height) {
             handle.static_frame.reset(StaticFrameCreate(width, height, s.staticframe_param));
             return handle.static_frame != nullptr;
         },
     .present = [](const VideoAlgoHandle_t& handle) { return handle.static_frame != nullptr; },
     .execute =
         [](VideoAlgoHandle_t& handle, const Planes& picture, VideoVerdicts& v) {
             return StaticFrameExecute(handle.static_frame.get(), picture, v.is_static);
         },
     .create_failed = "staticframe_handle create failed\n",
     .execute_failed = "Staticframe dete process fail ! \n"},
};

}  // namespace

VideoAlgoHandle_t* VideoAlgoCreate(const VideoSettings& settings, uint32_t width, uint32_t height) {
    auto* const handle = new (std::nothrow) VideoAlgoHandle_t{};
    if (handle == nullptr) {
        return nullptr;
    }
    for (const Step& step : kSteps) {
        if (step.enabled(settings) && !step.create(*handle, settings, width, height)) {
            ZEL::zel_log("%s", step.create_failed);
            VideoAlgoDestroy(handle);
            return nullptr;
        }
    }
    return handle;
}

int32_t VideoAlgoExecute(VideoAlgoHandle_t* handle, const Planes& picture, VideoVerdicts& verdicts) {
    for (const Step& step : kSteps) {
        if (step.present(*handle) && step.execute(*handle, picture, verdicts) != 0) {
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

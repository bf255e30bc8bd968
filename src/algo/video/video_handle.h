#ifndef ZEL_SRC_ALGO_VIDEO_VIDEO_HANDLE_H_
#define ZEL_SRC_ALGO_VIDEO_VIDEO_HANDLE_H_

#include <cstdint>
#include <memory>

#include "algo/video/block_frame.h"
#include "algo/video/exposure_frame.h"
#include "algo/video/static_frame.h"

namespace ZELAlgo {

/// Which detectors run, and how strict they are.
struct VideoSettings {
    bool enable_black_screen;
    bool enable_block;
    bool enable_exposure;
    bool enable_green_screen;
    bool enable_staticframe;
    float black_screen_ratio;
    float green_screen_ratio;
    uint32_t block_param;
    uint32_t staticframe_param;
};

/// What the detectors say about one picture.
struct VideoVerdicts {
    uint32_t screen_type = 0;
    uint32_t exposure_type = 0;
    uint32_t is_block = 0;
    uint32_t is_static = 0;
};

template <auto kDestroy>
struct DetectorDestroyer {
    template <typename State>
    void operator()(State* state) const {
        kDestroy(state);
    }
};

/// The detectors of one stream, each there if it is enabled. Not thread-safe.
struct VideoAlgoHandle_t {
    std::unique_ptr<ExposureFrame_t, DetectorDestroyer<&ExposureDestroy>> exposure;
    std::unique_ptr<BlockFrame_t, DetectorDestroyer<&BlockDestroy>> block;
    std::unique_ptr<StaticFrame_t, DetectorDestroyer<&StaticFrameDestroy>> static_frame;
};

/// Null, with a log line that names the detector, if one of them cannot be created.
VideoAlgoHandle_t* VideoAlgoCreate(const VideoSettings& settings, uint32_t width, uint32_t height);

/// Runs the detectors in their fixed order on one picture of any size. 0, or -1 with a log line as soon
/// as one returns a failure; what was written by then stands.
int32_t VideoAlgoExecute(VideoAlgoHandle_t* handle, const Planes& picture, VideoVerdicts& verdicts);

/// 0, for null as well.
int32_t VideoAlgoDestroy(VideoAlgoHandle_t* handle);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_VIDEO_VIDEO_HANDLE_H_

#ifndef ZEL_SRC_ALGO_VIDEO_VIDEO_HANDLE_H_
#define ZEL_SRC_ALGO_VIDEO_VIDEO_HANDLE_H_

#include <zel/algo/algo_types.h>

#include <cstdint>
#include <memory>

#include "algo/video/block_frame.h"
#include "algo/video/exposure_frame.h"
#include "algo/video/static_frame.h"

namespace ZELAlgo {

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
VideoAlgoHandle_t* VideoAlgoCreate(const ZELAlgoConfig& config, uint32_t width, uint32_t height);

/// Runs the detectors in their fixed order on one frame of any size and writes their verdicts, but not the
/// status, to `result`. 0, or -1 with a log line as soon as one returns a failure; what was found by then
/// stands, the rest is "nothing found".
int32_t VideoAlgoExecute(VideoAlgoHandle_t* handle, const Planes& frame, ZELVideoResult& result);

/// 0, for null as well.
int32_t VideoAlgoDestroy(VideoAlgoHandle_t* handle);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_VIDEO_VIDEO_HANDLE_H_

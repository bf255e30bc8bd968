#ifndef ZEL_ALGO_ALGO_FACADE_H_
#define ZEL_ALGO_ALGO_FACADE_H_

#include <zel/algo/algo_types.h>

#include <memory>

namespace ZELAlgo {

struct VideoAlgoHandle_t;

/// All detectors of one stream. Not thread-safe: one thread at a time.
class AlgoFacade {
  public:
    AlgoFacade();
    explicit AlgoFacade(const ZELAlgoConfig& config);
    AlgoFacade(const AlgoFacade&) = delete;
    AlgoFacade& operator=(const AlgoFacade&) = delete;
    ~AlgoFacade();

    /// Replaces the configuration. What the video detectors read is taken at their first frame; see
    /// ZELAlgoConfig.
    void setConfig(const ZELAlgoConfig& config);

    /// Runs the enabled video detectors on `frame` and writes their verdicts. False, with `result` untouched,
    /// for null data or if the detectors cannot be created (the next frame tries again).
    bool detectVideo(const ZELVideoFrame& frame, ZELVideoResult& result);

  private:
    struct VideoDestroyer {
        void operator()(VideoAlgoHandle_t* handle) const;
    };

    ZELAlgoConfig config_;
    std::unique_ptr<VideoAlgoHandle_t, VideoDestroyer> video_;
};

}  // namespace ZELAlgo

#endif  // ZEL_ALGO_ALGO_FACADE_H_

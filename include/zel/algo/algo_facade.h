#ifndef ZEL_ALGO_ALGO_FACADE_H_
#define ZEL_ALGO_ALGO_FACADE_H_

#include <zel/algo/algo_types.h>

#include <memory>

namespace ZELAlgo {

struct AudioAlgoHandle_t;
struct Planes;
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
    /// for null data, for a frame of 2^31 bytes or more, or if the detectors cannot be created (the next
    /// frame tries again).
    bool detectVideo(const ZELVideoFrame& frame, ZELVideoResult& result);

    /// The same for a frame that lies where a decoder left it, which spares a copy. False, with `result`
    /// untouched, for a null plane, an odd size or a stride that is too small as well.
    bool detectPlanes(const ZELVideoPlanes& frame, ZELVideoResult& result);

    /// Takes in one audio frame and writes the status of the running period to `result`; what the period
    /// gave is written with the frame that completes it. The first frame's sample rate holds for all. False,
    /// with `result` untouched, if the detector cannot be created (the next frame tries again).
    bool detectAudio(const ZELAudioFrame& frame, ZELAudioResult& result);

  private:
    struct VideoDestroyer {
        void operator()(VideoAlgoHandle_t* handle) const;
    };

    struct AudioDestroyer {
        void operator()(AudioAlgoHandle_t* handle) const;
    };

    bool detect(const Planes& frame, ZELVideoResult& result);

    ZELAlgoConfig config_;
    std::unique_ptr<VideoAlgoHandle_t, VideoDestroyer> video_;
    std::unique_ptr<AudioAlgoHandle_t, AudioDestroyer> audio_;
};

}  // namespace ZELAlgo

#endif  // ZEL_ALGO_ALGO_FACADE_H_
